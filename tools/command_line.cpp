#include "command_line.h"

#include <algorithm>
#include <cstdio>
#include <exception>

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

bool Arguments::next() {
    first_ = end_;
    if (first_ == all_.size()) return false;
    ++end_;
    return true;
}

const std::string& Arguments::value() {
    if (end_ == all_.size()) throw BadInput(name() + " needs a value");
    return all_[end_++];
}

bool helped(const std::vector<std::string>& arguments, const char* usage) {
    const bool asked = std::ranges::any_of(
        arguments, [](const std::string& argument) { return argument == "--help" || argument == "-h"; });
    if (asked) std::fputs(usage, stdout);
    return asked;
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
