#include <optional>

#include "platform/paths.h"
#include "platform/win32_calls.h"

namespace vantrel::platform {
namespace {

/// In the encoding that plain calls of the system take; nothing when that lacks a character.
std::optional<std::string> plainName(const std::wstring& name) {
    const int length = static_cast<int>(name.size());
    BOOL lacking = FALSE;
    const bool canTell = ::GetACP() != CP_UTF8;
    const int size = ::WideCharToMultiByte(CP_ACP, 0, name.data(), length, nullptr, 0, nullptr, nullptr);
    std::string text(static_cast<std::size_t>(size), '\0');
    ::WideCharToMultiByte(CP_ACP, canTell ? WC_NO_BEST_FIT_CHARS : 0, name.data(), length, text.data(), size,
                          nullptr, canTell ? &lacking : nullptr);
    if (lacking != FALSE) return std::nullopt;
    return text;
}

std::wstring shortName(const std::filesystem::path& path) {
    std::wstring name(32'768, L'\0');
    name.resize(::GetShortPathNameW(path.c_str(), name.data(), static_cast<DWORD>(name.size())));
    return name;
}

}  // namespace

std::string libraryName(const std::filesystem::path& path) {
    if (const auto name = plainName(path.native())) return *name;
    const std::wstring whole = shortName(path);
    if (!whole.empty()) return plainName(whole).value_or(path.string());
    // A file that is to be made has no short name yet, but its folder has.
    const std::wstring folder = shortName(path.parent_path());
    return plainName((std::filesystem::path(folder) / path.filename()).native()).value_or(path.string());
}

}  // namespace vantrel::platform
