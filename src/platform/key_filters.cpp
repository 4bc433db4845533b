#include "platform/key_filters.h"

namespace vantrel::platform {

int wholeNumberKey(int code) {
    constexpr int kBackspace = 8;
    constexpr int kEnter = 13;
    const bool accepted = code == kBackspace || code == kEnter || code == '#' || (code >= '0' && code <= '9');
    return accepted ? code : 0;
}

int decimalNumberKey(int code) { return code == '.' || code == ',' ? '.' : wholeNumberKey(code); }

}  // namespace vantrel::platform
