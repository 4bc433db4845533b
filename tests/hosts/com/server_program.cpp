// A COM server as a program: serves until nobody holds an object of it.
#include "hosts/com/dispatch_bridge.h"
#include "hosts/com/test_telescope.h"

int main() {
    using namespace vantrel::test;
    ::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    bool used = false;
    Factory factory([&] {
        used = true;
        return testTelescope();
    });
    DWORD cookie = 0;
    if (FAILED(::CoRegisterClassObject(kProgramClass, &factory, CLSCTX_LOCAL_SERVER, REGCLS_MULTIPLEUSE, &cookie))) return 1;
    constexpr DWORD kBetweenLooks = 200;
    ::SetTimer(nullptr, 0, kBetweenLooks, nullptr);
    MSG message{};
    while (::GetMessageW(&message, nullptr, 0, 0) > 0 && !(used && bridgedObjects() == 0)) ::DispatchMessageW(&message);
    ::CoRevokeClassObject(cookie);
    ::CoUninitialize();
    return 0;
}
