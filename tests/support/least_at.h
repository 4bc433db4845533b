// Where a quantity is least.
#pragma once

namespace vantrel::test {

/// The place near `start` where a function without other hollows is least, within a thousandth of its unit.
template <typename Function>
double leastAt(double start, Function&& function) {
    double at = start;
    for (double step = 100; step > 1e-3; step /= 2)
        while (true) {
            const double here = function(at);
            if (function(at + step) < here)
                at += step;
            else if (function(at - step) < here)
                at -= step;
            else
                break;
        }
    return at;
}

}  // namespace vantrel::test
