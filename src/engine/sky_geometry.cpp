#include "engine/sky_geometry.h"

#include <algorithm>
#include <cmath>

#include "engine/angles.h"

namespace vantrel::engine {
namespace {

Matrix withColumn(Matrix rows, std::size_t column, const Row& values) {
    for (std::size_t i = 0; i < rows.size(); ++i) rows[i][column] = values[i];
    return rows;
}

/// Minus the colatitude, in radians: the rotation about the east-west axis between equator and horizon.
double tiltOfHorizon(double Latitude) { return degreesToRadians(Latitude) - kPi / 2; }

}  // namespace

DirectionCosines GetDirectionCosines(double ha, double Dec) {
    const double cosDec = std::cos(degreesToRadians(Dec));
    return {std::cos(-hoursToRadians(ha)) * cosDec, std::sin(-hoursToRadians(ha)) * cosDec,
            std::sin(degreesToRadians(Dec))};
}

/// By the half chord, which is exact for small angles as well.
double separation(const HourAnglePosition& a, const HourAnglePosition& b) {
    const DirectionCosines p = GetDirectionCosines(a.ha, a.Dec), q = GetDirectionCosines(b.ha, b.Dec);
    const double chord = std::hypot(p.l - q.l, p.m - q.m, p.N - q.N);
    return radiansToDegrees(2 * std::asin(std::min(1.0, chord / 2)));
}

double Determinant(const Matrix& rows) {
    const auto& [r1, r2, r3] = rows;
    return r1[0] * r2[1] * r3[2] + r1[1] * r2[2] * r3[0] + r1[2] * r2[0] * r3[1] - r1[2] * r2[1] * r3[0] -
           r1[0] * r2[2] * r3[1] - r1[1] * r2[0] * r3[2];
}

Row Solve3Equations(const Matrix& rows, const Row& rightHandSide) {
    const double determinant = Determinant(rows);
    if (determinant == 0) return {0, 0, 0};
    Row solution{};
    for (std::size_t column = 0; column < solution.size(); ++column)
        solution[column] = Determinant(withColumn(rows, column, rightHandSide)) / determinant;
    return solution;
}

HorizonPosition EquatorialToAltAz(double ha, double Dec, double Latitude) {
    const auto [l, m, N] = GetDirectionCosines(ha, Dec);
    const double tilt = tiltOfHorizon(Latitude);
    const double x = std::cos(tilt) * l + std::sin(tilt) * N;
    const double z = -std::sin(tilt) * l + std::cos(tilt) * N;
    double Az = -radiansToDegrees(ArcTan2(m, x));
    if (m == 0) Az = 180;
    if (Az < 0) Az += 360;
    return {radiansToDegrees(ArcSin(z)), Az};
}

HourAnglePosition AltAzToEquatorial(double Alt, double Az, double Latitude) {
    const auto [l, m, N] = GetDirectionCosines(Az / 15, Alt);
    const double tilt = tiltOfHorizon(Latitude);
    const double x = std::cos(tilt) * l - std::sin(tilt) * N;
    const double z = std::sin(tilt) * l + std::cos(tilt) * N;
    return {signedHours(-radiansToHours(ArcTan2(m, x))), radiansToDegrees(ArcSin(z))};
}

EquatorialPosition TransformCoordinatesFromSkyToScope(double SkyRA, double SkyDec, double LocalSiderealTime,
                                                      double ErrorAmplitude, double ErrorAngle) {
    // Here y is +sin(hour angle), west positive, unlike in the direction cosines.
    const double H = hoursToRadians(LocalSiderealTime - SkyRA);
    const double dec = degreesToRadians(SkyDec);
    const double x = std::cos(H) * std::cos(dec);
    const double y = std::sin(H) * std::cos(dec);
    const double z = std::sin(dec);

    const double amplitude = degreesToRadians(std::abs(ErrorAmplitude));
    const double angle = degreesToRadians(ErrorAngle);
    const double gamma = ArcSin(std::sin(amplitude) * std::cos(angle));
    const double theta = ArcTan2(-std::sin(amplitude) * std::sin(-angle), std::cos(amplitude));

    // About the x axis by theta, then about the y axis by gamma.
    const double turnedX =
        std::sin(theta) * y * std::sin(gamma) + std::cos(gamma) * x - std::cos(theta) * z * std::sin(gamma);
    const double turnedY = std::sin(theta) * z + std::cos(theta) * y;
    const double turnedZ =
        std::sin(gamma) * x - std::sin(theta) * y * std::cos(gamma) + std::cos(theta) * z * std::cos(gamma);

    const double hourAngle = radiansToHours(ArcTan2(turnedY, turnedX));
    return {NormalizeRAHours(LocalSiderealTime - hourAngle), radiansToDegrees(ArcSin(turnedZ))};
}

}  // namespace vantrel::engine
