#include <stdexcept>

#include "page/secret.h"
#include "platform/win32_calls.h"

namespace vantrel::page {

Secret systemSecret() {
    Secret secret{};
    if (::BCryptGenRandom(nullptr, secret.data(), static_cast<ULONG>(secret.size()),
                          BCRYPT_USE_SYSTEM_PREFERRED_RNG) != 0)
        throw std::runtime_error("The system gives no random numbers");
    return secret;
}

}  // namespace vantrel::page
