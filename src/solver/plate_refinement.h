// From a first idea of where a plate points to a fitted plate model.
#pragma once

#include <optional>
#include <vector>

#include "solver/plate_field.h"
#include "solver/plate_model.h"

namespace vantrel::solver {

struct RefinementSettings {
    std::size_t imageStars = 300;  ///< of the brightest that take part
    double firstTolerance = 4;     ///< pixels
    sky::PixelPosition anchor;     ///< where the first idea is best
    double anchorRadius = 1e9;     ///< pixels around it that it holds for
    int highestOrder = 3;
    double maximumResidualArcsec = 0;  ///< farther stars are dropped; 0 leaves it to the fit
    bool weighted = false;             ///< stars count by the errors of their places
};

struct RefinedPlate {
    PlateModel model;
    std::size_t matched = 0;
    double rmsPixels = 0;
    double meanResidualArcsec = 0;
    double chanceLog10 = 0;   ///< see match_verdict.h
    double explained = 0;     ///< matched stars as a share of those that could be: of the image's, or of the
                              ///< catalogue's within it where these are fewer
    PlateErrors errors = {};  ///< when stars were weighted

    struct Pair {
        std::size_t image = 0, catalogue = 0;  ///< indices of the field's stars
        double weight = 1;                     ///< in the fit
    };
    std::vector<Pair> pairs = {};
};

/// Matches, fits, widens and repeats; empty when fewer than four stars hold together.
std::optional<RefinedPlate> refinePlate(const PlateField& field, const PlateModel& first,
                                        const RefinementSettings& settings);

}  // namespace vantrel::solver
