#include <cerrno>

#include "platform/win32_calls.h"

namespace vantrel::platform {

std::wstring wide(std::string_view utf8) {
    const int length = static_cast<int>(utf8.size());
    std::wstring text(
        static_cast<std::size_t>(::MultiByteToWideChar(CP_UTF8, 0, utf8.data(), length, nullptr, 0)), L'\0');
    ::MultiByteToWideChar(CP_UTF8, 0, utf8.data(), length, text.data(), static_cast<int>(text.size()));
    return text;
}

std::string narrow(std::wstring_view utf16) {
    const int length = static_cast<int>(utf16.size());
    std::string text(static_cast<std::size_t>(::WideCharToMultiByte(CP_UTF8, 0, utf16.data(), length, nullptr,
                                                                    0, nullptr, nullptr)),
                     '\0');
    ::WideCharToMultiByte(CP_UTF8, 0, utf16.data(), length, text.data(), static_cast<int>(text.size()),
                          nullptr, nullptr);
    return text;
}

std::error_code failureOf(DWORD windowsError) {
    const auto usual = [](int number) { return std::error_code(number, std::generic_category()); };
    switch (windowsError) {
        case ERROR_FILE_NOT_FOUND:
        case ERROR_PATH_NOT_FOUND:
        case ERROR_INVALID_NAME:
        case ERROR_BAD_PATHNAME:
        case ERROR_INVALID_DRIVE:
        case ERROR_BAD_NETPATH:
        case ERROR_BAD_NET_NAME:
            return usual(ENOENT);
        case ERROR_ACCESS_DENIED:
        case ERROR_SHARING_VIOLATION:
        case ERROR_LOCK_VIOLATION:
        case ERROR_WRITE_PROTECT:
            return usual(EACCES);
        case ERROR_DISK_FULL:
        case ERROR_HANDLE_DISK_FULL:
            return usual(ENOSPC);
        case ERROR_NOT_ENOUGH_MEMORY:
        case ERROR_OUTOFMEMORY:
        case ERROR_COMMITMENT_LIMIT:
            return usual(ENOMEM);
        case ERROR_TOO_MANY_OPEN_FILES:
            return usual(EMFILE);
        case ERROR_DIRECTORY:
            return usual(ENOTDIR);
        case ERROR_INVALID_PARAMETER:
            return usual(EINVAL);
        default:
            return usual(EIO);
    }
}

void failCall(DWORD windowsError, const std::string& what) {
    throw std::system_error(failureOf(windowsError), what);
}

}  // namespace vantrel::platform
