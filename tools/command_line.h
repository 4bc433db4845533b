// What the small programs' command lines have in common.
#pragma once

#include <functional>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

namespace vantrel::tools {

/// What the caller asks can't be done; what() is one line.
struct BadInput : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// The number, or BadInput that names the option.
double numberIn(const std::string& option, const std::string& text, double least, double most);

/// Arguments, gone through one after the other: those that are options and what follows these as their
/// values.
class Arguments {
  public:
    /// The list must outlive this.
    explicit Arguments(const std::vector<std::string>& all) : all_(all) {}

    /// Goes on to what follows the last and its values; false at the end.
    bool next();
    const std::string& name() const { return all_[first_]; }
    /// The next argument, as a value of this one. Throws BadInput when there is none.
    const std::string& value();
    /// This one and the values of it that were taken.
    std::span<const std::string> taken() const { return std::span(all_).subspan(first_, end_ - first_); }

  private:
    const std::vector<std::string>& all_;
    std::size_t first_ = 0, end_ = 0;
};

/// Prints the usage when that is asked for (--help, -h); then there is nothing else to do.
bool helped(const std::vector<std::string>& arguments, const char* usage);

/// The exit status: what the work returns; 2 with a line on standard error, behind the program's name, for
/// what it throws.
int exitStatusOf(const char* program, const std::function<int()>& work);

}  // namespace vantrel::tools
