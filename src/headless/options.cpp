#include "headless/options.h"

#include <charconv>

#include <CLI/CLI.hpp>

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
    for (const std::string& part : CLI::detail::split(text, ','))
        if (const std::string name = trimmed(part); !name.empty()) names.push_back(name);
    return names;
}

/// Line ends in the texts are where the help breaks them.
void describe(CLI::App& line, Options& options) {
    line.name("vantrel-headless");
    line.allow_windows_style_options(false);
    line.description(
        "Runs Vantrel without windows. A script operates it: one JSON object a line on standard input,\n"
        "one JSON object a line on standard output. The end of the input closes the program.");
    const auto add = [&line](const char* name, const char* value, const std::string& text, auto take) {
        line.add_option_function<std::string>(name, take, text)->type_name(value);
    };
    line.add_flag("--virtual-time", options.virtualTime,
                  "waits cost no time: the clock jumps to whatever is due next");
    add("--start", "INSTANT",
        "when the program's clock starts, such as " + std::string(kVirtualStart) +
            "\n(that instant is the default with --virtual-time, else now)",
        [&options](const std::string& text) { options.start = parseStart(text); });
    add("--home", "DIR",
        "keeps settings, drives and documents below DIR instead of in\nthe user's directories",
        [&options](const std::string& text) { options.home = pathOf(text); });
    add("--seed", "N", "the seed of all simulated noise (default 1)",
        [&options](const std::string& text) { options.seed = parseSeed(text); });
    add("--installed", "PROGID,...", "the outside programs that exist (default: all that are built in)",
        [&options](const std::string& text) { options.installed = parseList(text); });
    add("--settings", "FILE",
        "stores the settings of a JSON file first:\n{\"PolarAlign\": {\"DeltaRA\": \"15\"}}",
        [&options](const std::string& text) { options.settings = pathOf(text); });
    line.set_help_flag("-h,--help", "this text");
}

}  // namespace

Options parseOptions(std::vector<std::string> arguments) {
    Options options;
    CLI::App line;
    describe(line, options);
    std::ranges::reverse(arguments);  // as the library takes them
    try {
        line.parse(std::move(arguments));
    } catch (const CLI::CallForHelp&) {
        options.help = true;
    } catch (const CLI::ParseError& error) {
        throw UsageError(error.what());
    }
    return options;
}

std::string usage() {
    Options none;
    CLI::App line;
    describe(line, none);
    return line.help();
}

}  // namespace vantrel::headless
