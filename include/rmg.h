/*
 * rmg.h - the public interface of the rmg image-processing library.
 *
 * Two layers are declared here:
 *
 *  - The exported entries, `wrmgXxx`. Each is a bare forward to the internal
 *    operation of the same name without the `w`. These are the names of the
 *    Windows module tqzk5.dll.
 *  - The extended interface, `rmgXxx`: the internal operations, the record
 *    helpers, the aligned allocator and the whole error interface (status,
 *    error mode, handler, dialog host). The Linux shared library exports
 *    these beside the entries; the Windows module exports the entries only.
 *
 * The header compiles as C99 and as C++. All records are plain data with
 * public fields in a fixed order; `height` always stands before `width`.
 */
#ifndef RMG_H
#define RMG_H

#include <stddef.h>

#if defined(_WIN32)
/* The Windows module takes its export table from a module definition file. */
#  define RMG_API
#elif defined(__GNUC__)
#  define RMG_API __attribute__((visibility("default")))
#else
#  define RMG_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ------------------------------------------------------------------------ */
/* Constants                                                                 */
/* ------------------------------------------------------------------------ */

/* Depths: bits per channel, with the sign bit for signed data. */
#define RMG_DEPTH_SIGN 0x80000000u
#define RMG_DEPTH_1U 1u
#define RMG_DEPTH_8U 8u
#define RMG_DEPTH_16U 16u
#define RMG_DEPTH_8S (RMG_DEPTH_SIGN | 8u)
#define RMG_DEPTH_16S (RMG_DEPTH_SIGN | 16u)
#define RMG_DEPTH_32S (RMG_DEPTH_SIGN | 32u)

/* Data orders: channels interleaved in a row, or one plane per channel. */
#define RMG_DATA_PIXEL 0
#define RMG_DATA_PLANE 1

/* Origins: the first row in memory is the top row, or the bottom row. */
#define RMG_ORIGIN_TL 0
#define RMG_ORIGIN_BL 1

/* Border rules, one per side (low 2 bits of borderModes[i]). */
#define RMG_BORDER_CONST 0
#define RMG_BORDER_REPLICATE 1
#define RMG_BORDER_REFLECT 2
#define RMG_BORDER_WRAP 3

/* Sides, as masks for rmgSetBorderMode; index i of borderModes is 1 << i. */
#define RMG_SIDE_TOP 1
#define RMG_SIDE_BOTTOM 2
#define RMG_SIDE_LEFT 4
#define RMG_SIDE_RIGHT 8

/* Flags of rmgDeallocate. */
#define RMG_DEALLOC_HEADER 1
#define RMG_DEALLOC_DATA 2
#define RMG_DEALLOC_ROI 4
#define RMG_DEALLOC_TILEINFO 8
#define RMG_DEALLOC_MASK 16
#define RMG_DEALLOC_ALL 31

/* Modes of the tile call-back. */
#define RMG_TILE_READ 1
#define RMG_TILE_WRITE 2
#define RMG_TILE_RELEASE 4

/* Status codes. */
#define RMG_StsOk 0
#define RMG_StsBackTrace (-1)
#define RMG_StsError (-2)
#define RMG_StsInternal (-3)
#define RMG_StsNoMem (-4)
#define RMG_StsBadArg (-5)
#define RMG_StsBadFunc (-6)
#define RMG_StsNoConv (-7)
#define RMG_StsAutoTrace (-8)

/* Error modes of the default handler. */
#define RMG_ErrorModeLeaf 0
#define RMG_ErrorModeParent 1
#define RMG_ErrorModeSilent 2

/* Interpolations of zoom and decimate. */
#define RMG_INTER_NN 0
#define RMG_INTER_LINEAR 1
#define RMG_INTER_CUBIC 2

/* Dither methods of bit reduction. */
#define RMG_DITHER_NONE 1
#define RMG_DITHER_FS 2
#define RMG_DITHER_JJN 4
#define RMG_DITHER_STUCKI 8
#define RMG_DITHER_BAYER 16

/* Porter-Duff operators of the composition. */
#define RMG_COMPOSITE_OVER 0
#define RMG_COMPOSITE_IN 1
#define RMG_COMPOSITE_OUT 2
#define RMG_COMPOSITE_ATOP 3
#define RMG_COMPOSITE_XOR 4
#define RMG_COMPOSITE_PLUS 5

/* Buttons and styles of the error dialog (the host receives these). */
#define RMG_MB_OK 0x0000u
#define RMG_MB_OKCANCEL 0x0001u
#define RMG_MB_YESNO 0x0004u
#define RMG_MB_SYSTEMMODAL 0x1000u
#define RMG_IDOK 1
#define RMG_IDCANCEL 2
#define RMG_IDYES 6
#define RMG_IDNO 7

/* ------------------------------------------------------------------------ */
/* Records                                                                   */
/* ------------------------------------------------------------------------ */

struct RmgImage;

/* Serves the pixels of a tiled image: stores the first byte of tile
 * (xIndex, yIndex) in image->tileInfo->tileData, or null for failure.
 * `mode` is RMG_TILE_READ, RMG_TILE_WRITE or RMG_TILE_RELEASE. */
typedef void (*RmgCallBack)(const struct RmgImage *image, int xIndex, int yIndex,
                            int mode);

/* Region of interest: a rectangle and a channel (0: all channels). */
typedef struct RmgROI {
    int coi;
    int xOffset;
    int yOffset;
    int height;
    int width;
} RmgROI;

/* The call-back through which a tiled image's pixels are reached. */
typedef struct RmgTileInfo {
    RmgCallBack callBack;
    void *id;                /* the application's own word */
    unsigned char *tileData; /* written by the call-back */
    int width;               /* columns of a tile, a positive multiple of 8 */
    int height;              /* rows of a tile, a positive multiple of 8 */
} RmgTileInfo;

/* The image header: 28 words (112 bytes) on 32-bit systems; on 64-bit
 * systems the same fields in the same order with native pointers. */
typedef struct RmgImage {
    int headerSize;              /* sizeof(RmgImage) */
    int headerVersion;           /* 0 */
    int nChannels;
    int alphaChannel;            /* 0, or the 1-based alpha channel */
    unsigned int depth;          /* RMG_DEPTH_xxx */
    char colorModel[4];
    char channelSeq[4];
    int dataOrder;               /* RMG_DATA_PIXEL or RMG_DATA_PLANE */
    int origin;                  /* RMG_ORIGIN_TL or RMG_ORIGIN_BL */
    int align;                   /* 4 or 8 */
    int height;
    int width;
    struct RmgROI *roi;          /* null: the whole image */
    struct RmgImage *maskRoi;    /* owned header, freed by rmgDeallocate */
    void *imageId;               /* the application's own word */
    struct RmgTileInfo *tileInfo;/* null for an image in memory */
    int imageSize;               /* bytes of pixel data */
    unsigned char *imageData;    /* first pixel, aligned to `align` */
    int widthStep;               /* bytes from one row to the next */
    int borderModes[4];          /* top, bottom, left, right */
    int borderConsts[4];         /* same order */
    unsigned char *dataOrigin;   /* the block that was allocated */
} RmgImage;

/* The library's version record. */
typedef struct RmgLibVersion {
    int major;
    int minor;
    int build;
    const char *libraryName;
    const char *versionText;
    const char *internalVersion;
    const char *buildDate;
    const char *compiler;
} RmgLibVersion;

/* The error handler: receives every raised status. */
typedef int (*RmgErrorCallBack)(int status, const char *funcName, const char *context,
                                const char *fileName, int line);

/* What stands for the message box and the end of the process.
 * `messageBox` shows `text` under `caption` with the given RMG_MB_xxx style
 * and returns the button pressed (RMG_IDxxx). `endProcess` ends the process
 * with the given text and does not return. */
typedef struct RmgDialogHost {
    int (*messageBox)(const char *text, const char *caption, unsigned int style);
    void (*endProcess)(const char *text);
} RmgDialogHost;

/* ------------------------------------------------------------------------ */
/* Exported entries                                                          */
/* ------------------------------------------------------------------------ */

RMG_API RmgImage *wrmgCreateImageHeader(int nChannels, int alphaChannel, unsigned int depth,
                                        const char *colorModel, const char *channelSeq,
                                        int dataOrder, int origin, int align, int height,
                                        int width, RmgROI *roi, void *imageId,
                                        RmgTileInfo *tileInfo);
RMG_API void wrmgAllocateImage(RmgImage *image, int fillValue);
RMG_API void wrmgDeallocate(RmgImage *image, int flags);
RMG_API RmgROI *wrmgCreateROI(int coi, int xOffset, int yOffset, int height, int width);
RMG_API int wrmgGetErrStatus(void);
/* `tilePos` points at a tile column and row, or is null (see rmgAddS). */
RMG_API void wrmgAddS(const RmgImage *srcImage, RmgImage *dstImage, int value,
                      const int *tilePos);
RMG_API void wrmgSubtractS(const RmgImage *srcImage, RmgImage *dstImage, int value,
                           int reversed, const int *tilePos);
RMG_API void wrmgAnd(const RmgImage *srcImageA, const RmgImage *srcImageB, RmgImage *dstImage,
                     const int *tilePos);
RMG_API void wrmgAndS(const RmgImage *srcImage, RmgImage *dstImage, int value,
                      const int *tilePos);
/* `tile` points at a tile column and row, or is null (see rmgSet). */
RMG_API void wrmgSet(RmgImage *image, int fillValue, const int *tile);
/* `tile` points at a tile column and row, or is null (see rmgCopy). */
RMG_API void wrmgCopy(RmgImage *srcImage, RmgImage *dstImage, const int *tile);
/* `tilePoint` points at a destination tile column and row, or is null (see
 * rmgDecimate). */
RMG_API void wrmgDecimate(RmgImage *srcImage, RmgImage *dstImage, int xU, int xL, int yU,
                          int yL, int interpolate, const int *tilePoint);
/* `tilePoint` points at a destination tile column and row, or is null (see
 * rmgZoom). */
RMG_API void wrmgZoom(RmgImage *srcImage, RmgImage *dstImage, int xU, int xL, int yU, int yL,
                      int interpolate, const int *tilePoint);
/* `tilePoint` points at a pixel x and y, or is null (see rmgAlphaCompositeC). */
RMG_API void wrmgAlphaCompositeC(const RmgImage *srcImageA, const RmgImage *srcImageB,
                                 RmgImage *dstImage, int compositeType, int alphaA, int alphaB,
                                 int premulAlpha, int divideMode, const int *tilePoint);
/* `tilePoint` as in wrmgAlphaCompositeC (see rmgAlphaComposite). */
RMG_API void wrmgAlphaComposite(const RmgImage *srcImageA, const RmgImage *srcImageB,
                                RmgImage *dstImage, int compositeType,
                                const RmgImage *alphaImageA, const RmgImage *alphaImageB,
                                RmgImage *alphaImageDst, int premulAlpha, int divideMode,
                                const int *tilePoint);
/* `tilePoint` points at a pixel x and y, or is null (see rmgMirror). */
RMG_API void wrmgMirror(const RmgImage *srcImage, RmgImage *dstImage, int flipAxis,
                        const int *tilePoint);
/* `tilePoint` points at a pixel x and y, or is null (see rmgBlur). */
RMG_API void wrmgBlur(const RmgImage *srcImage, RmgImage *dstImage, int nRows, int nCols,
                      int anchorX, int anchorY, const int *tilePoint);
/* `tilePos` points at a destination tile column and row, or is null (see
 * rmgColorToGray). */
RMG_API void wrmgColorToGray(const RmgImage *srcImage, RmgImage *dstImage, const int *tilePos);
RMG_API void wrmgGrayToColor(const RmgImage *srcImage, RmgImage *dstImage, float fractR,
                             float fractG, float fractB, const int *tilePos);

/* ------------------------------------------------------------------------ */
/* Extended interface: image records and lifecycle                           */
/* ------------------------------------------------------------------------ */

RMG_API RmgImage *rmgCreateImageHeader(int nChannels, int alphaChannel, unsigned int depth,
                                       const char *colorModel, const char *channelSeq,
                                       int dataOrder, int origin, int align, int height,
                                       int width, RmgROI *roi, void *imageId,
                                       RmgTileInfo *tileInfo);
/* Gives the image a buffer; fills it unless fillValue is -1. */
RMG_API void rmgAllocateImage(RmgImage *image, int fillValue);
/* Stores the 32-bit pattern of fillValue for `bits` over the whole buffer. */
RMG_API void rmgFillImage(RmgImage *image, int fillValue, int bits);
RMG_API void rmgDeallocate(RmgImage *image, int flags);
RMG_API void rmgDeallocateHeader(RmgImage *image);
RMG_API void rmgDeallocateImageData(RmgImage *image);
/* Bit mask of header faults found at creation; 0 when the header is good. */
RMG_API int rmgCheckNewHeader(const RmgImage *image);

RMG_API RmgROI *rmgCreateROI(int coi, int xOffset, int yOffset, int height, int width);
RMG_API void rmgSetROI(RmgROI *roi, int coi, int xOffset, int yOffset, int height,
                       int width);
RMG_API void rmgDeleteROI(RmgROI *roi);

RMG_API RmgTileInfo *rmgCreateTileInfo(RmgCallBack callBack, void *id, int width,
                                       int height);
RMG_API void rmgSetTileInfo(RmgTileInfo *tileInfo, RmgCallBack callBack, void *id,
                            int width, int height);
RMG_API void rmgDeleteTileInfo(RmgTileInfo *tileInfo);

RMG_API void rmgSetBorderMode(RmgImage *image, int mode, int sides, int constant);
RMG_API int rmgWidthStep(int dataOrder, unsigned int depth, int align, int nChannels,
                         int width);

/* Scratch blocks for n elements of 1, 2, 4 or 8 bytes, aligned to 8 bytes;
 * rmgFree gives one back (null is ignored) and returns null. */
RMG_API void *rmgAlloc8(int n);
RMG_API void *rmgAlloc16(int n);
RMG_API void *rmgAlloc32(int n);
RMG_API void *rmgAlloc64(int n);
RMG_API void *rmgFree(void *p);

/* ------------------------------------------------------------------------ */
/* Extended interface: header validation                                     */
/* ------------------------------------------------------------------------ */

/* Bit mask of the header's faults; 0 when it is good. Raises nothing. */
RMG_API int rmgBadImageHeader(const RmgImage *image);
/* The text of a mask, given back with rmgFree; null for 0. */
RMG_API char *rmgBadHeaderText(int mask);
/* Raises once for each of depth, dataOrder and origin that differ. */
RMG_API void rmgCheckCompatible(const RmgImage *srcImage, const RmgImage *dstImage,
                                const char *funcName, const char *fileName, int line);
/* Raises a text for each fault it finds; returns 0. */
RMG_API int rmgCheckImage(const RmgImage *image, const char *funcName, const char *fileName,
                          int line);

/* Row step of one tile of a tiled image; 0 for null, a bad header or an
 * image without tiles. */
RMG_API int rmgTileWidthStep(const RmgImage *image);

/* ------------------------------------------------------------------------ */
/* Extended interface: fill and copy                                         */
/* ------------------------------------------------------------------------ */

/* Writes fillValue, limited to the depth's range, into every element of the
 * image's region (with a coi, of that channel only). For a tiled image a
 * non-null `tile` holds a tile column and row that restrict the walk. */
RMG_API void rmgSet(RmgImage *image, int fillValue, const int *tile);
/* Copies the source's region into the destination's region: the smaller
 * size of the two counts, and a coi on either side selects one channel
 * (channel counts of the regions must agree). Either image may be tiled. For
 * a tiled destination a non-null `tile` holds a tile column and row that
 * restrict the walk. Does nothing while the status is negative. During a
 * call on a tiled image the plain image's `roi` points for a while at a
 * record of the call's own; it is put back before the call returns. */
RMG_API void rmgCopy(RmgImage *srcImage, RmgImage *dstImage, const int *tile);
/* Swaps the regions of two images, with the frame and the arguments of
 * rmgCopy; both images are written. */
RMG_API void rmgExchange(RmgImage *srcImage, RmgImage *dstImage, const int *tile);

/* ------------------------------------------------------------------------ */
/* Extended interface: point operations                                      */
/* ------------------------------------------------------------------------ */

/* Adds `value` to every element of the source's region, with saturation at
 * the depth's limits, into the destination's region (the smaller of the
 * two). Source and destination may be the same image. For a tiled
 * destination a non-null `tilePos` holds the tile column and row to which
 * the operation is restricted. */
RMG_API void rmgAddS(const RmgImage *srcImage, RmgImage *dstImage, int value,
                     const int *tilePos);
/* As rmgAddS with element - value, or value - element when `reversed` is
 * not 0. */
RMG_API void rmgSubtractS(const RmgImage *srcImage, RmgImage *dstImage, int value,
                          int reversed, const int *tilePos);
/* The bitwise AND of every element of the source's region with `value`
 * (its low 8 or 16 bits at those depths, its bit 0 at 1u) into the
 * destination's region; no saturation, so signed and unsigned depths of one
 * width give the same bytes. `tilePos` as in rmgAddS. */
RMG_API void rmgAndS(const RmgImage *srcImage, RmgImage *dstImage, int value,
                     const int *tilePos);
/* The bitwise AND of two images, element by element, into a third. The
 * plain or tiled way is chosen by srcImageA and dstImage. `tilePos` as in
 * rmgAddS. */
RMG_API void rmgAnd(const RmgImage *srcImageA, const RmgImage *srcImageB, RmgImage *dstImage,
                    const int *tilePos);

/* ------------------------------------------------------------------------ */
/* Extended interface: alpha composition                                     */
/* ------------------------------------------------------------------------ */

/* Combines srcImageA and srcImageB, pixel by pixel, under the Porter-Duff
 * operator `compositeType` (RMG_COMPOSITE_xxx) into dstImage, over the
 * smallest region of the three; 8u or 16u. `alphaA` and `alphaB` are each a
 * constant alpha in sample units (above the maximum it is the maximum) or,
 * when negative, the source's own alphaChannel. No destination alpha is
 * written. `premulAlpha` 1: the sources' colours are pre-multiplied;
 * `divideMode` 1: the result is divided by its alpha (float arithmetic).
 * For a tiled destination a non-null `tilePoint` holds a pixel x and y:
 * only the tile that holds it is done. */
RMG_API void rmgAlphaCompositeC(const RmgImage *srcImageA, const RmgImage *srcImageB,
                                RmgImage *dstImage, int compositeType, int alphaA, int alphaB,
                                int premulAlpha, int divideMode, const int *tilePoint);
/* As rmgAlphaCompositeC with the alphas from images: alphaImageA (null: the
 * alphaChannel of srcImageA) and alphaImageB (null: that of srcImageB, or
 * with alphaImageA set the complement of A's alpha); the result's alpha
 * goes to alphaImageDst at its alphaChannel, or with null to dstImage's
 * alphaChannel if it has one. With all images in plane order and
 * `divideMode` 0 the planar rows run, whose truncations differ. */
RMG_API void rmgAlphaComposite(const RmgImage *srcImageA, const RmgImage *srcImageB,
                               RmgImage *dstImage, int compositeType,
                               const RmgImage *alphaImageA, const RmgImage *alphaImageB,
                               RmgImage *alphaImageDst, int premulAlpha, int divideMode,
                               const int *tilePoint);

/* ------------------------------------------------------------------------ */
/* Extended interface: geometric transforms                                  */
/* ------------------------------------------------------------------------ */

/* Copies the source's rectangle into the destination's with its rows
 * reversed (flipAxis 0), its columns reversed (1) or both (-1), over the
 * smaller size of the two, each from its own origin; a coi (the same on
 * both) moves that channel alone. Source and destination may be the same
 * record. A source ROI whose width reaches past the right edge takes the
 * rows below its origin as its width. For a tiled destination a non-null
 * `tilePoint` holds a pixel x and y: only the tile that holds it is done. */
RMG_API void rmgMirror(const RmgImage *srcImage, RmgImage *dstImage, int flipAxis,
                       const int *tilePoint);
/* Enlarges the source's region into the destination's region by xU/xL
 * across and yU/yL down (each at least 1) with RMG_INTER_NN, _LINEAR or
 * _CUBIC interpolation (nearest neighbour for 1-bit images and sources
 * below 2 pixels, linear for cubic below 4), unsigned 8 and 16 bits and
 * 1-bit; signed depths do nothing. The destination is cut to what the
 * source can feed. Either image may be tiled; for a tiled destination a
 * non-null `tilePoint` holds a tile column and row: only that tile is done.
 * Does nothing while the status is negative. During a call on a tiled image
 * the plain image's `roi` points for a while at a record of the call's own;
 * it is put back before the call returns. */
RMG_API void rmgZoom(RmgImage *srcImage, RmgImage *dstImage, int xU, int xL, int yU, int yL,
                     int interpolate, const int *tilePoint);
/* Shrinks the source's region into the destination's region by xU/xL
 * across and yU/yL down (each at most 1) with RMG_INTER_NN, _LINEAR or
 * _CUBIC sampling in fixed point with 8 fractional bits: each destination
 * pixel from one source position and at most 4 by 4 neighbours. Nearest
 * neighbour for 1-bit images, sources below 4 pixels and ratios whole on
 * both axes; 1u, 8u and 16u (other depths refused). A coi on either image
 * picks its channel. Either image may be tiled; for a tiled destination a
 * non-null `tilePoint` holds a tile column and row: only that tile is done.
 * Does nothing while the status is negative. */
RMG_API void rmgDecimate(RmgImage *srcImage, RmgImage *dstImage, int xU, int xL, int yU, int yL,
                         int interpolate, const int *tilePoint);

/* ------------------------------------------------------------------------ */
/* Extended interface: spatial filter                                        */
/* ------------------------------------------------------------------------ */

/* Replaces each pixel of the destination's rectangle by the average of the
 * nCols by nRows box of the source whose corner lies anchorX columns left
 * of and anchorY rows above the pixel's place in the source's rectangle;
 * the box is read through the source's border rules, and the two images
 * may be the same. The average is the box's sum times the float
 * 1 / (nRows * nCols), truncated, its low bits stored (8s, 8u, 16s, 16u,
 * 32s). A coi on either image narrows the channels to those both have. For
 * a tiled destination a non-null `tilePoint` holds a pixel x and y: only
 * the tile that holds it is done. Not re-entrant. */
RMG_API void rmgBlur(const RmgImage *srcImage, RmgImage *dstImage, int nRows, int nCols,
                     int anchorX, int anchorY, const int *tilePoint);

/* ------------------------------------------------------------------------ */
/* Extended interface: colour conversion                                     */
/* ------------------------------------------------------------------------ */

/* Turns the whole of an RGB source (8u, 16u or 32s, either order) into one
 * channel of 1u, 8u or 16u with the weights 54, 183, 18 (/256; 109, 366, 37
 * from 32s and from 16u to 8u in plane order) on the channels in the order
 * of channelSeq, over the smaller size of the two images; roi plays no
 * part. For a tiled destination a non-null `tilePos` holds a tile column
 * and row: only that tile is done. */
RMG_API void rmgColorToGray(const RmgImage *srcImage, RmgImage *dstImage, const int *tilePos);
/* Spreads a gray image over the first three channels of an RGB
 * destination of its depth (or 1u into 8u) with the weights fractR, fractG
 * and fractB, truncated to 8 fraction bits (16u: 15; 32s: the floats
 * themselves); three that truncate to 0 select the luminance weights.
 * `tilePos` as in rmgColorToGray. */
RMG_API void rmgGrayToColor(const RmgImage *srcImage, RmgImage *dstImage, float fractR,
                            float fractG, float fractB, const int *tilePos);
/* Copies an image into one of smaller depth (32s to 16u or 8u, 16u to 8u,
 * 8u to 1u), with noise of strength jitterType (0 to 8, 0: none) before
 * the reduction and a dither stage after it (RMG_DITHER_xxx) that keeps the
 * multiples of (255 or 65535) >> levelShift. `tilePos` as in
 * rmgColorToGray. */
RMG_API void rmgReduceBits(const RmgImage *srcImage, RmgImage *dstImage, int jitterType,
                           int dither, int levelShift, const int *tilePos);

/* ------------------------------------------------------------------------ */
/* Extended interface: status and error reporting                            */
/* ------------------------------------------------------------------------ */

RMG_API int rmgGetErrStatus(void);
RMG_API void rmgSetErrStatus(int status);
RMG_API int *rmgErrStatusPointer(void);
RMG_API int rmgGetErrMode(void);
RMG_API void rmgSetErrMode(int mode);
RMG_API RmgErrorCallBack rmgRedirectError(RmgErrorCallBack handler);
RMG_API int rmgError(int status, const char *funcName, const char *context,
                     const char *fileName, int line);
RMG_API const char *rmgErrStatusText(int status);
RMG_API int rmgLeafExit(int value);
RMG_API const RmgLibVersion *rmgGetLibVersion(void);
RMG_API int rmgDefaultErrorHandler(int status, const char *funcName, const char *context,
                                   const char *fileName, int line);
/* Replaces what shows the error dialog and ends the process; null puts the
 * system's own back. Returns the previous host. */
RMG_API const RmgDialogHost *rmgSetDialogHost(const RmgDialogHost *host);

#ifdef __cplusplus
}
#endif

#endif /* RMG_H */
