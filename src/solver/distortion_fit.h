// The distortion that a solved plate shows, for headers: only where the stars prove it.
#pragma once

#include <optional>
#include <span>

#include "sky/sip_distortion.h"
#include "solver/plate_field.h"
#include "solver/plate_model.h"

namespace vantrel::solver {

/// What the model adds to its linear terms about the image's centre. Empty unless the model is of a higher
/// order, several times more stars than coefficients support it and lie all over the image, for a polynomial
/// runs free beyond them, and it foretells left out stars significantly better than the linear model. `pairs`
/// are those that the model was fitted to.
std::optional<sky::SipDistortion> provenDistortion(const PlateModel& model, std::span<const StarPair> pairs,
                                                   const PlateGeometry& geometry);

}  // namespace vantrel::solver
