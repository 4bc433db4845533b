#include "engine/polar_error.h"

#include <cmath>

#include "engine/angles.h"
#include "engine/sky_geometry.h"
#include "platform/errors.h"

namespace vantrel::engine {
namespace {

Row toRow(const DirectionCosines& direction) { return {direction.l, direction.m, direction.N}; }

double squareRoot(double x) {
    if (x < 0) throw platform::runTimeError(platform::error_number::kInvalidProcedureCall);
    return std::sqrt(x);
}

/// The pole in mount coordinates, from mount positions at these hour angles and this declination.
Row poleInMountCoordinates(const Row& hourAngles, double declination, const Row& sinesOfPlates) {
    Matrix mount{};
    for (std::size_t i = 0; i < mount.size(); ++i)
        mount[i] = toRow(GetDirectionCosines(hourAngles[i], declination));
    Row pole = Solve3Equations(mount, sinesOfPlates);
    constexpr double kOnTheEquator = 1e-5;                   // the sine of two arc-seconds
    if (std::abs(mount[0][2]) < kOnTheEquator) pole[2] = 1;  // the system is singular there
    return pole;
}

}  // namespace

PolarErrorResult CalcPolarError(const std::array<PlatePosition, 3>& plates, double ScopeDec) {
    PolarErrorResult result;
    Matrix mount{};
    Row firstCosines{};   // of the plates, along the meridian
    Row sinesOfPlates{};  // of their declinations
    for (std::size_t i = 0; i < plates.size(); ++i) {
        const DirectionCosines sky = GetDirectionCosines(plates[i].HA, plates[i].Dec);
        firstCosines[i] = sky.l;
        sinesOfPlates[i] = sky.N;
        mount[i] = toRow(GetDirectionCosines(plates[i].ScopeHA, ScopeDec));
    }

    // The first row of the rotation from mount to sky tells how far the mount's hour angles are off.
    const Row firstRow = Solve3Equations(mount, firstCosines);
    result.error.OffsetRA = signedHours(radiansToHours(ArcTan2(-firstRow[1], firstRow[0])));

    // The sine of the declination along a circle about the axis: A cos H + B sin H + C.
    Row hourAngles{};
    Matrix circle{};
    for (std::size_t i = 0; i < plates.size(); ++i) {
        hourAngles[i] = NormalizeRAHours(plates[i].ScopeHA - result.error.OffsetRA);
        const double sine = std::sin(hoursToRadians(hourAngles[i]));
        circle[i] = {squareRoot(1 - sine * sine), sine, 1};
    }
    const auto [A, B, C] = Solve3Equations(circle, sinesOfPlates);
    const double excess = A * A + B * B - C * C - 1;
    const double discriminant = excess * excess - 4 * C * C;
    if (std::abs(A) > 1 || std::abs(B) > 1 || std::abs(C) > 1 || discriminant < 0) {
        result.BadSolution = true;
        return result;
    }

    // The mount's true declination is the smaller root of s² + excess·s + C² = 0 for s = sin²: the third row
    // of the rotation is a unit vector. Its sign is the hemisphere.
    double declination = radiansToDegrees(ArcSin(squareRoot((-excess - squareRoot(discriminant)) / 2)));
    Row pole = poleInMountCoordinates(hourAngles, declination, sinesOfPlates);
    if (pole[2] < 0) {
        declination = -declination;
        pole = poleInMountCoordinates(hourAngles, declination, sinesOfPlates);
    }
    result.error.OffsetDec = ScopeDec - declination;

    result.A = pole[0];
    result.C = pole[2];
    result.Theta = ArcTan2(-pole[0], pole[2]);
    result.Gamma = ArcSin(pole[1]);
    const double sinGamma = std::sin(result.Gamma);
    const double cosTheta = std::cos(result.Theta);
    result.error.ErrorAmplitude = radiansToDegrees(ArcCos(std::cos(result.Gamma) * cosTheta));
    result.error.ErrorAngle = radiansToDegrees(ArcTan2(-sinGamma * cosTheta, std::sin(result.Theta)));
    return result;
}

}  // namespace vantrel::engine
