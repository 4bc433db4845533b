// The command line of vantrel-headless.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "platform/clock.h"

namespace vantrel::headless {

struct Options {
    bool virtualTime = false;
    /// Where the program's time starts; by default kVirtualStart with virtual time, else the machine's time.
    std::optional<platform::Instant> start;
    /// Holds everything that would go into the user's directories.
    std::optional<std::filesystem::path> home;
    std::uint64_t seed = 1;
    /// The outside programs that exist; by default all that there are.
    std::optional<std::vector<std::string>> installed;
    /// A JSON file with settings to store before the start.
    std::optional<std::filesystem::path> settings;
};

/// When virtual time starts, unless the command line says otherwise.
inline constexpr const char* kVirtualStart = "2026-11-24T20:00:00Z";

/// Takes the arguments without the program's name; nothing when they asked for help, which has been printed
/// then. Throws platform::UsageError.
std::optional<Options> parseOptions(std::vector<std::string> arguments);

}  // namespace vantrel::headless
