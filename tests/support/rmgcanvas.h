// A block of test bytes whose start is a multiple of 64, so that a test can
// place a row at every alignment from there.
#ifndef RMG_TESTS_SUPPORT_RMGCANVAS_H
#define RMG_TESTS_SUPPORT_RMGCANVAS_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

namespace rmgtest {

class Canvas {
public:
    explicit Canvas(size_t bytes) : storage_(bytes + 64), bytes_(bytes) {}
    unsigned char *data() {
        const auto at = reinterpret_cast<uintptr_t>(storage_.data());
        return storage_.data() + ((64 - at % 64) % 64);
    }
    size_t size() const { return bytes_; }
    std::vector<unsigned char> bytes() { return std::vector<unsigned char>(data(), data() + bytes_); }
    void set(const std::vector<unsigned char> &from) { std::memcpy(data(), from.data(), bytes_); }

private:
    std::vector<unsigned char> storage_;
    size_t bytes_;
};

}  // namespace rmgtest

#endif
