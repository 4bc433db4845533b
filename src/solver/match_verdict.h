// Whether a match of stars could be chance.
#pragma once

#include <cstddef>
#include <span>

namespace vantrel::solver {

/// One catalogue star that the model puts inside the image. Stars come brightest first.
struct PredictedStar {
    int imageRank =
        -1;  ///< place of the image star it fell on among the image's stars, brightest 0; -1 for none
};

/// The decimal logarithm of the probability that stars strewn at random would fall on this many image stars.
///
/// tolerance is the radius in pixels of what counts as "on"; area the image's in square pixels. Each of the
/// brightest 10, 20, 40 ... image stars against as many (and twice, and four times as many) catalogue stars
/// is held against the binomial law, the most telling one counts, and having chosen it is paid for. Three
/// matches are left out of the count: they made the hypothesis.
double chanceLog10(std::span<const PredictedStar> predicted, std::size_t imageStars, double tolerance,
                   double area);

}  // namespace vantrel::solver
