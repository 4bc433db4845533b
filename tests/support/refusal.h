// What a use is refused with.
#pragma once

#include <string>

#include "platform/errors.h"

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

/// The number of the failure that the use ends with; 0 when it succeeds.
template <typename Use>
int failureOf(Use&& use) {
    try {
        use();
        return 0;
    } catch (const platform::OperationError& error) {
        return error.number();
    }
}

}  // namespace vantrel::test
