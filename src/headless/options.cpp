#include "headless/options.h"

#include <algorithm>
#include <charconv>

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
    std::size_t start = 0;
    while (start <= text.size()) {
        const std::size_t end = std::min(text.find(',', start), text.size());
        if (const std::string name = trimmed(text.substr(start, end - start)); !name.empty())
            names.push_back(name);
        start = end + 1;
    }
    return names;
}

void take(Options& options, const std::string& name, const std::string& value) {
    if (name == "--start")
        options.start = parseStart(value);
    else if (name == "--home")
        options.home = pathOf(value);
    else if (name == "--seed")
        options.seed = parseSeed(value);
    else if (name == "--installed")
        options.installed = parseList(value);
    else if (name == "--settings")
        options.settings = pathOf(value);
    else
        throw UsageError("Unknown option: " + name);
}

}  // namespace

Options parseOptions(const std::vector<std::string>& arguments) {
    Options options;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string& argument = arguments[i];
        if (argument == "--help" || argument == "-h") {
            options.help = true;
            continue;
        }
        if (argument == "--virtual-time") {
            options.virtualTime = true;
            continue;
        }
        if (!argument.starts_with("--")) throw UsageError("Unexpected argument: " + argument);
        if (const auto equals = argument.find('='); equals != std::string::npos)
            take(options, argument.substr(0, equals), argument.substr(equals + 1));
        else if (i + 1 < arguments.size())
            take(options, argument, arguments[++i]);
        else
            throw UsageError(argument + " needs a value, or is unknown");
    }
    return options;
}

std::string usage() {
    return "Usage: vantrel-headless [OPTION]...\n"
           "Runs Vantrel without windows. A script operates it: one JSON object a line on standard input,\n"
           "one JSON object a line on standard output. The end of the input closes the program.\n"
           "\n"
           "  --virtual-time         waits cost no time: the clock jumps to whatever is due next\n"
           "  --start INSTANT        when the program's clock starts, such as " +
           std::string(kVirtualStart) +
           "\n"
           "                         (that instant is the default with --virtual-time, else now)\n"
           "  --home DIR             keeps settings, drives and documents below DIR instead of in the\n"
           "                         user's directories\n"
           "  --seed N               the seed of all simulated noise (default 1)\n"
           "  --installed PROGID,... the outside programs that exist (default: all that are built in)\n"
           "  --settings FILE        stores the settings of a JSON file first:\n"
           "                         {\"PolarAlign\": {\"DeltaRA\": \"15\"}}\n"
           "  --help                 this text\n";
}

}  // namespace vantrel::headless
