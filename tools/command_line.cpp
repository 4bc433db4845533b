#include "command_line.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <utility>

#include <CLI/CLI.hpp>

#include "platform/text.h"

namespace vantrel::tools {

double numberIn(const std::string& option, const std::string& text, double least, double most) {
    const auto value = platform::parseNumber(text);
    if (!value || !(*value >= least) || !(*value <= most)) {
        throw BadInput(option + " must be a number from " + platform::toText(least) + " to " +
                       platform::toText(most));
    }
    return *value;
}

CLI::Option* addText(CLI::App& line, const std::string& option, const std::string& valueName,
                     const std::string& text, const std::function<void(const std::string&)>& take) {
    return line.add_option_function<std::string>(option, take, text)->type_name(valueName);
}

CLI::Option* addNumber(CLI::App& line, const std::string& option, const std::string& valueName,
                       const std::string& text, double least, double most, std::optional<double>& number) {
    return addText(line, option, valueName, text, [option, least, most, &number](const std::string& value) {
        number = numberIn(option, value, least, most);
    });
}

bool parsed(CLI::App& line, std::vector<std::string> arguments) {
    line.allow_windows_style_options(false);
    std::ranges::reverse(arguments);  // as the library takes them
    try {
        line.parse(std::move(arguments));
    } catch (const CLI::CallForHelp&) {
        std::fputs(line.help().c_str(), stdout);
        return false;
    } catch (const CLI::ParseError& error) {
        throw BadInput(error.what());
    }
    return true;
}

int exitStatusOf(const char* program, const std::function<int()>& work) {
    try {
        return work();
    } catch (const std::exception& e) {
        std::fprintf(stderr, "%s: %s\n", program, e.what());
        return 2;
    }
}

}  // namespace vantrel::tools
