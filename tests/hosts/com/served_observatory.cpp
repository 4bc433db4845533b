#include "hosts/com/served_observatory.h"

#include <functional>

#include "platform/errors.h"
#include "platform/text.h"

namespace vantrel::test {

using platform::Arguments;
using platform::ObjectRef;
using platform::Value;

namespace {

constexpr const wchar_t* kFaults = L"Software\\VantrelTest";

std::string told(const wchar_t* name) {
    wchar_t text[256] = L"";
    DWORD size = sizeof text;
    return ::RegGetValueW(HKEY_CURRENT_USER, kFaults, name, RRF_RT_REG_SZ, nullptr, text, &size) == 0
               ? platform::narrow(text)
               : std::string();
}

void tell(const wchar_t* name, const std::string& value) {
    HKEY key = nullptr;
    ::RegCreateKeyExW(HKEY_CURRENT_USER, kFaults, 0, nullptr, 0, KEY_WRITE, nullptr, &key, nullptr);
    const std::wstring text = platform::wide(value);
    ::RegSetValueExW(key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()),
                     static_cast<DWORD>(2 * text.size() + 2));
    ::RegCloseKey(key);
}

/// Messages go on being answered, as a program does that waits for its device.
void rest(ServedObservatory& observatory, DWORD milliseconds) {
    for (const ULONGLONG begin = ::GetTickCount64(); ::GetTickCount64() - begin < milliseconds;) {
        MSG message{};
        while (::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != 0) ::DispatchMessageW(&message);
        observatory.pump();
        ::Sleep(5);
    }
}

/// Does what it is told goes wrong, and what the object behind it does.
class Spoiled : public platform::AutomationObject {
  public:
    Spoiled(ServedObservatory& observatory, std::string className, ObjectRef inner)
        : observatory_(observatory), className_(std::move(className)), inner_(std::move(inner)) {}

    std::string className() const override { return className_; }
    Value get(const std::string& member, const Arguments& arguments) override {
        spoil(member);
        return wrapped(member, inner_->get(member, arguments));
    }
    void put(const std::string& member, const Value& value, const Arguments& arguments) override {
        spoil(member);
        inner_->put(member, value, arguments);
    }
    Value call(const std::string& member, const Arguments& arguments) override {
        spoil(member);
        return wrapped(member, inner_->call(member, arguments));
    }

  private:
    /// What an object hands out is named after the member that did, as the client's journal names it.
    Value wrapped(const std::string& member, const Value& value) {
        const auto* object = std::get_if<ObjectRef>(&value.held());
        if (object == nullptr || *object == nullptr) return value;
        return Value(ObjectRef(std::make_shared<Spoiled>(observatory_, className_ + "." + member, *object)));
    }

    void spoil(const std::string& member) {
        if (!platform::equalIgnoringCase(told(L"Member"), className() + "." + member)) return;
        const int after = static_cast<int>(platform::toNumber(told(L"After")));
        tell(L"After", std::to_string(after - 1));
        const std::string how = told(L"How");
        if (after > 0 || how.empty()) return;
        tell(L"Happened", how);
        if (how == "fails") throw platform::AutomationError(-2147220479, className(), "It is out of order");
        // All others happen once.
        tell(L"How", "");
        constexpr DWORD kSlow = 10'000;
        if (how == "slow") rest(observatory_, kSlow);
        if (how == "hangs") rest(observatory_, INFINITE);
        if (how == "dies") ::TerminateProcess(::GetCurrentProcess(), 9);
    }

    ServedObservatory& observatory_;
    std::string className_;
    ObjectRef inner_;
};

GUID classNumber(unsigned char number) {
    return {0x6e7a1d12, 0x4c1b, 0x4b0e, {0x9a, 0x11, 0x20, 0, 0, 0, 0, number}};
}

}  // namespace

const std::vector<ServedClass>& servedClasses() {
    static const std::vector<ServedClass> all = {
        {kServedMount, "AxisSimulator.Telescope", classNumber(1)},
        {"ScopeSim.Telescope", "ScopeSim.Telescope", classNumber(2)},
        {"MaxIm.CCDCamera", "MaxIm.CCDCamera", classNumber(3)},
        {"MaxIm.Application", "MaxIm.Application", classNumber(4)},
        {"MaxIm.Document", "MaxIm.Document", classNumber(5)},
        {"CCDSoft.Camera", "CCDSoft.Camera", classNumber(6)},
        {"CCDSoft.Image", "CCDSoft.Image", classNumber(7)},
        {"PinPoint.Plate", "PinPoint.Plate", classNumber(8)},
    };
    return all;
}

void setFault(const std::string& classAndMember, const std::string& how, int after) {
    tell(L"Member", classAndMember);
    tell(L"How", how);
    tell(L"After", std::to_string(after));
    tell(L"Happened", "");
}

bool faultHappened() { return !told(L"Happened").empty(); }

namespace {

observatory::ObservatorySeams on(platform::DesktopWindows& desktop) {
    observatory::ObservatorySeams seams;
    seams.desktop = &desktop;
    return seams;
}

}  // namespace

void setProgram(const std::string& imagingProgram) { tell(L"Program", imagingProgram); }

ServedObservatory::ServedObservatory(bool withWindows)
    : user_(platform::desktopPaths(platform::processEnvironment)),
      observatory_(loop_, user_.folders, 1, on(desktop_)),
      withWindows_(withWindows) {
    observatory_.install(classes_);
    if (!withWindows) return;
    if (told(L"Program") == "CCDSoft")
        observatory_.imaging().ccdSoft().start();
    else
        observatory_.imaging().maxIm().start();
}

ObjectRef ServedObservatory::create(const ServedClass& served) {
    return std::make_shared<Spoiled>(*this, served.progId, classes_.create(served.builtIn));
}

void ServedObservatory::pump() {
    loop_.yield();
    if (withWindows_) mirrorWindows();
}

/// The windows that the programs play, as windows of the system.
void ServedObservatory::mirrorWindows() {
    std::map<platform::WindowId, HWND> before;
    before.swap(windows_);
    const std::function<void(platform::WindowId, HWND)> show = [&](platform::WindowId id, HWND parent) {
        HWND window = before[id];
        before.erase(id);
        const std::wstring title = platform::wide(desktop_.titleOf(id));
        const std::string kind = desktop_.classOf(id);
        if (window == nullptr) {
            const HWND owner =
                windows_.contains(desktop_.parentOf(id)) ? windows_[desktop_.parentOf(id)] : nullptr;
            const bool known = kind == "#32770" || kind == "Button" || kind == "SysTabControl32";
            window = ::CreateWindowExW(
                WS_EX_NOACTIVATE, known ? platform::wide(kind).c_str() : L"Static", title.c_str(),
                parent != nullptr ? WS_CHILD | WS_VISIBLE : WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0, 300, 100,
                parent != nullptr ? parent : owner, nullptr, nullptr, nullptr);
        }
        ::SetWindowTextW(window, title.c_str());
        if (kind == "Button")
            ::SendMessageW(window, BM_SETSTATE, desktop_.buttonState(id) != 0 ? TRUE : FALSE, 0);
        windows_[id] = window;
        for (const platform::WindowId child : desktop_.childrenOf(id)) show(child, window);
    };
    std::vector<platform::WindowId> top = desktop_.topLevelWindows();
    for (auto id = top.rbegin(); id != top.rend(); ++id) show(*id, nullptr);
    for (const auto& [id, window] : before) ::DestroyWindow(window);
}

}  // namespace vantrel::test
