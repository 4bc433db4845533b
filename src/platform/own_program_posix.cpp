#include <csignal>
#include <cstdlib>
#include <memory>
#include <system_error>

#include <malloc.h>
#include <sys/mman.h>
#include <unistd.h>

#include "platform/own_program.h"

namespace vantrel::platform {

std::filesystem::path ownProgram() {
    std::error_code ignored;
    return std::filesystem::read_symlink("/proc/self/exe", ignored);
}

unsigned long processNumber() { return static_cast<unsigned long>(::getpid()); }

std::vector<std::string> programArguments(int count, char** texts) { return {texts + 1, texts + count}; }

void outliveReaders() { std::signal(SIGPIPE, SIG_IGN); }

void takeMemoryAtOnce() {
#ifdef __GLIBC__
    constexpr int kNeverGivenBack = 1 << 30;
    constexpr std::size_t kLargePage = 2 << 20;
    constexpr std::size_t kSize = 4 * kLargePage;
    mallopt(M_MMAP_THRESHOLD, kNeverGivenBack);
    mallopt(M_TRIM_THRESHOLD, kNeverGivenBack);
    void* const memory = std::malloc(kSize);
    if (memory == nullptr) return;
    void* aligned = memory;
    std::size_t room = kSize;
    std::align(kLargePage, kLargePage, aligned, room);
    madvise(aligned, room, MADV_HUGEPAGE);
    std::free(memory);
#endif
}

}  // namespace vantrel::platform
