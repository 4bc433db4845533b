#include "hosts/com/host.h"

#include <array>
#include <map>
#include <optional>

#include "hosts/com/apartment.h"
#include "hosts/com/library_process.h"
#include "hosts/com/variant.h"
#include "platform/errors.h"
#include "platform/text.h"

namespace vantrel::hosts::com {

using platform::Arguments;
using platform::AutomationError;
using platform::Milliseconds;
using platform::ObjectRef;
using platform::Value;

namespace {

constexpr Milliseconds kTimeOut{60'000};
constexpr Milliseconds kDialogTimeOut{24 * 3600 * 1000};  // an operator takes what time he wants

Milliseconds timeOutOf(const std::string& member) {
    for (const char* dialog : {"SetupDialog", "Choose", "Solve"})
        if (platform::equalIgnoringCase(member, dialog)) return kDialogTimeOut;
    return kTimeOut;
}

int numberOf(HRESULT failure) {
    constexpr unsigned kRunTime = 0x800A0000U;
    const auto code = static_cast<unsigned>(failure);
    if ((code & 0xFFFF0000U) == kRunTime) return static_cast<int>(code & 0xFFFFU);
    switch (failure) {
        case REGDB_E_CLASSNOTREG:
        case CO_E_CLASSSTRING:
            return platform::error_number::kCannotCreateObject;
        case HRESULT_FROM_WIN32(RPC_S_SERVER_UNAVAILABLE):
        case RPC_E_DISCONNECTED:
            return platform::error_number::kServerIsGone;
        case DISP_E_MEMBERNOTFOUND:
        case DISP_E_UNKNOWNNAME:
            return platform::error_number::kNoSuchMember;
        case DISP_E_TYPEMISMATCH:
            return platform::error_number::kTypeMismatch;
        case DISP_E_BADPARAMCOUNT:
            return platform::error_number::kWrongArguments;
        default:
            return static_cast<int>(failure);
    }
}

std::string systemText(HRESULT failure) {
    wchar_t* text = nullptr;
    const DWORD length = ::FormatMessageW(
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
        static_cast<DWORD>(failure), 0, reinterpret_cast<wchar_t*>(&text), 0, nullptr);
    std::string words = length > 0 ? platform::trimmed(platform::narrow({text, length})) : std::string();
    ::LocalFree(text);
    return words;
}

[[noreturn]] void fail(HRESULT failure, const std::string& source) {
    const int number = numberOf(failure);
    // The program's own words where it has some for the number.
    if (number > 0 && number < 1000 && number != platform::error_number::kWrongArguments &&
        number != platform::error_number::kServerIsGone)
        throw AutomationError(number, source, platform::runTimeError(number).description());
    throw AutomationError(number, source, systemText(failure));
}

std::string taken(BSTR& text) {
    const std::string words =
        text == nullptr ? std::string() : platform::narrow({text, ::SysStringLen(text)});
    ::SysFreeString(text);
    text = nullptr;
    return words;
}

[[noreturn]] void failByServer(EXCEPINFO& told, const std::string& source) {
    if (told.pfnDeferredFillIn != nullptr) told.pfnDeferredFillIn(&told);
    const std::string who = taken(told.bstrSource), what = taken(told.bstrDescription);
    taken(told.bstrHelpFile);
    const int number = told.scode != 0 ? numberOf(told.scode) : told.wCode;
    throw AutomationError(number, who.empty() ? source : who, what);
}

/// An object of a server. Made and asked in the apartment alone; let go of there as well, from wherever.
class Object : public platform::AutomationObject, public std::enable_shared_from_this<Object> {
  public:
    Object(std::shared_ptr<Apartment> apartment, std::shared_ptr<LibraryProcess> home, std::string className,
           IDispatch* own)
        : apartment_(std::move(apartment)),
          home_(std::move(home)),
          className_(std::move(className)),
          inner_(own) {}
    ~Object() override {
        apartment_->post([inner = inner_, home = home_] { inner->Release(); });
    }
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;

    std::string className() const override { return className_; }
    Value get(const std::string& member, const Arguments& arguments) override {
        return use(member, DISPATCH_PROPERTYGET, arguments);
    }
    Value call(const std::string& member, const Arguments& arguments) override {
        return use(member, DISPATCH_METHOD | DISPATCH_PROPERTYGET, arguments);
    }
    void put(const std::string& member, const Value& value, const Arguments& arguments) override {
        Arguments all = arguments;
        all.push_back(value);
        use(member, DISPATCH_PROPERTYPUT, all);
    }

    IDispatch* newReference() const {
        inner_->AddRef();
        return inner_;
    }

  private:
    Value use(const std::string& member, WORD how, const Arguments& arguments) {
        // Whoever gives up waiting leaves all this to the thread.
        const auto result = std::make_shared<Value>();
        apartment_->run(className_ + "." + member, timeOutOf(member),
                        [self = shared_from_this(), member, how, arguments, result] {
                            *result = self->invoke(member, how, arguments);
                        });
        return *result;
    }

    ObjectWays ways(const std::string& member) const {
        return {[](const ObjectRef& object) -> IDispatch* {
                    const auto ours = std::dynamic_pointer_cast<Object>(object);
                    if (!ours) throw platform::runTimeError(platform::error_number::kTypeMismatch);
                    return ours->newReference();
                },
                [this, member](IDispatch* object) -> ObjectRef {
                    object->AddRef();
                    return std::make_shared<Object>(apartment_, home_, className_ + "." + member, object);
                }};
    }

    DISPID idOf(const std::string& member) {
        const std::string key = platform::toLower(member);
        const auto known = ids_.find(key);
        if (known != ids_.end()) return known->second;
        std::wstring name = platform::wide(member);
        wchar_t* names = name.data();
        DISPID id = DISPID_UNKNOWN;
        const HRESULT failure = inner_->GetIDsOfNames(IID_NULL, &names, 1, LOCALE_USER_DEFAULT, &id);
        if (FAILED(failure)) fail(failure, className_);
        return ids_[key] = id;
    }

    Value invoke(const std::string& member, WORD how, const Arguments& arguments) {
        const DISPID id = idOf(member);
        const ObjectWays asObjects = ways(member);
        const bool putting = how == DISPATCH_PROPERTYPUT;
        std::vector<Variant> held;
        for (std::size_t i = 0; i < arguments.size(); ++i) {
            const bool value = putting && i + 1 == arguments.size();
            held.push_back(
                toVariant(arguments[i], value ? Place::kPropertyValue : Place::kArgument, asObjects));
        }
        std::vector<VARIANTARG> backwards;  // they belong to `held`
        for (auto one = held.rbegin(); one != held.rend(); ++one) backwards.push_back(one->raw());
        DISPID putId = DISPID_PROPERTYPUT;
        DISPPARAMS parameters{backwards.data(), putting ? &putId : nullptr,
                              static_cast<UINT>(backwards.size()), putting ? 1U : 0U};
        Variant result;
        EXCEPINFO told{};
        UINT which = 0;
        const HRESULT failure = inner_->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, how, &parameters,
                                               putting ? nullptr : &result.raw(), &told, &which);
        if (failure == DISP_E_EXCEPTION) failByServer(told, className_);
        if (FAILED(failure)) fail(failure, className_);
        return fromVariant(result.raw(), asObjects);
    }

    std::shared_ptr<Apartment> apartment_;
    std::shared_ptr<LibraryProcess> home_;  // of those that are in one of their own
    std::string className_;
    IDispatch* inner_;
    std::map<std::string, DISPID> ids_;
};

// ---- The registry

constexpr std::array<REGSAM, 2> kViews = {KEY_WOW64_64KEY, KEY_WOW64_32KEY};

class Key {
  public:
    Key(HKEY root, const std::string& path, REGSAM view) {
        if (::RegOpenKeyExW(root, platform::wide(path).c_str(), 0, KEY_READ | view, &key_) != ERROR_SUCCESS)
            key_ = nullptr;
    }
    ~Key() {
        if (key_ != nullptr) ::RegCloseKey(key_);
    }
    Key(const Key&) = delete;
    Key& operator=(const Key&) = delete;

    explicit operator bool() const { return key_ != nullptr; }

    /// The unnamed value.
    std::string text() const {
        std::wstring value(4096, L'\0');
        auto size = static_cast<DWORD>(value.size() * sizeof(wchar_t));
        if (key_ == nullptr || ::RegGetValueW(key_, nullptr, nullptr, RRF_RT_REG_SZ, nullptr, value.data(),
                                              &size) != ERROR_SUCCESS)
            return {};
        return platform::narrow(value.c_str());
    }
    std::vector<std::string> names() const {
        std::vector<std::string> all;
        wchar_t name[300];
        for (DWORD i = 0;; ++i) {
            DWORD size = 300;
            if (key_ == nullptr ||
                ::RegEnumKeyExW(key_, i, name, &size, nullptr, nullptr, nullptr, nullptr) != 0)
                return all;
            all.push_back(platform::narrow(name));
        }
    }

  private:
    HKEY key_ = nullptr;
};

/// C:\Program Files\X\x.exe of "C:\Program Files\X\x.exe" /automation, with or without quotes.
std::string fileOf(const std::string& command) {
    if (command.starts_with('"')) return command.substr(1, command.find('"', 1) - 1);
    const auto ending = platform::toLower(command).find(".exe");
    return ending == std::string::npos ? command : command.substr(0, ending + 4);
}

/// As both views have them.
std::vector<std::string> classIds(const std::string& progId) {
    std::vector<std::string> ids;
    for (const REGSAM view : kViews)
        if (std::string id = Key(HKEY_CLASSES_ROOT, progId + "\\CLSID", view).text(); !id.empty())
            ids.push_back(std::move(id));
    return ids;
}

HRESULT create64(const std::string& progId, IDispatch*& object) {
    CLSID id{};
    const HRESULT failure = ::CLSIDFromProgID(platform::wide(progId).c_str(), &id);
    if (FAILED(failure)) return failure;
    return ::CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER | CLSCTX_LOCAL_SERVER, IID_IDispatch,
                              reinterpret_cast<void**>(&object));
}

/// Whether a class that can't be made may be one that programs of 32 bits can make.
bool isForOthers(HRESULT failure) {
    return failure == REGDB_E_CLASSNOTREG || failure == REGDB_E_KEYMISSING || failure == CO_E_CLASSSTRING ||
           failure == HRESULT_FROM_WIN32(ERROR_BAD_EXE_FORMAT);
}

bool isLibraryOf32Bits(const std::string& progId) {
    for (const std::string& id : classIds(progId))
        if (Key(HKEY_CLASSES_ROOT, "CLSID\\" + id + "\\InprocServer32", KEY_WOW64_32KEY)) return true;
    return false;
}

std::string profileKey(const std::string& deviceType) {
    return "SOFTWARE\\ASCOM\\" + deviceType + " Drivers";
}

}  // namespace

Host::Host(PumpedWait wait) : wait_(std::move(wait)) {}

Host::~Host() = default;

ObjectRef Host::create(const std::string& progId) {
    // A program that hangs keeps no other from being used, and may be used afresh.
    std::shared_ptr<Apartment>& apartment = apartments_[platform::programOf(progId)];
    if (!apartment || apartment->hangs()) apartment = std::make_shared<Apartment>(wait_);
    const auto created = std::make_shared<ObjectRef>();
    apartment->run(progId, kTimeOut, [apartment, progId, created] {
        IDispatch* object = nullptr;
        std::shared_ptr<LibraryProcess> home;
        HRESULT failure = create64(progId, object);
        if (isForOthers(failure) && isLibraryOf32Bits(progId)) {
            home = std::make_shared<LibraryProcess>(progId);
            failure = home->takeObject(object);
        }
        if (FAILED(failure)) fail(failure, progId);
        *created = std::make_shared<Object>(apartment, home, progId, object);
    });
    return *created;
}

bool Host::isInstalled(const std::string& progId) const { return !classIds(progId).empty(); }

std::string Host::serverPath(const std::string& progId) const {
    for (const std::string& id : classIds(progId)) {
        for (const char* kind : {"LocalServer32", "InprocServer32"})
            for (const REGSAM classes : kViews) {
                const std::string command =
                    Key(HKEY_CLASSES_ROOT, "CLSID\\" + id + "\\" + kind, classes).text();
                if (!command.empty()) return fileOf(command);
            }
    }
    return {};
}

std::string Host::profileDescription(const std::string& deviceType, const std::string& progId) const {
    for (const REGSAM view : {KEY_WOW64_32KEY, KEY_WOW64_64KEY}) {
        const std::string words =
            Key(HKEY_LOCAL_MACHINE, profileKey(deviceType) + "\\" + progId, view).text();
        if (!words.empty()) return words;
    }
    return {};
}

std::vector<Host::Driver> Host::drivers(const std::string& deviceType) const {
    std::map<std::string, Driver> found;
    for (const REGSAM view : kViews)
        for (const std::string& progId : Key(HKEY_LOCAL_MACHINE, profileKey(deviceType), view).names())
            found[platform::toLower(progId)] = {progId, profileDescription(deviceType, progId)};
    std::vector<Driver> all;
    for (auto& [key, driver] : found) all.push_back(std::move(driver));
    return all;
}

}  // namespace vantrel::hosts::com
