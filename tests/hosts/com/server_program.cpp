// A COM server as a program: serves until nobody has held an object of it for some seconds.
#include "hosts/com/dispatch_bridge.h"
#include "hosts/com/test_telescope.h"

int main() {
    using namespace vantrel::test;
    ::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    Factory factory([] { return testTelescope(); });
    DWORD cookie = 0;
    if (FAILED(::CoRegisterClassObject(kProgramClass, &factory, CLSCTX_LOCAL_SERVER, REGCLS_MULTIPLEUSE,
                                       &cookie)))
        return 1;
    constexpr DWORD kBetweenLooks = 200;
    constexpr int kMostIdleLooks = 25;
    ::SetTimer(nullptr, 0, kBetweenLooks, nullptr);
    MSG message{};
    for (int idle = 0; idle<kMostIdleLooks&& ::GetMessageW(&message, nullptr, 0, 0)> 0;) {
        if (message.message == WM_TIMER) idle = bridgedObjects() == 0 ? idle + 1 : 0;
        ::DispatchMessageW(&message);
    }
    ::CoRevokeClassObject(cookie);
    ::CoUninitialize();
    return 0;
}
