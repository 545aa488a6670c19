// Region resolution and the tile grid.
#include "access/ownrect.h"

#include "core/rmgint.h"
#include "rmg.h"

using rmg::add32;
using rmg::mul32;

namespace {

// The region's origin and size before any clipping: the ROI's, or the
// whole image.
void regionOf(const RmgImage *image, int *x, int *y, int *rows, int *columns) {
    if (const RmgROI *roi = image->roi) {
        *x = roi->xOffset;
        *y = roi->yOffset;
        *rows = roi->height;
        *columns = roi->width;
    } else {
        *x = 0;
        *y = 0;
        *rows = image->height;
        *columns = image->width;
    }
}

// Grid of tiles over a region at (x, y) of the given size.
void gridOf(int x, int y, int rows, int columns, int tileHeight, int tileWidth, int *xInTile,
            int *yInTile, int *firstTileX, int *firstTileY, int *nTilesX, int *nTilesY) {
    const int firstX = x / tileWidth;
    const int firstY = y / tileHeight;
    const int lastX = add32(columns, x - 1) / tileWidth;
    const int lastY = add32(rows, y - 1) / tileHeight;
    *xInTile = x - firstX * tileWidth;
    *yInTile = y - firstY * tileHeight;
    *firstTileX = firstX;
    *firstTileY = firstY;
    *nTilesX = lastX - firstX + 1;
    *nTilesY = lastY - firstY + 1;
}

}  // namespace

extern "C" int rmgTileWidthStep(const RmgImage *image) {
    if (image == nullptr || rmgBadImageHeader(image) != 0 || image->tileInfo == nullptr) return 0;
    return rmgWidthStep(image->dataOrder, image->depth, image->align, image->nChannels,
                        image->tileInfo->width);
}

void ownImageRect(const RmgImage *image, unsigned char **data, int *rowStep, int *channels,
                  int *rows, int *columns, int *planeStep) {
    // The row step is computed again from the header; widthStep is a result
    // of allocation, not an input.
    const int bytes = rmg::depthBits(image->depth) >> 3;
    int units = image->width;
    if (image->dataOrder == RMG_DATA_PIXEL) units = mul32(units, image->nChannels);
    if (bytes == 0)
        units = ((units - 1) >> 3) + 1;
    else if (bytes == 2)
        units = mul32(units, 2);
    else if (bytes == 4)
        units = mul32(units, 4);
    const int step = image->align == 4 ? (add32(units, 3) & ~3) : (add32(units, 7) & ~7);

    int x = 0, y = 0, h = image->height, w = image->width, coi = 0;
    if (const RmgROI *roi = image->roi) {
        x = roi->xOffset;
        y = roi->yOffset;
        h = roi->height;
        w = roi->width;
        coi = roi->coi;
        if (x >= image->width || add32(x, w) < 1) {
            w = 0;
            x = 0;
        }
        if (y >= image->height || add32(y, h) < 1) {
            h = 0;
            y = 0;
        }
        if (x < 0) {
            w += x;
            x = 0;
        }
        if (y < 0) {
            h += y;
            y = 0;
        }
        if (add32(x, w) > image->width) w = image->width - x;
        if (add32(y, h) > image->height) h = image->height - y;
    }

    unsigned char *p = image->imageData + mul32(y, step);
    if (image->dataOrder == RMG_DATA_PLANE) {
        p += mul32(x, bytes);
        if (coi > 1) p += mul32(mul32(coi - 1, step), image->height);
    } else {
        p += mul32(mul32(x, bytes), image->nChannels);
        if (coi > 1) p += mul32(coi - 1, bytes);
    }
    *data = p;
    *rowStep = step;
    *channels = coi != 0 ? 1 : image->nChannels;
    *rows = h;
    *columns = w;
    *planeStep = mul32(image->height, step);
}

void ownTileRect(const RmgImage *image, int *rows, int *columns, int *xInTile, int *yInTile,
                 int *tileHeight, int *tileWidth, int *firstTileX, int *firstTileY, int *nTilesX,
                 int *nTilesY) {
    *tileWidth = image->tileInfo->width;
    *tileHeight = image->tileInfo->height;
    int x, y;
    regionOf(image, &x, &y, rows, columns);
    gridOf(x, y, *rows, *columns, *tileHeight, *tileWidth, xInTile, yInTile, firstTileX,
           firstTileY, nTilesX, nTilesY);
}

int ownTileRectPair(const RmgImage *otherImage, const RmgImage *tiledImage, int *rows,
                    int *columns, int *xInTile, int *yInTile, int *tileHeight, int *tileWidth,
                    int *firstTileX, int *firstTileY, int *nTilesX, int *nTilesY) {
    int otherX, otherY, otherRows, otherColumns;
    regionOf(otherImage, &otherX, &otherY, &otherRows, &otherColumns);
    int x, y, tiledRows, tiledColumns;
    regionOf(tiledImage, &x, &y, &tiledRows, &tiledColumns);
    const int h = otherRows < tiledRows ? otherRows : tiledRows;
    const int w = otherColumns < tiledColumns ? otherColumns : tiledColumns;
    if (h == 0 || w == 0) return 0;
    *rows = h;
    *columns = w;
    *tileWidth = tiledImage->tileInfo->width;
    *tileHeight = tiledImage->tileInfo->height;
    gridOf(x, y, h, w, *tileHeight, *tileWidth, xInTile, yInTile, firstTileX, firstTileY,
           nTilesX, nTilesY);
    return 1;
}

int ownTilePartSize(int index, int count, int inTile, int tileSize, int extent) {
    if (index == 0) return count == 1 ? extent : tileSize - inTile;
    if (index == count - 1) return (add32(extent - 1, inTile) % tileSize) + 1;
    return tileSize;
}
