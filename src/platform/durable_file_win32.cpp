#include "platform/durable_file.h"
#include "platform/win32_calls.h"

namespace vantrel::platform {

void writeDurably(const std::filesystem::path& file, std::string_view text) {
    DWORD failure = 0;
    {
        const Handle handle(::CreateFileW(file.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                          FILE_ATTRIBUTE_NORMAL, nullptr));
        if (!handle) failCall(::GetLastError(), "Can't create " + file.string());
        while (failure == 0 && !text.empty()) {
            DWORD written = 0;
            if (::WriteFile(handle.get(), text.data(), static_cast<DWORD>(text.size()), &written, nullptr) ==
                0)
                failure = ::GetLastError();
            text.remove_prefix(written);
        }
        if (failure == 0 && ::FlushFileBuffers(handle.get()) == 0) failure = ::GetLastError();
    }
    if (failure == 0) return;
    ::DeleteFileW(file.c_str());
    failCall(failure, "Can't write " + file.string());
}

void takePlace(const std::filesystem::path& file, const std::filesystem::path& target,
               std::error_code& error) {
    error.clear();
    const auto move = [](const std::filesystem::path& from, const std::filesystem::path& to) {
        return ::MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING) != 0;
    };
    if (move(file, target)) return;
    error = failureOf(::GetLastError());
    // One that is open can't be replaced, but it can have another name until it is closed.
    std::filesystem::path aside = target;
    aside += L"." + std::to_wstring(::GetCurrentProcessId()) + L"." + std::to_wstring(::GetTickCount64()) +
             L".old";
    if (error != std::errc::permission_denied || !move(target, aside)) return;
    if (move(file, target)) {
        error.clear();
        ::DeleteFileW(aside.c_str());
        return;
    }
    move(aside, target);
}

}  // namespace vantrel::platform
