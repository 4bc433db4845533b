#include "platform/command_line.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#include <CLI/CLI.hpp>

#include "platform/text.h"

namespace vantrel::platform {

CommandLine::CommandLine(const std::string& program, const std::string& text)
    : line_(std::make_unique<CLI::App>(text, program)) {
    line_->allow_windows_style_options(false);  // a path may begin with "/"
    line_->set_help_flag("-h,--help", "this text");
}

CommandLine::~CommandLine() = default;

void CommandLine::addFlag(const std::string& option, const std::string& text, bool& given) {
    line_->add_flag(option, given, text);
}

void CommandLine::addText(const std::string& option, const std::string& valueName, const std::string& text,
                          const std::function<void(const std::string&)>& take) {
    line_->add_option_function<std::string>(option, take, text)->type_name(valueName);
}

void CommandLine::addNumber(const std::string& option, const std::string& valueName, const std::string& text,
                            double least, double most, std::optional<double>& number) {
    addText(option, valueName, text, [option, least, most, &number](const std::string& value) {
        number = numberIn(option, value, least, most);
    });
}

void CommandLine::addTexts(const std::string& option, const std::string& valueName, const std::string& text,
                           int count, std::vector<std::string>& values) {
    line_->add_option(option, values, text)->type_name(valueName)->expected(count);
}

void CommandLine::addOperands(const std::string& name, const std::string& text,
                              std::vector<std::string>& values) {
    line_->add_option(name, values, text)->type_name("");
}

bool CommandLine::parse(std::vector<std::string> arguments) {
    std::ranges::reverse(arguments);  // as the library takes them
    try {
        line_->parse(std::move(arguments));
    } catch (const CLI::CallForHelp&) {
        std::fputs(line_->help().c_str(), stdout);
        return false;
    } catch (const CLI::ParseError& error) {
        throw UsageError(error.what());
    }
    return true;
}

std::vector<std::string> CommandLine::given() const {
    std::vector<std::string> given;
    for (const CLI::Option* option : std::as_const(*line_).get_options()) {
        if (option->get_positional() || option->count() == 0) continue;
        given.push_back(option->get_name());
        if (option->get_expected_min() > 0)
            for (const std::string& value : option->results()) given.push_back(value);
    }
    return given;
}

double numberIn(const std::string& option, const std::string& text, double least, double most) {
    const auto value = parseNumber(text);
    if (!value || !(*value >= least) || !(*value <= most))
        throw UsageError(option + " must be a number from " + toText(least) + " to " + toText(most));
    return *value;
}

}  // namespace vantrel::platform
