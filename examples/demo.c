/*
 * demo.c - a tour of the rmg library through its public header only.
 *
 * Creates and fills images of all six depths, prints their geometry and
 * first pixels; fills a tiled image whose tiles the demo serves from its
 * own memory through a call-back; copies a region that reaches past the
 * edge of a tiled image into another, with the border rules filling in
 * beyond the edge; composes two generated images with alpha; mirrors and
 * blurs small generated images; then makes a call that the library refuses
 * so that the error reaches the console dialog, and prints the status it
 * leaves.
 */
#include <stdio.h>
#include <string.h>

#include "rmg.h"

struct depth_case {
    const char *name;
    unsigned int depth;
    int fill;
};

static void print_bytes(const unsigned char *p, int n) {
    int i;
    for (i = 0; i < n; ++i) printf("%02x%s", p[i], i + 1 < n ? " " : "");
}

static int show_images(void) {
    static const struct depth_case cases[] = {
        {"1u", RMG_DEPTH_1U, 1},       {"8u", RMG_DEPTH_8U, 0x7f},
        {"16u", RMG_DEPTH_16U, 0x1234}, {"8s", RMG_DEPTH_8S, -2},
        {"16s", RMG_DEPTH_16S, -300},   {"32s", RMG_DEPTH_32S, 0x01020304},
    };
    size_t i;
    printf("Images of the six depths, 3 x 5 pixels, filled on allocation:\n");
    for (i = 0; i < sizeof cases / sizeof cases[0]; ++i) {
        const int channels = cases[i].depth == RMG_DEPTH_1U ? 1 : 3;
        RmgImage *image = wrmgCreateImageHeader(channels, 0, cases[i].depth,
                                                channels == 1 ? "GRAY" : "RGB",
                                                channels == 1 ? "GRAY" : "BGR", RMG_DATA_PIXEL,
                                                RMG_ORIGIN_TL, 4, 3, 5, NULL, NULL, NULL);
        if (image == NULL) {
            printf("  %-3s: no header\n", cases[i].name);
            return 1;
        }
        wrmgAllocateImage(image, cases[i].fill);
        if (image->imageData == NULL) {
            printf("  %-3s: no memory\n", cases[i].name);
            wrmgDeallocate(image, RMG_DEALLOC_ALL);
            return 1;
        }
        printf("  %-3s: fill %11d  widthStep %2d  imageSize %3d  row 0: ", cases[i].name,
               cases[i].fill, image->widthStep, image->imageSize);
        print_bytes(image->imageData, image->widthStep);
        printf("\n");
        wrmgDeallocate(image, RMG_DEALLOC_ALL);
    }
    return 0;
}

static void show_refusal(void) {
    RmgImage *image;
    printf("\nA header that the library refuses: align 3 makes creation fail quietly:\n");
    image = wrmgCreateImageHeader(3, 0, RMG_DEPTH_8U, "RGB", "BGR", RMG_DATA_PIXEL,
                                  RMG_ORIGIN_TL, 3, 4, 4, NULL, NULL, NULL);
    printf("  wrmgCreateImageHeader(..., align 3, ...) gives %s\n",
           image == NULL ? "NULL" : "a header");
    wrmgDeallocate(image, RMG_DEALLOC_ALL);
}

/* The tiled image: 24 x 16 bytes in 3 x 2 tiles of 8 x 8, kept by the demo.
 * The call-back hands out a tile's first byte and notes which tiles the
 * library asked to write. */
#define TILE_SIDE 8
static unsigned char tile_store[2][3][TILE_SIDE * TILE_SIDE];
static char tile_log[64];

static void serve_tile(const RmgImage *image, int x, int y, int mode) {
    size_t used = strlen(tile_log);
    if (mode == RMG_TILE_RELEASE) {
        image->tileInfo->tileData = NULL;
        return;
    }
    if (used + 7 < sizeof tile_log) sprintf(tile_log + used, " (%d,%d)", x, y);
    image->tileInfo->tileData =
        x >= 0 && x < 3 && y >= 0 && y < 2 ? tile_store[y][x] : NULL;
}

static void print_tile_rows(int x, int y, int first, int last) {
    int row;
    for (row = first; row <= last; ++row) {
        printf("  tile (%d,%d) row %d: ", x, y, row);
        print_bytes(tile_store[y][x] + row * TILE_SIDE, TILE_SIDE);
        printf("\n");
    }
}

static int show_tiles(void) {
    RmgTileInfo *tiles = rmgCreateTileInfo(serve_tile, NULL, TILE_SIDE, TILE_SIDE);
    RmgROI *roi = wrmgCreateROI(0, 4, 3, 9, 12);
    RmgImage *image = wrmgCreateImageHeader(1, 0, RMG_DEPTH_8U, "GRAY", "GRAY", RMG_DATA_PIXEL,
                                            RMG_ORIGIN_TL, 4, 16, 24, NULL, NULL, tiles);
    if (tiles == NULL || roi == NULL || image == NULL) {
        printf("  no memory\n");
        return 1;
    }
    printf("\nA tiled image of 24 x 16 bytes, its 8 x 8 tiles in the demo's own memory:\n");
    tile_log[0] = '\0';
    wrmgSet(image, 0x11, NULL);
    printf("  wrmgSet(image, 0x11, NULL) writes tiles%s\n", tile_log);
    image->roi = roi;
    tile_log[0] = '\0';
    wrmgSet(image, 0x5a, NULL);
    printf("  with a ROI of 12 x 9 at (4,3), wrmgSet(image, 0x5a, NULL) writes tiles%s\n",
           tile_log);
    print_tile_rows(0, 0, 2, 3);
    print_tile_rows(1, 1, 3, 4);
    print_tile_rows(2, 1, 0, 0);
    wrmgDeallocate(image, RMG_DEALLOC_ALL);
    return 0;
}

/* Copying out of a tiled image past its edge. The source is 16 x 16 bytes
 * in 2 x 2 tiles that its call-back computes on request, pixel (x, y) being
 * 16 * y + x; beyond its right edge the edge column is replicated, below its
 * bottom edge stands the constant 0xee. The destination is one 8 x 8 tile of
 * the demo's own. With both images tiled, the source's part is read through
 * the border rules. */
static unsigned char gradient_tiles[2][2][TILE_SIDE * TILE_SIDE];
static unsigned char copy_tile[TILE_SIDE * TILE_SIDE];
static char copy_log[64];

static void serve_gradient(const RmgImage *image, int x, int y, int mode) {
    size_t used = strlen(copy_log);
    int i;
    if (mode == RMG_TILE_RELEASE) {
        image->tileInfo->tileData = NULL;
        return;
    }
    if (used + 7 < sizeof copy_log) sprintf(copy_log + used, " (%d,%d)", x, y);
    if (x < 0 || x > 1 || y < 0 || y > 1) {
        image->tileInfo->tileData = NULL;
        return;
    }
    for (i = 0; i < TILE_SIDE * TILE_SIDE; ++i)
        gradient_tiles[y][x][i] = (unsigned char)(16 * (TILE_SIDE * y + i / TILE_SIDE) +
                                                  TILE_SIDE * x + i % TILE_SIDE);
    image->tileInfo->tileData = gradient_tiles[y][x];
}

static void serve_copy_tile(const RmgImage *image, int x, int y, int mode) {
    (void)x;
    (void)y;
    image->tileInfo->tileData = mode == RMG_TILE_RELEASE ? NULL : copy_tile;
}

static int show_copy(void) {
    RmgTileInfo *src_tiles = rmgCreateTileInfo(serve_gradient, NULL, TILE_SIDE, TILE_SIDE);
    RmgTileInfo *dst_tiles = rmgCreateTileInfo(serve_copy_tile, NULL, TILE_SIDE, TILE_SIDE);
    RmgROI *roi = wrmgCreateROI(0, 12, 12, 6, 8);
    RmgImage *src = wrmgCreateImageHeader(1, 0, RMG_DEPTH_8U, "GRAY", "GRAY", RMG_DATA_PIXEL,
                                          RMG_ORIGIN_TL, 4, 16, 16, roi, NULL, src_tiles);
    RmgImage *dst = wrmgCreateImageHeader(1, 0, RMG_DEPTH_8U, "GRAY", "GRAY", RMG_DATA_PIXEL,
                                          RMG_ORIGIN_TL, 4, TILE_SIDE, TILE_SIDE, NULL, NULL,
                                          dst_tiles);
    int row;
    if (src_tiles == NULL || dst_tiles == NULL || roi == NULL || src == NULL || dst == NULL) {
        printf("  no memory\n");
        return 1;
    }
    rmgSetBorderMode(src, RMG_BORDER_REPLICATE, RMG_SIDE_RIGHT, 0);
    rmgSetBorderMode(src, RMG_BORDER_CONST, RMG_SIDE_BOTTOM, 0xee);
    memset(copy_tile, 0, sizeof copy_tile);
    copy_log[0] = '\0';
    printf("\nA tiled image of 16 x 16 bytes, pixel (x,y) = 16y + x, replicated beyond\n"
           "its right edge and 0xee below its bottom: wrmgCopy of its 8 x 6 ROI at\n"
           "(12,12) into a tiled 8 x 8 image (source tiles served:");
    wrmgCopy(src, dst, NULL);
    printf("%s):\n", copy_log);
    for (row = 0; row < 6; ++row) {
        printf("  row %d (source row %2d): ", row, 12 + row);
        print_bytes(copy_tile + row * TILE_SIDE, TILE_SIDE);
        printf("\n");
    }
    wrmgDeallocate(src, RMG_DEALLOC_ALL);
    wrmgDeallocate(dst, RMG_DEALLOC_ALL);
    return wrmgGetErrStatus() == RMG_StsOk ? 0 : 1;
}

static void show_error(void) {
    RmgImage *image;
    printf("\nwrmgSet on a header that was created but never given data: the error goes\n"
           "through the default handler to the console dialog (on standard error),\n"
           "which answers so that the program goes on:\n");
    fflush(stdout);
    image = wrmgCreateImageHeader(1, 0, RMG_DEPTH_8U, "GRAY", "GRAY", RMG_DATA_PIXEL,
                                  RMG_ORIGIN_TL, 4, 4, 4, NULL, NULL, NULL);
    wrmgSet(image, 0, NULL);
    fflush(stderr);
    printf("  wrmgGetErrStatus() = %d (%s)\n", wrmgGetErrStatus(),
           rmgErrStatusText(wrmgGetErrStatus()));
    wrmgDeallocate(image, RMG_DEALLOC_ALL);
}

static RmgImage *gray_image(int height, int width) {
    RmgImage *image = wrmgCreateImageHeader(1, 0, RMG_DEPTH_8U, "GRAY", "GRAY", RMG_DATA_PIXEL,
                                            RMG_ORIGIN_TL, 4, height, width, NULL, NULL, NULL);
    if (image != NULL) wrmgAllocateImage(image, 0);
    return image;
}

static void print_row(const char *label, const RmgImage *image) {
    printf("  %-28s", label);
    print_bytes(image->imageData, image->width);
    printf("\n");
}

static int show_point_operations(void) {
    RmgImage *ramp = gray_image(1, 12);
    RmgImage *result = gray_image(1, 12);
    RmgImage *mask = gray_image(1, 12);
    RmgImage *wide = NULL;
    int x;
    if (ramp == NULL || result == NULL || mask == NULL) return 1;
    for (x = 0; x < 12; ++x) {
        ramp->imageData[x] = (unsigned char)(x * 23);
        mask->imageData[x] = (unsigned char)(x < 6 ? 0xFF : 0x0F);
    }
    printf("\nPoint operations on a generated 8-bit ramp (saturating at 0 and 255):\n");
    print_row("ramp", ramp);
    wrmgAddS(ramp, result, 60, NULL);
    print_row("wrmgAddS +60 (brighter)", result);
    wrmgSubtractS(ramp, result, 100, 0, NULL);
    print_row("wrmgSubtractS 100 (darker)", result);
    wrmgAndS(ramp, result, 0xF0, NULL);
    print_row("wrmgAndS 0xf0", result);
    wrmgAnd(ramp, mask, result, NULL);
    print_row("wrmgAnd with a mask image", result);

    /* A deliberately bad call: a 16-bit source into an 8-bit destination.
       The dialog is silenced through the extended interface this time. */
    wide = wrmgCreateImageHeader(1, 0, RMG_DEPTH_16U, "GRAY", "GRAY", RMG_DATA_PIXEL,
                                 RMG_ORIGIN_TL, 4, 1, 12, NULL, NULL, NULL);
    wrmgAllocateImage(wide, 0);
    rmgSetErrMode(RMG_ErrorModeSilent);
    wrmgAddS(wide, result, 1, NULL);
    rmgSetErrMode(RMG_ErrorModeLeaf);
    printf("  wrmgAddS(16-bit source, 8-bit destination) leaves the status at %d (%s)\n",
           wrmgGetErrStatus(), rmgErrStatusText(wrmgGetErrStatus()));
    print_row("destination unchanged", result);
    /* The status is sticky, and Copy, Zoom, Decimate and the colour
       operations do nothing while it is negative: a program that goes on
       after a failure clears it, as here. */
    rmgSetErrStatus(RMG_StsOk);
    wrmgDeallocate(wide, RMG_DEALLOC_ALL);
    wrmgDeallocate(ramp, RMG_DEALLOC_ALL);
    wrmgDeallocate(result, RMG_DEALLOC_ALL);
    wrmgDeallocate(mask, RMG_DEALLOC_ALL);
    return 0;
}

/* Two generated 8-bit RGBA images of 1 x 4 pixels composed: A is a red ramp
 * whose alpha rises from 0 to 255, B an opaque blue. */
static RmgImage *rgba_image(void) {
    RmgImage *image = wrmgCreateImageHeader(4, 4, RMG_DEPTH_8U, "RGBA", "RGBA", RMG_DATA_PIXEL,
                                            RMG_ORIGIN_TL, 4, 1, 4, NULL, NULL, NULL);
    if (image != NULL) wrmgAllocateImage(image, 0);
    return image;
}

static void print_pixels(const char *label, const RmgImage *image) {
    int x;
    printf("  %-34s", label);
    for (x = 0; x < image->width; ++x) {
        printf("(");
        print_bytes(image->imageData + 4 * x, 4);
        printf(")%s", x + 1 < image->width ? " " : "");
    }
    printf("\n");
}

static int show_composition(void) {
    RmgImage *a = rgba_image();
    RmgImage *b = rgba_image();
    RmgImage *result = rgba_image();
    int x;
    if (a == NULL || b == NULL || result == NULL || a->imageData == NULL ||
        b->imageData == NULL || result->imageData == NULL)
        return 1;
    for (x = 0; x < 4; ++x) {
        unsigned char *pa = a->imageData + 4 * x;
        unsigned char *pb = b->imageData + 4 * x;
        pa[0] = 0xFF, pa[1] = 0x20, pa[2] = 0x00, pa[3] = (unsigned char)(x * 85);
        pb[0] = 0x00, pb[1] = 0x40, pb[2] = 0xFF, pb[3] = 0xFF;
    }
    printf("\nAlpha composition of two generated RGBA images (alpha in channel 4):\n");
    print_pixels("A, red with alpha 0, 85, 170, 255", a);
    print_pixels("B, opaque blue", b);
    wrmgAlphaComposite(a, b, result, RMG_COMPOSITE_OVER, NULL, NULL, NULL, 0, 0, NULL);
    print_pixels("wrmgAlphaComposite, A over B", result);
    wrmgAlphaComposite(a, b, result, RMG_COMPOSITE_XOR, NULL, NULL, NULL, 0, 0, NULL);
    print_pixels("wrmgAlphaComposite, A xor B", result);
    /* The constant form: both alphas 128, the result's alpha left alone. */
    wrmgAlphaCompositeC(a, b, result, RMG_COMPOSITE_PLUS, 128, 128, 0, 0, NULL);
    print_pixels("wrmgAlphaCompositeC, plus at 128", result);
    wrmgDeallocate(a, RMG_DEALLOC_ALL);
    wrmgDeallocate(b, RMG_DEALLOC_ALL);
    wrmgDeallocate(result, RMG_DEALLOC_ALL);
    return wrmgGetErrStatus() == RMG_StsOk ? 0 : 1;
}

/* A generated 3 x 4 image of one byte per pixel, mirrored both ways into
 * another, and then in place on itself along its rows. */
static int show_mirror(void) {
    RmgImage *src = wrmgCreateImageHeader(1, 0, RMG_DEPTH_8U, "GRAY", "GRAY", RMG_DATA_PIXEL,
                                          RMG_ORIGIN_TL, 4, 3, 4, NULL, NULL, NULL);
    RmgImage *dst = wrmgCreateImageHeader(1, 0, RMG_DEPTH_8U, "GRAY", "GRAY", RMG_DATA_PIXEL,
                                          RMG_ORIGIN_TL, 4, 3, 4, NULL, NULL, NULL);
    int r, c;
    if (src == NULL || dst == NULL) return 1;
    wrmgAllocateImage(src, 0);
    wrmgAllocateImage(dst, 0);
    if (src->imageData == NULL || dst->imageData == NULL) return 1;
    for (r = 0; r < 3; ++r)
        for (c = 0; c < 4; ++c) src->imageData[r * src->widthStep + c] = (unsigned char)(r * 16 + c);
    wrmgMirror(src, dst, -1, NULL);
    printf("\nMirror of a 3 x 4 image, both axes, then its rows in place:\n");
    for (r = 0; r < 3; ++r) {
        printf("  row %d: ", r);
        print_bytes(src->imageData + r * src->widthStep, 4);
        printf("  ->  ");
        print_bytes(dst->imageData + r * dst->widthStep, 4);
        printf("\n");
    }
    wrmgMirror(dst, dst, 0, NULL);
    printf("  in place, rows reversed, row 0: ");
    print_bytes(dst->imageData, 4);
    printf("\n");
    wrmgDeallocate(src, RMG_DEALLOC_ALL);
    wrmgDeallocate(dst, RMG_DEALLOC_ALL);
    return 0;
}

/* A generated 5 x 6 image, a bright square on a ramp, blurred with a box of
 * 3 x 3 around each pixel, the edges replicated. */
static int show_blur(void) {
    RmgImage *src = gray_image(5, 6);
    RmgImage *dst = gray_image(5, 6);
    int r, c;
    if (src == NULL || dst == NULL || src->imageData == NULL || dst->imageData == NULL) return 1;
    for (r = 0; r < 5; ++r)
        for (c = 0; c < 6; ++c)
            src->imageData[r * src->widthStep + c] =
                (unsigned char)(r >= 1 && r <= 3 && c >= 2 && c <= 4 ? 200 : 10 * c);
    rmgSetBorderMode(src, RMG_BORDER_REPLICATE, 15, 0);
    wrmgBlur(src, dst, 3, 3, 1, 1, NULL);
    printf("\nBlur of a 5 x 6 image with a 3 x 3 box, edges replicated:\n");
    for (r = 0; r < 5; ++r) {
        printf("  row %d: ", r);
        print_bytes(src->imageData + r * src->widthStep, 6);
        printf("  ->  ");
        print_bytes(dst->imageData + r * dst->widthStep, 6);
        printf("\n");
    }
    wrmgDeallocate(src, RMG_DEALLOC_ALL);
    wrmgDeallocate(dst, RMG_DEALLOC_ALL);
    return 0;
}

/* A 2 x 4 colour image of generated RGB pixels to gray (weights 54, 183,
 * 18 over 256) and the gray back into colour with the weights 1.0, 0.5,
 * 0.25 of red, green and blue. */
static int show_color(void) {
    RmgImage *rgb = wrmgCreateImageHeader(3, 0, RMG_DEPTH_8U, "RGB", "RGB", RMG_DATA_PIXEL,
                                          RMG_ORIGIN_TL, 4, 2, 4, NULL, NULL, NULL);
    RmgImage *gray = wrmgCreateImageHeader(1, 0, RMG_DEPTH_8U, "GRAY", "GRAY", RMG_DATA_PIXEL,
                                           RMG_ORIGIN_TL, 4, 2, 4, NULL, NULL, NULL);
    RmgImage *back = wrmgCreateImageHeader(3, 0, RMG_DEPTH_8U, "RGB", "RGB", RMG_DATA_PIXEL,
                                           RMG_ORIGIN_TL, 4, 2, 4, NULL, NULL, NULL);
    int r, c;
    if (rgb == NULL || gray == NULL || back == NULL) return 1;
    wrmgAllocateImage(rgb, 0);
    wrmgAllocateImage(gray, 0);
    wrmgAllocateImage(back, 0);
    for (r = 0; r < 2; ++r)
        for (c = 0; c < 4; ++c) {
            unsigned char *p = rgb->imageData + r * rgb->widthStep + 3 * c;
            p[0] = (unsigned char)(60 * c + 40 * r);
            p[1] = (unsigned char)(255 - 50 * c);
            p[2] = (unsigned char)(100 + 30 * r);
        }
    wrmgColorToGray(rgb, gray, NULL);
    wrmgGrayToColor(gray, back, 1.0f, 0.5f, 0.25f, NULL);
    printf("\nColour to gray and back (fractions 1.0, 0.5, 0.25):\n");
    for (r = 0; r < 2; ++r)
        for (c = 0; c < 4; ++c) {
            const unsigned char *p = rgb->imageData + r * rgb->widthStep + 3 * c;
            const unsigned char *q = back->imageData + r * back->widthStep + 3 * c;
            printf("  (%d,%d) rgb %3u %3u %3u -> gray %3u -> rgb %3u %3u %3u\n", c, r, p[0], p[1],
                   p[2], gray->imageData[r * gray->widthStep + c], q[0], q[1], q[2]);
        }
    wrmgDeallocate(rgb, RMG_DEALLOC_ALL);
    wrmgDeallocate(gray, RMG_DEALLOC_ALL);
    wrmgDeallocate(back, RMG_DEALLOC_ALL);
    return wrmgGetErrStatus() == RMG_StsOk ? 0 : 1;
}

/* A 3 x 4 gray ramp zoomed 2x across and down, nearest neighbour and
 * linear: the linear rows lie between the source rows. */
static int show_zoom(void) {
    RmgImage *src = wrmgCreateImageHeader(1, 0, RMG_DEPTH_8U, "GRAY", "GRAY", RMG_DATA_PIXEL,
                                          RMG_ORIGIN_TL, 4, 3, 4, NULL, NULL, NULL);
    RmgImage *nn = wrmgCreateImageHeader(1, 0, RMG_DEPTH_8U, "GRAY", "GRAY", RMG_DATA_PIXEL,
                                         RMG_ORIGIN_TL, 4, 5, 7, NULL, NULL, NULL);
    RmgImage *lin = wrmgCreateImageHeader(1, 0, RMG_DEPTH_8U, "GRAY", "GRAY", RMG_DATA_PIXEL,
                                          RMG_ORIGIN_TL, 4, 5, 7, NULL, NULL, NULL);
    int r, c;
    if (src == NULL || nn == NULL || lin == NULL) return 1;
    wrmgAllocateImage(src, 0);
    wrmgAllocateImage(nn, 0);
    wrmgAllocateImage(lin, 0);
    for (r = 0; r < 3; ++r)
        for (c = 0; c < 4; ++c) src->imageData[r * src->widthStep + c] = (unsigned char)(40 * r + 20 * c);
    wrmgZoom(src, nn, 2, 1, 2, 1, RMG_INTER_NN, NULL);
    wrmgZoom(src, lin, 2, 1, 2, 1, RMG_INTER_LINEAR, NULL);
    printf("\nZoom of a 3 x 4 ramp by 2, nearest neighbour | linear:\n");
    for (r = 0; r < 5; ++r) {
        printf("  row %d: ", r);
        print_bytes(nn->imageData + r * nn->widthStep, 7);
        printf(" | ");
        print_bytes(lin->imageData + r * lin->widthStep, 7);
        printf("\n");
    }
    wrmgDeallocate(src, RMG_DEALLOC_ALL);
    wrmgDeallocate(nn, RMG_DEALLOC_ALL);
    wrmgDeallocate(lin, RMG_DEALLOC_ALL);
    return wrmgGetErrStatus() == RMG_StsOk ? 0 : 1;
}

/* An 8 x 9 gray ramp decimated to 3/5 of its size down and 2/3 across,
 * nearest neighbour and linear: nearest takes the pixel under each
 * position, linear mixes the two around it in 1/256 steps. */
static int show_decimate(void) {
    RmgImage *src = gray_image(8, 9);
    RmgImage *nn = gray_image(4, 6);
    RmgImage *lin = gray_image(4, 6);
    int r, c;
    if (src == NULL || nn == NULL || lin == NULL) return 1;
    for (r = 0; r < 8; ++r)
        for (c = 0; c < 9; ++c)
            src->imageData[r * src->widthStep + c] = (unsigned char)(30 * r + 10 * c);
    wrmgDecimate(src, nn, 2, 3, 3, 5, RMG_INTER_NN, NULL);
    wrmgDecimate(src, lin, 2, 3, 3, 5, RMG_INTER_LINEAR, NULL);
    printf("\nDecimate of an 8 x 9 ramp (30 a row, 10 a column) by 2/3 across and 3/5 down, "
           "nearest | linear:\n");
    for (r = 0; r < 4; ++r) {
        printf("  row %d: ", r);
        print_bytes(nn->imageData + r * nn->widthStep, 6);
        printf(" | ");
        print_bytes(lin->imageData + r * lin->widthStep, 6);
        printf("\n");
    }
    wrmgDeallocate(src, RMG_DEALLOC_ALL);
    wrmgDeallocate(nn, RMG_DEALLOC_ALL);
    wrmgDeallocate(lin, RMG_DEALLOC_ALL);
    return wrmgGetErrStatus() == RMG_StsOk ? 0 : 1;
}

/* A 16-bit ramp of one row reduced to 8 bits: plainly, and with
 * Floyd-Steinberg dither to the multiples of 255 >> 3 = 31. */
static int show_reduce(void) {
    RmgImage *ramp = wrmgCreateImageHeader(1, 0, RMG_DEPTH_16U, "GRAY", "G", RMG_DATA_PIXEL,
                                           RMG_ORIGIN_TL, 4, 1, 8, NULL, NULL, NULL);
    RmgImage *plain = gray_image(1, 8);
    RmgImage *fs = gray_image(1, 8);
    int c;
    if (ramp == NULL || plain == NULL || fs == NULL) return 1;
    wrmgAllocateImage(ramp, 0);
    for (c = 0; c < 8; ++c) {
        const unsigned int v = 1000u + 8000u * (unsigned int)c;
        ramp->imageData[2 * c] = (unsigned char)v;
        ramp->imageData[2 * c + 1] = (unsigned char)(v >> 8);
    }
    rmgReduceBits(ramp, plain, 0, RMG_DITHER_NONE, 0, NULL);
    rmgReduceBits(ramp, fs, 0, RMG_DITHER_FS, 3, NULL);
    printf("\nReduction of a 16-bit ramp (1000 + 8000 a column) to 8 bits, plain | dithered:\n  ");
    print_bytes(plain->imageData, 8);
    printf(" | ");
    print_bytes(fs->imageData, 8);
    printf("\n");
    wrmgDeallocate(ramp, RMG_DEALLOC_ALL);
    wrmgDeallocate(plain, RMG_DEALLOC_ALL);
    wrmgDeallocate(fs, RMG_DEALLOC_ALL);
    return wrmgGetErrStatus() == RMG_StsOk ? 0 : 1;
}

int main(void) {
    if (show_images() != 0) return 1;
    if (show_tiles() != 0) return 1;
    if (show_copy() != 0) return 1;
    if (show_composition() != 0) return 1;
    if (show_point_operations() != 0) return 1;
    if (show_mirror() != 0) return 1;
    if (show_zoom() != 0) return 1;
    if (show_color() != 0) return 1;
    if (show_blur() != 0) return 1;
    if (show_decimate() != 0) return 1;
    if (show_reduce() != 0) return 1;
    show_refusal();
    show_error();
    return wrmgGetErrStatus() == RMG_StsBadArg ? 0 : 1;
}
