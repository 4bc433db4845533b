#include <stdexcept>

#include <sys/random.h>

#include "page/secret.h"

namespace vantrel::page {

Secret systemSecret() {
    Secret secret{};
    if (::getrandom(secret.data(), secret.size(), 0) != static_cast<ssize_t>(secret.size()))
        throw std::runtime_error("The system gives no random numbers");
    return secret;
}

}  // namespace vantrel::page
