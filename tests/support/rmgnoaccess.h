// A page of memory that can't be read or written: a test passes its
// address where the code under test must not look, and any access faults,
// in every build and on every platform.
#ifndef RMG_TESTS_SUPPORT_RMGNOACCESS_H
#define RMG_TESTS_SUPPORT_RMGNOACCESS_H

#include <cstddef>
#include <cstdlib>

#if defined(_WIN32)
#include <windows.h>
#else
#include <sys/mman.h>
#include <unistd.h>
#endif

namespace rmgtest {

class NoAccessPage {
public:
    NoAccessPage() {
#if defined(_WIN32)
        SYSTEM_INFO info;
        GetSystemInfo(&info);
        size_ = info.dwPageSize;
        page_ = VirtualAlloc(nullptr, size_, MEM_RESERVE | MEM_COMMIT, PAGE_NOACCESS);
        if (page_ == nullptr) std::abort();
#else
        size_ = static_cast<size_t>(sysconf(_SC_PAGESIZE));
        page_ = mmap(nullptr, size_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (page_ == MAP_FAILED) std::abort();
#endif
    }
    ~NoAccessPage() {
#if defined(_WIN32)
        VirtualFree(page_, 0, MEM_RELEASE);
#else
        munmap(page_, size_);
#endif
    }
    NoAccessPage(const NoAccessPage &) = delete;
    NoAccessPage &operator=(const NoAccessPage &) = delete;

    void *data() const { return page_; }
    unsigned char *bytes() const { return static_cast<unsigned char *>(page_); }
    size_t size() const { return size_; }

private:
    void *page_;
    size_t size_;
};

}  // namespace rmgtest

#endif
