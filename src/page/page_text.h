// What browsers get: the page itself, once, and what it shows, again and again.
#pragma once

#include <cstdint>
#include <string>

#include "platform/live_page.h"

namespace vantrel::page {

/// The whole page. `base` is its path, such as "/token"; `nonce` marks its own script and style, which are
/// the only ones that run (see policyOf).
std::string pageText(const std::string& base, const std::string& nonce);

/// The Content-Security-Policy under which the page is read.
std::string policyOf(const std::string& nonce);

/// What the page shows, as a server-sent event. `picture` counts the camera's pictures; 0: there is none.
std::string eventText(const platform::LiveView& view, std::uint64_t picture);

/// "turn west 3.2'" as "turn west" and "3.2'": what can be read from afar, and what only has to be known.
struct MoveText {
    std::string words, figures;
};
MoveText splitMove(const std::string& move);

}  // namespace vantrel::page
