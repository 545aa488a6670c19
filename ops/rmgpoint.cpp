// The frame of the point operations: opening checks, region helpers, the
// case analysis of a row kernel and the tile walk.
#include "ops/rmgpoint.h"

#include <cstdint>

#include "core/rmgint.h"
#include "core/rmgvalid.h"
#include "rmg.h"

using rmg::add32;
using rmg::mul32;
using rmg::sub32;

namespace {

int minOf(int a, int b) { return a < b ? a : b; }

// Bytes of one element: 1 for 1-bit images (their column offsets are
// divided by 8 where the geometry needs it), else bits / 8.
int elementSize(const RmgImage *image) {
    return image->depth == RMG_DEPTH_1U ? 1 : rmg::depthBits(image->depth) >> 3;
}

// One call of the tile call-back; the tile's address is what it leaves in
// tileData right after the call.
unsigned char *callTile(const RmgImage *image, int column, int row, int mode) {
    image->tileInfo->callBack(image, column, row, mode);
    return image->tileInfo->tileData;
}

}  // namespace

void rmgRoiRect(const RmgImage *image, RmgRoiRect *rect) {
    if (const RmgROI *roi = image->roi) {
        rect->begX = roi->xOffset;
        rect->begY = roi->yOffset;
        rect->width = roi->width;
        rect->height = roi->height;
        if (add32(rect->begX, rect->width) > image->width)
            rect->width = sub32(image->width, rect->begX);
        if (add32(rect->begY, rect->height) > image->height)
            rect->height = sub32(image->height, rect->begY);
    } else {
        rect->begX = 0;
        rect->begY = 0;
        rect->width = image->width;
        rect->height = image->height;
    }
    rect->endX = add32(rect->begX, rect->width);
    rect->endY = add32(rect->begY, rect->height);
}

void rmgTileWalkInit(const RmgImage *image, RmgImage *copy, const RmgRoiRect *rect,
                     RmgTileCursor *cursor) {
    *cursor = RmgTileCursor{};
    if (image->tileInfo == nullptr) {
        cursor->tiled = 0;
        copy->width = image->width;
        copy->height = image->height;
        copy->imageData = image->imageData;
        return;
    }
    const int tileWidth = image->tileInfo->width;
    const int tileHeight = image->tileInfo->height;
    cursor->tiled = 1;
    cursor->tileWidth = tileWidth;
    cursor->tileHeight = tileHeight;
    cursor->column = rect->begX / tileWidth;
    cursor->row = rect->begY / tileHeight;
    cursor->begX = mul32(cursor->column, tileWidth);
    cursor->endX = add32(cursor->begX, tileWidth);
    cursor->begY = mul32(cursor->row, tileHeight);
    cursor->endY = add32(cursor->begY, tileHeight);
    cursor->workBegX = cursor->begX;
    cursor->workEndX = cursor->endX;
    cursor->workColumn = cursor->column;

    // A tile is laid out like an image of one tile's size.
    copy->tileInfo = nullptr;
    copy->widthStep =
        rmgWidthStep(image->dataOrder, image->depth, image->align, image->nChannels, tileWidth);
    copy->width = tileWidth;
    copy->height = tileHeight;
    copy->imageSize = mul32(copy->widthStep, tileHeight);
    if (image->dataOrder == RMG_DATA_PLANE) copy->imageSize = mul32(copy->imageSize, image->nChannels);
    copy->imageData = nullptr;
}

bool rmgIsWholeImage(const RmgImage *a, const RmgImage *b) {
    if (a->height != b->height || a->width != b->width || a->imageSize != b->imageSize)
        return false;
    for (const RmgImage *image : {a, b}) {
        const RmgROI *roi = image->roi;
        if (roi == nullptr) continue;
        if (roi->xOffset != 0 || roi->yOffset != 0) return false;
        if (roi->height < image->height || roi->width < image->width) return false;
        if (roi->coi != 0 && !(roi->coi == 1 && image->nChannels == 1)) return false;
    }
    return true;
}

int rmgRunStride(const RmgImage *image) {
    return rmgWidthStep(image->dataOrder, image->depth, image->align, image->nChannels,
                        image->width);
}

int rmgRunGeometry(const RmgImage *image, int *rowBytes, int *rows, int *channels) {
    if (image == nullptr) return -1;
    const int size = elementSize(image);

    int firstChannel = 1;
    int lastChannel = image->nChannels;
    int firstRow = 0;
    int lastRow = image->height - 1;
    int firstColumn = 0;
    int lastColumn = image->width - 1;
    if (const RmgROI *roi = image->roi) {
        if (roi->coi != 0) firstChannel = lastChannel = roi->coi;
        firstRow = roi->yOffset;
        lastRow = minOf(add32(roi->yOffset, roi->height) - 1, image->height - 1);
        firstColumn = roi->xOffset;
        lastColumn = minOf(add32(roi->xOffset, roi->width) - 1, image->width - 1);
        if (lastRow < 0 || lastColumn < 0) return -1;
        if (roi->coi > image->nChannels) return -1;
        // A negative coi never passes the header test; refused here too, as
        // it would place the region in front of the buffer.
        if (roi->coi < 0) return -1;
        if (firstRow < 0) firstRow = 0;
        if (firstColumn < 0) firstColumn = 0;
    }
    *channels = lastChannel - firstChannel + 1;
    *rows = sub32(lastRow, firstRow) + 1;
    const int columns = sub32(lastColumn, firstColumn) + 1;

    const int stride = rmgRunStride(image);
    if (image->dataOrder == RMG_DATA_PIXEL) {
        const int pixel = mul32(size, image->nChannels);
        *rowBytes = mul32(columns, pixel);
        return add32(add32(mul32(firstRow, stride), mul32(firstColumn, pixel)),
                     mul32(size, firstChannel - 1));
    }
    *rowBytes = mul32(columns, size);
    const int columnPart =
        image->depth == RMG_DEPTH_1U ? firstColumn / 8 : mul32(firstColumn, size);
    return add32(add32(mul32(mul32(image->height, stride), firstChannel - 1),
                       mul32(firstRow, stride)),
                 columnPart);
}

int rmgBitRect(const RmgImage *image, int *width, int *height, int *phase) {
    if (image->depth != RMG_DEPTH_1U) return -1;
    const RmgROI *roi = image->roi;
    if (roi == nullptr) {
        *width = image->width;
        *height = image->height;
        *phase = 0;
        return 0;
    }
    *width = minOf(roi->width, image->width);
    *height = minOf(roi->height, image->height);
    *phase = roi->xOffset & 7;
    return add32(mul32(image->widthStep, roi->yOffset), roi->xOffset / 8);
}

int rmgPointChannels(const RmgImage *image) {
    return image->roi != nullptr && image->roi->coi != 0 ? 1 : image->nChannels;
}

bool rmgPointOpen(const RmgImage *srcImage, const RmgImage *dstImage, const char *funcName,
                  const char *module) {
    if (!rmg::openImages(funcName, module, __LINE__, {srcImage, dstImage})) return false;
    if (srcImage->depth != dstImage->depth) {
        rmgError(RMG_StsBadArg, funcName, "(srcImage->depth != dstImage->depth)", module,
                 __LINE__);
        return false;
    }
    if (srcImage->dataOrder != dstImage->dataOrder) {
        rmgError(RMG_StsBadArg, funcName, "(srcImage->dataOrder != dstImage->dataOrder)", module,
                 __LINE__);
        return false;
    }
    if (rmgPointChannels(srcImage) != rmgPointChannels(dstImage)) {
        rmgError(RMG_StsBadArg, funcName, "(nChSrc != nChDst)", module, __LINE__);
        return false;
    }
    return true;
}

bool rmgPointPlanOf(const RmgImage *const *images, int count, RmgPointPlan *plan) {
    int offset[3];
    int rowBytes[3];
    int rows[3];
    int channels[3];
    bool pixelOrder = true;
    bool planeOrder = true;
    bool allFull = true;
    bool allCoi = true;
    for (int i = 0; i < count; ++i) {
        offset[i] = rmgRunGeometry(images[i], &rowBytes[i], &rows[i], &channels[i]);
        if (offset[i] < 0) return false;
        const RmgImage *image = images[i];
        pixelOrder = pixelOrder && image->dataOrder == RMG_DATA_PIXEL;
        planeOrder = planeOrder && image->dataOrder == RMG_DATA_PLANE;
        allFull = allFull && channels[i] == image->nChannels;
        allCoi = allCoi && image->roi != nullptr && image->roi->coi != 0;
    }
    plan->count = count;
    plan->rowBytes = rowBytes[0];
    plan->rows = rows[0];
    for (int i = 1; i < count; ++i) {
        plan->rowBytes = minOf(plan->rowBytes, rowBytes[i]);
        plan->rows = minOf(plan->rows, rows[i]);
    }
    // A ROI that lies beyond the image's edge leaves no row or no column.
    if (plan->rowBytes <= 0 || plan->rows <= 0) return false;

    if (pixelOrder && allFull)
        plan->kase = 'A';
    else if (planeOrder && allCoi)
        plan->kase = 'B';
    else if (pixelOrder && allCoi)
        plan->kase = 'C';
    else if (planeOrder && allFull)
        plan->kase = 'D';
    else
        return false;

    plan->contiguous = 1;
    plan->planes = images[count - 1]->nChannels;
    for (int i = 0; i < count; ++i) {
        const RmgImage *image = images[i];
        const int stride = rmgRunStride(image);
        plan->contiguous = plan->contiguous && plan->rowBytes == image->widthStep;
        plan->data[i] = image->imageData + offset[i];
        plan->step[i] = stride;
        plan->planeStep[i] = mul32(image->height, stride);
        plan->nChannels[i] = image->nChannels;
        plan->pixels[i] = rowBytes[i] / (elementSize(image) * image->nChannels);
        // The operations have made the channel counts equal before a row
        // kernel runs; a kernel called on its own never walks more planes
        // than a source has.
        plan->planes = minOf(plan->planes, image->nChannels);
    }
    return true;
}

void rmgPointTileWalk(const RmgWalkImage *images, int count, const int *tilePos,
                      const char *funcName, const char *module, RmgWalkKernel kernel,
                      void *context) {
    RmgImage copies[3];
    RmgROI rois[3];
    RmgRoiRect rects[3];
    RmgTileCursor cursors[3];
    const RmgImage *copyList[3];
    const int last = count - 1;

    // Header copies, each with a local ROI that keeps the image's coi.
    for (int i = 0; i < count; ++i) {
        const RmgImage *image = images[i].image;
        copies[i] = *image;
        rois[i] = RmgROI{image->roi != nullptr ? image->roi->coi : 0, 0, 0, 0, 0};
        copies[i].roi = &rois[i];
        copyList[i] = &copies[i];
        rmgRoiRect(image, &rects[i]);
    }
    int height = rects[0].height;
    int width = rects[0].width;
    for (int i = 1; i < count; ++i) {
        height = minOf(height, rects[i].height);
        width = minOf(width, rects[i].width);
    }
    for (int i = 0; i < count; ++i) {
        rects[i].endX = add32(rects[i].begX, width);
        rects[i].endY = add32(rects[i].begY, height);
    }

    const RmgImage *dstImage = images[last].image;
    if (tilePos != nullptr && dstImage->tileInfo != nullptr) {
        const int tileWidth = dstImage->tileInfo->width;
        const int tileHeight = dstImage->tileInfo->height;
        RmgRoiRect dTile;
        dTile.begX = mul32(tilePos[0], tileWidth);
        dTile.endX = add32(dTile.begX, tileWidth);
        dTile.begY = mul32(tilePos[1], tileHeight);
        dTile.endY = add32(dTile.begY, tileHeight);
        RmgRoiRect &dRoi = rects[last];
        const char *fault = nullptr;
        if (dTile.begX > dRoi.endX)
            fault = "(dTile.begX > dRoi.endX)";
        else if (dTile.begY > dRoi.endY)
            fault = "(dTile.begY > dRoi.endY)";
        else if (dTile.endX < dRoi.begX)
            fault = "(dTile.endX < dRoi.begX)";
        else if (dTile.endY < dRoi.begY)
            fault = "(dTile.endY < dRoi.begY)";
        if (fault != nullptr) {
            rmgError(RMG_StsBadArg, funcName, fault, module, __LINE__);
            return;
        }
        // Cut the destination to the tile; the sources move by the same
        // amounts, so that all stay in step.
        const int cutBegX = dTile.begX > dRoi.begX ? sub32(dTile.begX, dRoi.begX) : 0;
        const int cutEndX = dTile.endX < dRoi.endX ? sub32(dRoi.endX, dTile.endX) : 0;
        const int cutBegY = dTile.begY > dRoi.begY ? sub32(dTile.begY, dRoi.begY) : 0;
        const int cutEndY = dTile.endY < dRoi.endY ? sub32(dRoi.endY, dTile.endY) : 0;
        for (int i = 0; i < count; ++i) {
            rects[i].begX = add32(rects[i].begX, cutBegX);
            rects[i].endX = sub32(rects[i].endX, cutEndX);
            rects[i].begY = add32(rects[i].begY, cutBegY);
            rects[i].endY = sub32(rects[i].endY, cutEndY);
        }
    }

    for (int i = 0; i < count; ++i)
        rmgTileWalkInit(images[i].image, &copies[i], &rects[i], &cursors[i]);

    auto fail = [&](const char *text) { rmgError(RMG_StsBadArg, funcName, text, module, __LINE__); };
    auto modeOf = [&](int i) { return i == last ? RMG_TILE_WRITE : RMG_TILE_READ; };

    int y[3];
    int x[3];
    for (int i = 0; i < count; ++i) y[i] = rects[i].begY;
    while (y[0] < rects[0].endY) {
        int rows = 0;
        for (int i = 0; i < count; ++i) {
            RmgTileCursor &c = cursors[i];
            int left;
            if (!c.tiled) {
                rois[i].yOffset = y[i];
                left = sub32(rects[i].endY, y[i]);
            } else {
                if (y[i] >= c.endY) {
                    c.begY = add32(c.begY, c.tileHeight);
                    c.endY = add32(c.endY, c.tileHeight);
                    ++c.row;
                }
                unsigned char *tile = callTile(images[i].image, c.column, c.row, modeOf(i));
                if (tile == nullptr) return fail(images[i].nullText);
                copies[i].imageData = tile;
                rois[i].yOffset = sub32(y[i], c.begY);
                left = sub32(minOf(c.endY, rects[i].endY), y[i]);
            }
            rows = i == 0 ? left : minOf(rows, left);
        }
        for (int i = 0; i < count; ++i) {
            rois[i].height = rows;
            cursors[i].workBegX = cursors[i].begX;
            cursors[i].workEndX = cursors[i].endX;
            cursors[i].workColumn = cursors[i].column;
            x[i] = rects[i].begX;
        }

        while (x[0] < rects[0].endX) {
            int columns = 0;
            for (int i = 0; i < count; ++i) {
                RmgTileCursor &c = cursors[i];
                int left;
                if (!c.tiled) {
                    rois[i].xOffset = x[i];
                    left = sub32(rects[i].endX, x[i]);
                } else {
                    if (x[i] >= c.workEndX) {
                        if (callTile(images[i].image, c.workColumn, c.row, RMG_TILE_RELEASE) !=
                            nullptr)
                            return fail(images[i].heldText);
                        c.workBegX = add32(c.workBegX, c.tileWidth);
                        c.workEndX = add32(c.workEndX, c.tileWidth);
                        ++c.workColumn;
                        unsigned char *tile =
                            callTile(images[i].image, c.workColumn, c.row, modeOf(i));
                        if (tile == nullptr) return fail(images[i].nullText);
                        copies[i].imageData = tile;
                    }
                    rois[i].xOffset = sub32(x[i], c.workBegX);
                    left = sub32(minOf(c.workEndX, rects[i].endX), x[i]);
                }
                columns = i == 0 ? left : minOf(columns, left);
            }
            for (int i = 0; i < count; ++i) rois[i].width = columns;
            kernel(context, copyList);
            for (int i = 0; i < count; ++i) x[i] = add32(x[i], columns);
        }

        for (int i = 0; i < count; ++i) {
            const RmgTileCursor &c = cursors[i];
            if (!c.tiled) continue;
            if (callTile(images[i].image, c.workColumn, c.row, RMG_TILE_RELEASE) != nullptr)
                return fail(images[i].heldText);
        }
        for (int i = 0; i < count; ++i) y[i] = add32(y[i], rows);
    }
}
