// How much more than their measured errors the stars of a fit scatter: the catalogue's errors, motions that
// it doesn't know of, the air and the optics.
#pragma once

#include <cstddef>
#include <span>

namespace vantrel::solver {

struct WeighedResidual {
    double distance = 0;  ///< between star and model, pixels
    double error = 0;     ///< of the star's place along each axis, pixels
};

/// The error along each axis that, added to each star's own, makes the residuals of a model of so many
/// coefficients per coordinate as large as they ought to be. Few stars tell little, so what is expected
/// counts as well.
double excessError(std::span<const WeighedResidual> residuals, std::size_t coefficients, double expected);

}  // namespace vantrel::solver
