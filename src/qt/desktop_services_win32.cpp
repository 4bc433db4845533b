#include <QWidget>
#include <memory>

#include "qt/desktop_services.h"
#include "qt/theme.h"

// The system's own words have to last until the voices' header has been read.
// clang-format off
#include <windows.h>
#include <dwmapi.h>
#include <sapi.h>
#include "platform/win32_calls.h"
// clang-format on

namespace vantrel::qt {
namespace {

struct Release {
    void operator()(ISpVoice* voice) const { voice->Release(); }
};

/// The system's voice; nothing where there is none. The toolkit has prepared the windows' thread for such
/// objects.
std::unique_ptr<ISpVoice, Release> newVoice() {
    void* voice = nullptr;
    ::CoCreateInstance(CLSID_SpVoice, nullptr, CLSCTX_INPROC_SERVER, IID_ISpVoice, &voice);
    return std::unique_ptr<ISpVoice, Release>(static_cast<ISpVoice*>(voice));
}

}  // namespace

/// Windows has always come with one.
bool hasHelpViewer() { return true; }

void speakAloud(const std::string& words) {
    // A voice that goes falls silent, so this one stays.
    static const auto voice = newVoice();
    constexpr DWORD kHow = SPF_ASYNC | SPF_PURGEBEFORESPEAK | SPF_IS_NOT_XML;
    const std::wstring text = platform::wide(words);
    if (voice) voice->Speak(text.c_str(), kHow, nullptr);
}

/// Windows 10 knows dark bars since its version 2004, Windows 11 bars of any colour; what one doesn't know it
/// refuses.
void colorTitleBar(QWidget& window, const Look& look) {
    // Younger than the compiler's headers.
    constexpr DWORD kDarkMode = 20, kBorderColor = 34, kCaptionColor = 35, kTextColor = 36;
    constexpr DWORD kSystems = 0xFFFFFFFF;
    auto* const handle = reinterpret_cast<HWND>(window.winId());
    const auto set = [&](DWORD attribute, DWORD value) {
        ::DwmSetWindowAttribute(handle, attribute, &value, sizeof value);
    };
    const auto colored = [&](const QColor& color) -> DWORD {
        return look.night() ? RGB(color.red(), color.green(), color.blue()) : kSystems;
    };
    set(kDarkMode, look.night() ? TRUE : FALSE);
    set(kBorderColor, colored(look.colors().border));
    set(kCaptionColor, colored(look.colors().window));
    set(kTextColor, colored(look.colors().text));
}

}  // namespace vantrel::qt
