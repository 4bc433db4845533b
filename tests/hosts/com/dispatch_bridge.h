// Objects of our own as late-bound ones of COM: what test servers hand out.
#pragma once

#include <functional>

#include "hosts/com/variant.h"

namespace vantrel::test {

/// How many are held by clients.
long bridgedObjects();

/// A reference of the caller's.
IDispatch* bridged(const platform::ObjectRef& object);

/// Makes objects for clients.
class Factory : public IClassFactory {
  public:
    explicit Factory(std::function<platform::ObjectRef()> make) : make_(std::move(make)) {}

    STDMETHODIMP QueryInterface(REFIID wanted, void** out) override;
    STDMETHODIMP_(ULONG) AddRef() override { return 2; }
    STDMETHODIMP_(ULONG) Release() override { return 1; }
    STDMETHODIMP CreateInstance(IUnknown* outer, REFIID wanted, void** out) override;
    STDMETHODIMP LockServer(BOOL) override { return S_OK; }

  private:
    std::function<platform::ObjectRef()> make_;
};

}  // namespace vantrel::test
