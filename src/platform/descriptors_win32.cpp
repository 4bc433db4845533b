#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

#include "platform/descriptors.h"
#include "platform/win32_calls.h"

namespace vantrel::platform {
namespace {

/// Standard input may be a console, a pipe or a file, which can't be waited for in one way. So a thread reads
/// it ahead; it ends with the program.
class StandardInput {
  public:
    static StandardInput& get() {
        static auto* const input = new StandardInput;  // the thread may outlive everything
        return *input;
    }

    HANDLE ready() const { return ready_.get(); }
    bool isReady() const { return ::WaitForSingleObject(ready_.get(), 0) == WAIT_OBJECT_0; }

    Received read(std::span<char> out) {
        ::WaitForSingleObject(ready_.get(), INFINITE);
        const std::scoped_lock lock(mutex_);
        const std::size_t bytes = std::min(out.size(), buffer_.size());
        std::copy_n(buffer_.begin(), bytes, out.begin());
        buffer_.erase(0, bytes);
        if (buffer_.empty() && !ended_) ::ResetEvent(ready_.get());
        taken_.notify_one();
        return {bytes > 0 ? Received::Kind::kBytes : Received::Kind::kEnd, bytes};
    }

  private:
    StandardInput() {
        std::thread([this] { readAhead(); }).detach();
    }

    void readAhead() {
        constexpr std::size_t kMostAhead = 1U << 20U;
        std::string piece(65536, '\0');
        for (;;) {
            DWORD got = 0;
            const bool good = ::ReadFile(::GetStdHandle(STD_INPUT_HANDLE), piece.data(),
                                         static_cast<DWORD>(piece.size()), &got, nullptr) != 0;
            std::unique_lock lock(mutex_);
            buffer_.append(piece, 0, got);
            ended_ = !good || got == 0;
            ::SetEvent(ready_.get());
            if (ended_) return;
            taken_.wait(lock, [this] { return buffer_.size() < kMostAhead; });
        }
    }

    Handle ready_{::CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    std::mutex mutex_;
    std::condition_variable taken_;
    std::string buffer_;
    bool ended_ = false;
};

std::vector<int> readyNow(const std::vector<int>& descriptors) {
    std::vector<int> found;
    for (const int descriptor : descriptors) {
        if (descriptor < 0) continue;
        if (descriptor == kStandardInput) {
            if (StandardInput::get().isReady()) found.push_back(descriptor);
            continue;
        }
        WSAPOLLFD watched{static_cast<SOCKET>(descriptor), POLLRDNORM, 0};
        if (::WSAPoll(&watched, 1, 0) > 0) found.push_back(descriptor);
    }
    return found;
}

}  // namespace

std::vector<int> waitForInput(const std::vector<int>& descriptors, Milliseconds longest) {
    std::vector<int> found = readyNow(descriptors);
    if (!found.empty() || longest.count() <= 0) return found;
    const Handle network(::CreateEventW(nullptr, FALSE, FALSE, nullptr));
    std::vector<HANDLE> events = {network.get()};
    for (const int descriptor : descriptors) {
        if (descriptor == kStandardInput)
            events.push_back(StandardInput::get().ready());
        else if (descriptor > 0)
            ::WSAEventSelect(static_cast<SOCKET>(descriptor), network.get(), FD_READ | FD_ACCEPT | FD_CLOSE);
    }
    ::WaitForMultipleObjects(static_cast<DWORD>(events.size()), events.data(), FALSE,
                             static_cast<DWORD>(longest.count()));
    for (const int descriptor : descriptors)
        if (descriptor > kStandardOutput) ::WSAEventSelect(static_cast<SOCKET>(descriptor), nullptr, 0);
    return readyNow(descriptors);
}

Received readFrom(int descriptor, std::span<char> out) {
    return descriptor == kStandardInput ? StandardInput::get().read(out) : Received{};
}

bool writeWhole(int descriptor, std::string_view text) {
    if (descriptor != kStandardOutput) return false;
    while (!text.empty()) {
        DWORD written = 0;
        if (::WriteFile(::GetStdHandle(STD_OUTPUT_HANDLE), text.data(), static_cast<DWORD>(text.size()),
                        &written, nullptr) == 0)
            return false;
        text.remove_prefix(written);
    }
    return true;
}

}  // namespace vantrel::platform
