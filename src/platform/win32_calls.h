// What the files for Windows share. Included by those alone.
#pragma once

#include <string>
#include <string_view>
#include <system_error>

// The others need these first.
// clang-format off
#include <winsock2.h>
#include <windows.h>
// clang-format on
#include <bcrypt.h>
#include <iphlpapi.h>
#include <mstcpip.h>
#include <oleauto.h>
#include <shellapi.h>
#include <shlobj.h>
#include <ws2tcpip.h>

// Words of 16-bit days, which others want to use; the headers that come later write them in capitals.
#undef near
#undef far
#undef NEAR
#undef FAR
#define NEAR
#define FAR

namespace vantrel::platform {

std::wstring wide(std::string_view utf8);
std::string narrow(std::wstring_view utf16);

/// A failed call of the system as the C++ library's usual error, whose message is the usual one, too.
std::error_code failureOf(DWORD windowsError);
[[noreturn]] void failCall(DWORD windowsError, const std::string& what);

/// A handle that is closed with its object.
class Handle {
  public:
    explicit Handle(HANDLE handle = nullptr) : handle_(handle) {}
    Handle(Handle&& other) noexcept : handle_(other.handle_) { other.handle_ = nullptr; }
    Handle& operator=(Handle&& other) noexcept {
        std::swap(handle_, other.handle_);
        return *this;
    }
    ~Handle() {
        if (*this) ::CloseHandle(handle_);
    }
    explicit operator bool() const { return handle_ != nullptr && handle_ != INVALID_HANDLE_VALUE; }
    HANDLE get() const { return handle_; }

  private:
    HANDLE handle_;
};

}  // namespace vantrel::platform
