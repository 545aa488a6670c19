// Records of the packed bitmap format as they stand in memory, shared by
// the bitmap modules. Internal to the library (C++ linkage).
#ifndef RMG_DIB_RMGDIB_H
#define RMG_DIB_RMGDIB_H

#include <cstdint>

// The bitmap header, 40 bytes, in the published field order and widths.
typedef struct BITMAPINFOHEADER {
    uint32_t biSize;
    int32_t biWidth;
    int32_t biHeight;  // positive: bottom-up rows; negative: top-down rows
    uint16_t biPlanes;
    uint16_t biBitCount;
    uint32_t biCompression;
    uint32_t biSizeImage;
    int32_t biXPelsPerMeter;
    int32_t biYPelsPerMeter;
    uint32_t biClrUsed;
    uint32_t biClrImportant;
} BITMAPINFOHEADER;

static_assert(sizeof(BITMAPINFOHEADER) == 40, "the bitmap header is 40 bytes");

#endif
