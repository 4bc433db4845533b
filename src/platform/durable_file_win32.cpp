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
            if (::WriteFile(handle.get(), text.data(), static_cast<DWORD>(text.size()), &written, nullptr) == 0)
                failure = ::GetLastError();
            text.remove_prefix(written);
        }
        if (failure == 0 && ::FlushFileBuffers(handle.get()) == 0) failure = ::GetLastError();
    }
    if (failure == 0) return;
    ::DeleteFileW(file.c_str());
    failCall(failure, "Can't write " + file.string());
}

}  // namespace vantrel::platform
