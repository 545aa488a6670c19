// The median-cut palette of a palette bitmap. Internal to the library (C++
// linkage, not exported); the bitmap conversion calls it.
#ifndef RMG_DIB_RMGDIB_MEDCUT_H
#define RMG_DIB_RMGDIB_MEDCUT_H

#include "dib/rmgdib.h"
#include "rmg.h"

// Fills the colour table behind `dib`'s header (2 to the power biBitCount
// entries at most, blue, green, red, 0 each, at dib + biSize) from the
// pixels of the whole `image` (its roi is ignored) and sets biClrUsed.
// Gives 1 on success, 0 on failure; raises nothing.
int rmgMedianCutPalette(BITMAPINFOHEADER *dib, const RmgImage *image);

#endif
