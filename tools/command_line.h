// What the small programs' command lines have in common.
#pragma once

#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace vantrel::tools {

/// What the caller asks can't be done; what() is one line.
struct BadInput : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// The number, or BadInput that names the option.
double numberIn(const std::string& option, const std::string& text, double least, double most);

/// Adds an option whose value is handed over as it stands; the name of the value and the option's text are
/// for the help.
CLI::Option* addText(CLI::App& line, const std::string& option, const std::string& valueName,
                     const std::string& text, const std::function<void(const std::string&)>& take);

/// Adds an option whose value is a number within bounds. Another value is BadInput.
CLI::Option* addNumber(CLI::App& line, const std::string& option, const std::string& valueName,
                       const std::string& text, double least, double most, std::optional<double>& number);

/// Goes through the arguments, without the program's name. False when they asked for help, which is printed
/// then: there is nothing else to do. Throws BadInput.
bool parsed(CLI::App& line, std::vector<std::string> arguments);

/// The exit status: what the work returns; 2 with a line on standard error, behind the program's name, for
/// what it throws.
int exitStatusOf(const char* program, const std::function<int()>& work);

}  // namespace vantrel::tools
