// What the program asks of the desktop and the machine around it.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace vantrel::platform {

struct Drawing;

/// The operating system's version record, with the platform's own codes.
struct SystemVersion {
    int platformId = 0;
    int major = 0, minor = 0;
    std::string servicePackText = {};
    int servicePackMajor = 0, servicePackMinor = 0;
    int suiteMask = 0;
    std::uint32_t productType = 0;
};

class Desktop {
  public:
    virtual ~Desktop() = default;

    /// Nothing when the query fails.
    virtual std::optional<SystemVersion> systemVersion() const = 0;

    /// What a system without such a record, or with one of a kind of its own, calls itself.
    virtual std::string systemName() const { return {}; }

    /// The folder of the user's profile, with drive letter and backslashes.
    virtual std::string userProfile() const = 0;

    /// The folder that the program was installed in, with drive letter and backslashes.
    virtual std::string programFolder() const { return "C:\\Program Files\\Vantrel"; }

    /// A value of the machine-wide registry; empty when there is none, or no registry.
    virtual std::string registryValue(const std::string& /*key*/, const std::string& /*name*/) const {
        return {};
    }

    /// Opens a document or page with the program that the desktop has for it; false when that fails.
    virtual bool open(const std::string& file) = 0;

    /// The real file to open for one that is part of the program: itself, or what this desktop shows in its
    /// place. It may be missing.
    virtual std::filesystem::path shownFor(const std::string& /*file*/) const { return {}; }

    /// Makes itself heard, where it can.
    virtual void beep() {}

    /// Speaks, where something here can; returns at once.
    virtual void say(const std::string& /*words*/) {}

    /// Puts a text on the clipboard; false where there is none.
    virtual bool copyText(const std::string& /*text*/) { return false; }

    /// Puts a dial on the clipboard as a picture; false where there is none.
    virtual bool copyDial(const Drawing& /*drawing*/) { return false; }

    /// A dial as the contents of a PNG file, as it looks by day; empty where nothing can paint.
    virtual std::string pngOfDial(const Drawing& /*drawing*/) const { return {}; }
};

}  // namespace vantrel::platform
