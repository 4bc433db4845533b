// How probable a sum of squares is.
#pragma once

namespace vantrel::engine {

/// The probability that chi-square with so many degrees of freedom exceeds the value; 1 without freedom.
/// Abramowitz and Stegun, 26.4.4 and 26.4.5.
double chiSquareTail(double value, int degreesOfFreedom);

/// Its natural logarithm, also where the probability itself is too small for a number.
double logChiSquareTail(double value, int degreesOfFreedom);

/// The value that is exceeded with this probability, in (0, 1).
double chiSquareLimit(double probability, int degreesOfFreedom);

}  // namespace vantrel::engine
