// A COM server as a library that its client's process loads.
#include "hosts/com/dispatch_bridge.h"
#include "hosts/com/test_telescope.h"

using namespace vantrel::test;

extern "C" __declspec(dllexport) HRESULT WINAPI
    DllGetClassObject(REFCLSID wanted, REFIID interfaceId, void** out) {
    static Factory factory([] { return testTelescope(); });
    *out = nullptr;
    const GUID& own = sizeof(void*) == 8 ? kLibraryClass : kLibraryOf32BitsClass;
    return wanted == own ? factory.QueryInterface(interfaceId, out) : CLASS_E_CLASSNOTAVAILABLE;
}

extern "C" __declspec(dllexport) HRESULT WINAPI DllCanUnloadNow() {
    return bridgedObjects() == 0 ? S_OK : S_FALSE;
}
