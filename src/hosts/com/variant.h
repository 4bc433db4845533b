// The program's values as COM's, and back.
#pragma once

#include <functional>

#include "platform/automation.h"
#include "platform/win32_calls.h"

namespace vantrel::hosts::com {

/// A VARIANT that is cleared with its object.
class Variant {
  public:
    Variant() { ::VariantInit(&held_); }
    Variant(Variant&& other) noexcept : held_(other.held_) { ::VariantInit(&other.held_); }
    Variant(const Variant&) = delete;
    Variant& operator=(const Variant&) = delete;
    ~Variant() { ::VariantClear(&held_); }

    VARIANT& raw() { return held_; }
    const VARIANT& raw() const { return held_; }

  private:
    VARIANT held_;
};

/// How objects pass; the interface that the first returns is the variant's own.
struct ObjectWays {
    std::function<IDispatch*(const platform::ObjectRef&)> toCom;
    std::function<platform::ObjectRef(IDispatch*)> fromCom;
};

enum class Place { kArgument, kPropertyValue };
/// An empty value is, as an argument, one that is left out. Images become arrays of whole numbers of 32 bits,
/// or of floats: never of VARIANTs, which would be eight times as large.
Variant toVariant(const platform::Value& value, Place place, const ObjectWays& ways);

/// Failure 13 for what the program has no value for.
platform::Value fromVariant(const VARIANT& variant, const ObjectWays& ways);

}  // namespace vantrel::hosts::com
