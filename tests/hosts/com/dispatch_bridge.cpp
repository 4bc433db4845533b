#include "hosts/com/dispatch_bridge.h"

#include <atomic>
#include <string>
#include <vector>

#include "platform/errors.h"

namespace vantrel::test {

using namespace hosts::com;

namespace {

// Servers' own: there is one count a process.
std::atomic<long> held = 0;  // NOLINT(cppcoreguidelines-avoid-non-const-global-variables)

class Bridge : public IDispatch {
  public:
    explicit Bridge(platform::ObjectRef object) : object_(std::move(object)) { ++held; }
    virtual ~Bridge() { --held; }

    STDMETHODIMP QueryInterface(REFIID wanted, void** out) override {
        *out = nullptr;
        if (wanted != IID_IUnknown && wanted != IID_IDispatch) return E_NOINTERFACE;
        *out = static_cast<IDispatch*>(this);
        AddRef();
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return ++references_; }
    STDMETHODIMP_(ULONG) Release() override {
        const ULONG left = --references_;
        if (left == 0) delete this;
        return left;
    }
    STDMETHODIMP GetTypeInfoCount(UINT* count) override {
        *count = 0;
        return S_OK;
    }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo** out) override {
        *out = nullptr;
        return E_NOTIMPL;
    }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) override {
        for (UINT i = 0; i < count; ++i) {
            members_.push_back(platform::narrow(names[i]));
            ids[i] = static_cast<DISPID>(members_.size());
        }
        return S_OK;
    }
    STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD how, DISPPARAMS* given, VARIANT* out,
                        EXCEPINFO* failure, UINT*) override {
        const ObjectWays ways{[](const platform::ObjectRef& object) { return bridged(object); },
                              [](IDispatch*) -> platform::ObjectRef { return nullptr; }};
        try {
            platform::Arguments arguments;
            for (UINT i = given->cArgs; i > 0; --i)
                arguments.push_back(fromVariant(given->rgvarg[i - 1], ways));
            const std::string& member = members_.at(static_cast<std::size_t>(id) - 1);
            platform::Value result;
            if ((how & DISPATCH_PROPERTYPUT) != 0) {
                const platform::Value value = arguments.back();
                arguments.pop_back();
                object_->put(member, value, arguments);
            } else if ((how & DISPATCH_METHOD) != 0) {
                result = object_->call(member, arguments);
            } else {
                result = object_->get(member, arguments);
            }
            if (out != nullptr) {
                Variant variant = toVariant(result, Place::kPropertyValue, ways);
                *out = variant.raw();
                ::VariantInit(&variant.raw());
            }
            return S_OK;
        } catch (...) {
            const platform::OperationError error = platform::currentError();
            if (error.number() == platform::error_number::kNoSuchMember) return DISP_E_MEMBERNOTFOUND;
            constexpr unsigned kRunTime = 0x800A0000U;
            *failure = {};
            failure->scode = error.number() < 0
                                 ? error.number()
                                 : static_cast<SCODE>(kRunTime + static_cast<unsigned>(error.number()));
            failure->bstrSource = ::SysAllocString(platform::wide(error.source()).c_str());
            failure->bstrDescription = ::SysAllocString(platform::wide(error.description()).c_str());
            return DISP_E_EXCEPTION;
        }
    }

  private:
    std::atomic<ULONG> references_ = 1;
    platform::ObjectRef object_;
    std::vector<std::string> members_;
};

}  // namespace

long bridgedObjects() { return held; }

IDispatch* bridged(const platform::ObjectRef& object) { return new Bridge(object); }

STDMETHODIMP Factory::QueryInterface(REFIID wanted, void** out) {
    const bool known = wanted == IID_IUnknown || wanted == IID_IClassFactory;
    *out = known ? static_cast<IClassFactory*>(this) : nullptr;
    return known ? S_OK : E_NOINTERFACE;
}

STDMETHODIMP Factory::CreateInstance(IUnknown* outer, REFIID wanted, void** out) {
    *out = nullptr;
    if (outer != nullptr) return CLASS_E_NOAGGREGATION;
    IDispatch* const object = bridged(make_());
    const HRESULT result = object->QueryInterface(wanted, out);
    object->Release();
    return result;
}

}  // namespace vantrel::test
