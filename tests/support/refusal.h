// What a use is refused with.
#pragma once

#include <string>

namespace vantrel::test {

/// The text of the error that the use throws; empty when it throws none. Other errors pass through.
template <typename Error, typename Use>
std::string refusalOf(Use&& use) {
    try {
        use();
        return "";
    } catch (const Error& error) {
        return error.what();
    }
}

}  // namespace vantrel::test
