#include "hosts/com/variant.h"

#include <cmath>
#include <cstring>
#include <limits>
#include <optional>

#include "platform/errors.h"
#include "platform/image_array.h"

namespace vantrel::hosts::com {

using platform::ImageArray;
using platform::Value;

namespace {

template <typename... Ts>
struct Cases : Ts... {
    using Ts::operator()...;
};
template <typename... Ts>
Cases(Ts...) -> Cases<Ts...>;

[[noreturn]] void mismatch() { throw platform::runTimeError(platform::error_number::kTypeMismatch); }

/// Columns first: they are next to each other in memory, as in ours.
SAFEARRAY* newArray(VARTYPE type, std::size_t width, std::size_t height) {
    SAFEARRAYBOUND sides[2] = {{static_cast<ULONG>(width), 0}, {static_cast<ULONG>(height), 0}};
    SAFEARRAY* const array = ::SafeArrayCreate(type, 2, sides);
    if (array == nullptr) throw std::bad_alloc();
    return array;
}

/// The memory of an array while it is looked at.
class ArrayMemory {
  public:
    explicit ArrayMemory(SAFEARRAY* array) : array_(array) {
        if (FAILED(::SafeArrayAccessData(array, &memory_))) mismatch();
    }
    ~ArrayMemory() { ::SafeArrayUnaccessData(array_); }
    ArrayMemory(const ArrayMemory&) = delete;
    ArrayMemory& operator=(const ArrayMemory&) = delete;
    template <typename Element>
    Element* as() const {
        return static_cast<Element*>(memory_);
    }

  private:
    SAFEARRAY* array_;
    void* memory_ = nullptr;
};

void putImage(VARIANT& variant, const ImageArray& image) {
    std::visit(
        [&]<typename Pixel>(const std::vector<Pixel>& pixels) {
            constexpr bool kWhole = std::is_integral_v<Pixel>;
            using Element = std::conditional_t<kWhole, std::int32_t, float>;
            constexpr VARTYPE kType = kWhole ? VT_I4 : VT_R4;
            variant.parray = newArray(kType, image.width(), image.height());
            variant.vt = VT_ARRAY | kType;
            std::copy(pixels.begin(), pixels.end(), ArrayMemory(variant.parray).as<Element>());
        },
        image.pixels());
}

double numberOf(const VARIANT& element) {
    VARIANT number;
    ::VariantInit(&number);
    if (FAILED(::VariantChangeTypeEx(&number, const_cast<VARIANT*>(&element), LOCALE_INVARIANT, 0, VT_R8)))
        mismatch();
    return number.dblVal;
}

/// Whole numbers where all of them are that and small enough.
ImageArray::Pixels fittingPixels(const std::vector<double>& values) {
    const auto whole = [](double value) {
        return value == std::trunc(value) && std::abs(value) <= std::numeric_limits<std::int32_t>::max();
    };
    if (std::all_of(values.begin(), values.end(), whole))
        return std::vector<std::int32_t>(values.begin(), values.end());
    std::vector<float> floats;
    floats.reserve(values.size());
    for (const double value : values) floats.push_back(static_cast<float>(value));
    return floats;
}

ImageArray::Pixels pixelsOf(SAFEARRAY* array, VARTYPE type, std::size_t count) {
    const ArrayMemory memory(array);
    const auto as = [&]<typename Pixel, typename Element>(std::vector<Pixel>, const Element* from) {
        return ImageArray::Pixels(std::vector<Pixel>(from, from + count));
    };
    switch (type) {
        case VT_UI2:
            return as(std::vector<std::uint16_t>(), memory.as<std::uint16_t>());
        case VT_I2:
            return as(std::vector<std::int32_t>(), memory.as<std::int16_t>());
        case VT_I4:
        case VT_INT:
            return as(std::vector<std::int32_t>(), memory.as<std::int32_t>());
        case VT_UI1:
            return as(std::vector<std::uint16_t>(), memory.as<std::uint8_t>());
        case VT_R4:
            return as(std::vector<float>(), memory.as<float>());
        case VT_R8: {
            const auto* from = memory.as<double>();
            return fittingPixels({from, from + count});
        }
        case VT_VARIANT: {
            std::vector<double> values;
            values.reserve(count);
            const auto* from = memory.as<VARIANT>();
            for (std::size_t i = 0; i < count; ++i) values.push_back(numberOf(from[i]));
            return fittingPixels(values);
        }
        default:
            mismatch();
    }
}

Value imageOf(SAFEARRAY* array) {
    if (array == nullptr || ::SafeArrayGetDim(array) != 2) mismatch();
    const auto side = [&](UINT dimension) {
        LONG first = 0, last = -1;
        ::SafeArrayGetLBound(array, dimension, &first);
        ::SafeArrayGetUBound(array, dimension, &last);
        return static_cast<std::size_t>(std::max<LONG>(0, last - first + 1));
    };
    VARTYPE type = VT_EMPTY;
    ::SafeArrayGetVartype(array, &type);
    const std::size_t width = side(1), height = side(2);
    return Value(platform::ImageRef(
        std::make_shared<const ImageArray>(width, height, pixelsOf(array, type, width * height))));
}

BSTR newText(const std::string& text) {
    const std::wstring wide = platform::wide(text);
    return ::SysAllocStringLen(wide.data(), static_cast<UINT>(wide.size()));
}

}  // namespace

Variant toVariant(const Value& value, Place place, const ObjectWays& ways) {
    Variant variant;
    VARIANT& raw = variant.raw();
    std::visit(Cases{
                   [&](std::monostate) {
                       if (place == Place::kPropertyValue) return;
                       raw.vt = VT_ERROR;
                       raw.scode = DISP_E_PARAMNOTFOUND;
                   },
                   [&](bool held) {
                       raw.vt = VT_BOOL;
                       raw.boolVal = held ? VARIANT_TRUE : VARIANT_FALSE;
                   },
                   [&](std::int64_t held) {
                       const auto small = static_cast<LONG>(held);
                       raw.vt = small == held ? VT_I4 : VT_R8;
                       if (small == held)
                           raw.lVal = small;
                       else
                           raw.dblVal = static_cast<double>(held);
                   },
                   [&](double held) {
                       raw.vt = VT_R8;
                       raw.dblVal = held;
                   },
                   [&](const std::string& held) {
                       raw.vt = VT_BSTR;
                       raw.bstrVal = newText(held);
                   },
                   [&](const platform::ObjectRef& held) {
                       raw.vt = VT_DISPATCH;
                       raw.pdispVal = held ? ways.toCom(held) : nullptr;
                   },
                   [&](const platform::ImageRef& held) {
                       if (!held) mismatch();
                       putImage(raw, *held);
                   },
               },
               value.held());
    return variant;
}

Value fromVariant(const VARIANT& variant, const ObjectWays& ways) {
    if (variant.vt == (VT_VARIANT | VT_BYREF)) return fromVariant(*variant.pvarVal, ways);
    if ((variant.vt & VT_ARRAY) != 0)
        return imageOf((variant.vt & VT_BYREF) != 0 ? *variant.pparray : variant.parray);
    Variant plain;
    if (FAILED(::VariantCopyInd(&plain.raw(), const_cast<VARIANT*>(&variant)))) mismatch();
    const VARIANT& raw = plain.raw();
    switch (raw.vt) {
        case VT_EMPTY:
        case VT_NULL:
        case VT_ERROR:
            return {};
        case VT_BOOL:
            return raw.boolVal != VARIANT_FALSE;
        case VT_BSTR:
            return platform::narrow({raw.bstrVal, ::SysStringLen(raw.bstrVal)});
        case VT_DISPATCH:
            return raw.pdispVal == nullptr ? Value(platform::ObjectRef()) : Value(ways.fromCom(raw.pdispVal));
        case VT_I1:
        case VT_I2:
        case VT_I4:
        case VT_INT:
        case VT_UI1:
        case VT_UI2:
        case VT_UI4:
        case VT_UINT:
            return static_cast<std::int64_t>(numberOf(raw));
        default:
            return numberOf(raw);
    }
}

}  // namespace vantrel::hosts::com
