#include "hosts/com/registration.h"

namespace vantrel::test {
namespace {

void keep(const std::string& path, const std::string& value, const wchar_t* name = nullptr,
          REGSAM view = KEY_WOW64_64KEY) {
    HKEY key = nullptr;
    ::RegCreateKeyExW(HKEY_LOCAL_MACHINE, platform::wide("SOFTWARE\\" + path).c_str(), 0, nullptr, 0,
                      KEY_WRITE | view, nullptr, &key, nullptr);
    const std::wstring text = platform::wide(value);
    ::RegSetValueExW(key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()),
                     static_cast<DWORD>(2 * text.size() + 2));
    ::RegCloseKey(key);
}

std::string textOf(const GUID& id) {
    wchar_t text[64] = L"";
    ::StringFromGUID2(id, text, 64);
    return platform::narrow(text);
}

}  // namespace

void registerClass(const std::string& progId, const GUID& id, ServerKind kind,
                   const std::filesystem::path& file) {
    ::RegDeleteTreeW(HKEY_LOCAL_MACHINE, platform::wide("SOFTWARE\\Classes\\CLSID\\" + textOf(id)).c_str());
    const std::string server = "Classes\\CLSID\\" + textOf(id);
    keep("Classes\\" + progId + "\\CLSID", textOf(id));
    if (kind == ServerKind::kProgram) {
        keep(server + "\\LocalServer32", "\"" + file.string() + "\" /automation");
    } else {
        const REGSAM view = kind == ServerKind::kLibrary ? KEY_WOW64_64KEY : KEY_WOW64_32KEY;
        keep(server + "\\InprocServer32", file.string(), nullptr, view);
        keep(server + "\\InprocServer32", "Apartment", L"ThreadingModel", view);
    }
}

void registerDriver(const std::string& progId, const std::string& description) {
    keep("ASCOM\\Telescope Drivers\\" + progId, description, nullptr, KEY_WOW64_32KEY);
}

}  // namespace vantrel::test
