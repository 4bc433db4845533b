#include "headless/options.h"

#include <charconv>
#include <sstream>
#include <utility>

#include "platform/command_line.h"
#include "platform/paths.h"
#include "platform/text.h"

namespace vantrel::headless {

using namespace platform;

namespace {

std::uint64_t parseSeed(const std::string& text) {
    std::uint64_t seed = 0;
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, seed);
    if (result.ec != std::errc() || result.ptr != end) throw UsageError("--seed needs a whole number");
    return seed;
}

Instant parseStart(const std::string& text) {
    if (const auto instant = parseInstant(text)) return *instant;
    throw UsageError("--start needs an instant such as " + std::string(kVirtualStart));
}

std::vector<std::string> parseList(const std::string& text) {
    std::vector<std::string> names;
    std::istringstream parts(text);
    for (std::string part; std::getline(parts, part, ',');)
        if (const std::string name = trimmed(part); !name.empty()) names.push_back(name);
    return names;
}

}  // namespace

std::optional<Options> parseOptions(std::vector<std::string> arguments) {
    Options options;
    CommandLine line(
        "vantrel-headless",
        "Runs Vantrel without windows. A script operates it: one JSON object a line on standard input,\n"
        "one JSON object a line on standard output. The end of the input closes the program.");
    line.addFlag("--virtual-time", "waits cost no time: the clock jumps to whatever is due next",
                 options.virtualTime);
    line.addText("--start", "INSTANT",
                 "when the program's clock starts, such as " + std::string(kVirtualStart) +
                     "\n(that instant is the default with --virtual-time, else now)",
                 [&options](const std::string& text) { options.start = parseStart(text); });
    line.addText("--home", "DIR",
                 "keeps settings, drives and documents below DIR instead of in\nthe user's directories",
                 [&options](const std::string& text) { options.home = pathOf(text); });
    line.addText("--seed", "N", "the seed of all simulated noise (default 1)",
                 [&options](const std::string& text) { options.seed = parseSeed(text); });
    line.addText("--installed", "PROGID,...",
                 "the outside programs that exist (default: all that are built in)",
                 [&options](const std::string& text) { options.installed = parseList(text); });
    line.addText("--settings", "FILE",
                 "stores the settings of a JSON file first:\n{\"PolarAlign\": {\"DeltaRA\": \"15\"}}",
                 [&options](const std::string& text) { options.settings = pathOf(text); });
    if (!line.parse(std::move(arguments))) return std::nullopt;
    return options;
}

}  // namespace vantrel::headless
