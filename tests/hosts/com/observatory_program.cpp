// The served observatory as a program. It also sets up what is served, and tells what goes wrong:
//
//     com_observatory /register program|library
//     com_observatory /fault CLASS.MEMBER HOW AFTER
//     com_observatory /happened
//     com_observatory /program MaxIm|CCDSoft
//     com_observatory
//
// The solver is set up as a program or as a library, all else as programs. "/happened" ends with 0 when the
// fault that was told last has happened. "/program" tells which imaging program opens a window at the next
// start, and ends who serves now. Without a word it serves until nobody has held an object of it for some
// seconds.
#include <memory>

#include "hosts/com/dispatch_bridge.h"
#include "hosts/com/registration.h"
#include "hosts/com/served_observatory.h"
#include "platform/own_program.h"
#include "platform/text.h"

using namespace vantrel;
using namespace vantrel::test;

namespace {

int setUp(const std::string& how) {
    const std::filesystem::path own = platform::ownProgram();
    for (const ServedClass& served : servedClasses()) {
        const bool library = how == "library" && served.progId == "PinPoint.Plate";
        registerClass(served.progId, served.id, library ? ServerKind::kLibrary : ServerKind::kProgram,
                      library ? own.parent_path() / "com_observatory_library.dll" : own);
    }
    registerDriver(kServedMount, "Simulated mount behind COM");
    registerDriver("ScopeSim.Telescope", "Simulated equatorial mount behind COM");
    return 0;
}

/// Exists while the program serves; set, it ends it.
constexpr const wchar_t* kEnd = L"VantrelTest.End";

void endServer() {
    for (;;) {
        const platform::Handle end(::OpenEventW(EVENT_MODIFY_STATE, FALSE, kEnd));
        if (!end) return;
        ::SetEvent(end.get());
        ::Sleep(20);
    }
}

int serve() {
    const platform::Handle end(::CreateEventW(nullptr, TRUE, FALSE, kEnd));
    ::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    ServedObservatory observatory(true);
    observatory.pump();  // its windows are there before anybody can have an object
    std::vector<std::unique_ptr<Factory>> factories;
    std::vector<DWORD> cookies;
    for (const ServedClass& served : servedClasses()) {
        factories.push_back(
            std::make_unique<Factory>([&observatory, &served] { return observatory.create(served); }));
        DWORD cookie = 0;
        if (FAILED(::CoRegisterClassObject(served.id, factories.back().get(), CLSCTX_LOCAL_SERVER,
                                           REGCLS_MULTIPLEUSE, &cookie)))
            return 1;
        cookies.push_back(cookie);
    }
    constexpr DWORD kBetweenLooks = 10;
    constexpr ULONGLONG kIdle = 5000;
    for (ULONGLONG lastUsed = ::GetTickCount64();
         ::GetTickCount64() - lastUsed < kIdle && ::WaitForSingleObject(end.get(), 0) == WAIT_TIMEOUT;) {
        ::MsgWaitForMultipleObjects(0, nullptr, FALSE, kBetweenLooks, QS_ALLINPUT);
        MSG message{};
        while (::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != 0) {
            ::TranslateMessage(&message);
            ::DispatchMessageW(&message);
        }
        observatory.pump();
        if (bridgedObjects() > 0) lastUsed = ::GetTickCount64();
    }
    for (const DWORD cookie : cookies) ::CoRevokeClassObject(cookie);
    ::CoUninitialize();
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> words = platform::programArguments(argc, argv);
    if (words.size() == 2 && words[0] == "/register") return setUp(words[1]);
    if (words.size() == 2 && words[0] == "/program") return endServer(), setProgram(words[1]), 0;
    if (words.size() == 4 && words[0] == "/fault")
        return setFault(words[1], words[2], static_cast<int>(platform::toNumber(words[3]))), 0;
    if (words.size() == 1 && words[0] == "/happened") return faultHappened() ? 0 : 1;
    return serve();
}
