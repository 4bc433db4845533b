#include <string>

#include "platform/system_name.h"
#include "platform/win32_calls.h"

namespace vantrel::platform {
namespace {

std::string valueOf(const wchar_t* name) {
    wchar_t text[200] = L"";
    DWORD size = sizeof text - sizeof *text;
    const LSTATUS failed =
        ::RegGetValueW(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion", name,
                       RRF_RT_REG_SZ, nullptr, text, &size);
    return failed == ERROR_SUCCESS ? narrow(text) : std::string();
}

}  // namespace

std::string systemName(const std::filesystem::path& /*root*/) {
    const std::string name = valueOf(L"ProductName");
    const std::string build = valueOf(L"CurrentBuild");
    if (name.empty()) return "Windows";
    return build.empty() ? name : name + " (build " + build + ")";
}

}  // namespace vantrel::platform
