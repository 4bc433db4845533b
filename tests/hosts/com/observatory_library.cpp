// The served observatory as a library, in the process of its client and without windows: each of the client's
// threads has one of its own.
#include <map>
#include <memory>

#include "hosts/com/dispatch_bridge.h"
#include "hosts/com/served_observatory.h"

using namespace vantrel::test;

extern "C" __declspec(dllexport) HRESULT WINAPI
    DllGetClassObject(REFCLSID wanted, REFIID interfaceId, void** out) {
    thread_local ServedObservatory observatory(false);
    thread_local std::map<std::string, std::unique_ptr<Factory>> factories;
    *out = nullptr;
    for (const ServedClass& served : servedClasses()) {
        if (served.id != wanted) continue;
        std::unique_ptr<Factory>& factory = factories[served.progId];
        if (!factory)
            factory = std::make_unique<Factory>([&served, &own = observatory] { return own.create(served); });
        return factory->QueryInterface(interfaceId, out);
    }
    return CLASS_E_CLASSNOTAVAILABLE;
}

extern "C" __declspec(dllexport) HRESULT WINAPI DllCanUnloadNow() { return S_FALSE; }
