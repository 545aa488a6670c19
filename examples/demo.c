/*
 * demo.c - a tour of the rmg library through its public header only.
 *
 * Creates and fills images of all six depths, prints their geometry and
 * first pixels, then makes a call that the library refuses so that the
 * error reaches the console dialog, and prints the status it leaves.
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

static void show_error(void) {
    printf("\nA raised error goes through the default handler to the console dialog\n"
           "(on standard error), which answers so that the program goes on:\n");
    fflush(stdout);
    rmgError(RMG_StsBadArg, "rmgDemo", "image->align != 4 && image->align != 8", "demo", 42);
    printf("  wrmgGetErrStatus() = %d (%s)\n", wrmgGetErrStatus(),
           rmgErrStatusText(wrmgGetErrStatus()));
}

int main(void) {
    if (show_images() != 0) return 1;
    show_refusal();
    show_error();
    return wrmgGetErrStatus() == RMG_StsBadArg ? 0 : 1;
}
