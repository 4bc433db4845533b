// The command line of a program of ours: its options, and their help.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace vantrel::platform {

/// What is wrong with a command line, in one line.
struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// An option's value stands behind it or behind "=". Options are explained in the order in which they are
/// added; line ends in their texts are where the help breaks them.
class CommandLine {
  public:
    CommandLine(const std::string& program, const std::string& text);
    ~CommandLine();
    CommandLine(const CommandLine&) = delete;
    CommandLine& operator=(const CommandLine&) = delete;

    void addFlag(const std::string& option, const std::string& text, bool& given);
    /// The value is handed over as it stands; `take` may throw UsageError. The value's name is for the help.
    void addText(const std::string& option, const std::string& valueName, const std::string& text,
                 const std::function<void(const std::string&)>& take);
    /// Another value than a number within the bounds is a UsageError.
    void addNumber(const std::string& option, const std::string& valueName, const std::string& text,
                   double least, double most, std::optional<double>& number);
    /// Takes so many values as they stand.
    void addTexts(const std::string& option, const std::string& valueName, const std::string& text, int count,
                  std::vector<std::string>& values);
    /// What is given beside the options.
    void addOperands(const std::string& name, const std::string& text, std::vector<std::string>& values);

    /// Takes the arguments without the program's name. False when they ask for help, which is printed then:
    /// there is nothing else to do. Throws UsageError.
    bool parse(std::vector<std::string> arguments);
    /// The options as they were given, with their values, in the order in which they were added.
    std::vector<std::string> given() const;

  private:
    std::unique_ptr<CLI::App> line_;
};

/// The number, or a UsageError that names the option.
double numberIn(const std::string& option, const std::string& text, double least, double most);

}  // namespace vantrel::platform
