#include "correction/bolt_sense.h"

#include <cmath>

namespace vantrel::correction {

bool BoltSense::wrong(const Look& look) {
    constexpr double kSigmas = 4;
    constexpr int kInARow = 2;
    if (!look.still) return false;
    const auto before = before_;
    before_ = look;
    if (!before) return false;
    const double turned = look.left - before->left;
    const bool mine = std::abs(turned) > 3 * std::abs(look.other - before->other);
    if (!mine || !before->told || std::abs(turned) < kSigmas * std::hypot(before->sigma, look.sigma))
        return false;
    if (std::abs(before->left) < kSigmas * before->sigma) return false;  // there was no way to speak of
    const bool away = turned * before->left > 0;
    wrongTurns_ = away ? wrongTurns_ + 1 : 0;
    if (wrongTurns_ < kInARow) return false;
    forget();
    return true;
}

}  // namespace vantrel::correction
