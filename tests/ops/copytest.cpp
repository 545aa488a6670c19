#include "ops/copytest.h"

#include <algorithm>

#include "support/rmgtest.h"

namespace copytest {

namespace {
CallLog *gLog = nullptr;
}  // namespace

std::ostream &operator<<(std::ostream &os, const Call &c) {
    return os << c.image << "(" << c.x << ", " << c.y << ", " << c.mode << ")";
}

CallLog::CallLog() { gLog = this; }
CallLog::~CallLog() { gLog = nullptr; }

void CallLog::watch(scetest::Tiled &tiled, char name) {
    tiled.info.callBack = callBack;
    names_.emplace_back(&tiled.info, name);
}

void CallLog::watchPair(scetest::Tiled &src, scetest::Tiled &dst) {
    watch(src, 'S');
    watch(dst, 'D');
}

std::vector<Call> partOf(bool exchange, int dx, int dy, int sx, int sy) {
    std::vector<Call> calls = {{'D', dx, dy, RMG_TILE_WRITE},
                               {'S', sx, sy, RMG_TILE_READ},
                               {'S', sx, sy, RMG_TILE_RELEASE}};
    if (exchange) {
        calls.push_back({'S', sx, sy, RMG_TILE_WRITE});
        calls.push_back({'S', sx, sy, RMG_TILE_RELEASE});
    }
    calls.push_back({'D', dx, dy, RMG_TILE_RELEASE});
    return calls;
}

std::vector<Call> joined(std::initializer_list<std::vector<Call>> lists) {
    std::vector<Call> all;
    for (const auto &list : lists) all.insert(all.end(), list.begin(), list.end());
    return all;
}

void CallLog::callBack(const RmgImage *image, int xIndex, int yIndex, int mode) {
    char name = '?';
    for (const auto &entry : gLog->names_)
        if (entry.first == image->tileInfo) name = entry.second;
    gLog->calls.push_back(Call{name, xIndex, yIndex, mode});
    scetest::Tiled::callBack(image, xIndex, yIndex, mode);
    if (mode != RMG_TILE_RELEASE && static_cast<int>(gLog->calls.size()) - 1 == gLog->failAt)
        image->tileInfo->tileData = nullptr;
}

Clip clipOf(const RmgImage *image) {
    Clip c{0, 0, image->height, image->width, 0};
    if (const RmgROI *roi = image->roi) {
        long long x = roi->xOffset, y = roi->yOffset, h = roi->height, w = roi->width;
        c.coi = roi->coi;
        if (x >= image->width || x + w < 1) w = 0, x = 0;
        if (y >= image->height || y + h < 1) h = 0, y = 0;
        if (x < 0) w += x, x = 0;
        if (y < 0) h += y, y = 0;
        if (x + w > image->width) w = image->width - x;
        if (y + h > image->height) h = image->height - y;
        c.x = static_cast<int>(x);
        c.y = static_cast<int>(y);
        c.rows = static_cast<int>(h);
        c.columns = static_cast<int>(w);
    }
    return c;
}

uint32_t elementOf(const scetest::Plain &p, int x, int y, int ch) { return p.element(x, y, ch); }

void putElement(scetest::Plain &p, int x, int y, int ch, uint32_t value) {
    scetest::putElement(p.block, p.guard, p.layout(), x, y, ch, value);
}

uint32_t elementOf(const scetest::Tiled &t, int x, int y, int ch) { return t.element(x, y, ch); }

void putElement(scetest::Tiled &t, int x, int y, int ch, uint32_t value) {
    const std::pair<int, int> key{x / t.info.width, y / t.info.height};
    auto it = t.tiles.find(key);
    if (it == t.tiles.end()) it = t.tiles.emplace(key, t.freshTile(key.first, key.second)).first;
    scetest::putElement(it->second, 0, t.tileLayout(), x % t.info.width, y % t.info.height, ch,
                        value);
}

void modelPair(bool exchange, const scetest::Plain &src, const scetest::Plain &dst,
               std::vector<uint8_t> *wantSrc, std::vector<uint8_t> *wantDst) {
    *wantSrc = src.block;
    *wantDst = dst.block;
    const Clip s = clipOf(src.image);
    const Clip d = clipOf(dst.image);
    const int srcChannels = s.coi != 0 ? 1 : src.image->nChannels;
    const int dstChannels = d.coi != 0 ? 1 : dst.image->nChannels;
    if (srcChannels != dstChannels) return;
    const int rows = std::min(s.rows, d.rows);
    const int columns = std::min(s.columns, d.columns);
    for (int c = 0; c < srcChannels; ++c) {
        const int sc = s.coi != 0 ? s.coi - 1 : c;
        const int dc = d.coi != 0 ? d.coi - 1 : c;
        for (int y = 0; y < rows; ++y)
            for (int x = 0; x < columns; ++x) {
                const uint32_t a = src.element(s.x + x, s.y + y, sc);
                const uint32_t b = dst.element(d.x + x, d.y + y, dc);
                scetest::putElement(*wantDst, dst.guard, dst.layout(), d.x + x, d.y + y, dc, a);
                if (exchange)
                    scetest::putElement(*wantSrc, src.guard, src.layout(), s.x + x, s.y + y, sc, b);
            }
    }
}

std::string headerText(int mask) {
    char *text = rmgBadHeaderText(mask);
    std::string s = text;
    rmgFree(text);
    return s;
}

void expectReport(size_t index, int status, const std::string &context,
                  const std::string &funcName) {
    ASSERT_LT(index, rmgtest::reports().size());
    const rmgtest::Report &r = rmgtest::reports()[index];
    EXPECT_EQ(r.status, status);
    EXPECT_EQ(r.funcName, funcName);
    EXPECT_EQ(r.context, context);
    EXPECT_EQ(r.fileName, "rmgSCE");
}

void countUp(scetest::Plain &p, int start) {
    for (int i = 0; i < p.image->imageSize; ++i) p.pixels()[i] = static_cast<uint8_t>(start + i);
}

std::vector<uint8_t> pixelsOf(scetest::Plain &p) {
    return std::vector<uint8_t>(p.pixels(), p.pixels() + p.image->imageSize);
}

std::vector<uint8_t> headerBytes(const RmgImage *image) {
    const auto *p = reinterpret_cast<const uint8_t *>(image);
    return std::vector<uint8_t>(p, p + sizeof(RmgImage));
}

}  // namespace copytest
