// What the engine needs from the rest of the program. Hours for right ascension and sidereal time, degrees
// for declination and latitude, seconds for times. Unless said otherwise, nothing here throws: each service
// reports its own failures to the operator.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "engine/axis/axis_check.h"
#include "engine/axis/plate.h"
#include "engine/sky_geometry.h"
#include "platform/pixel_position.h"

namespace vantrel::engine {

class SettingsPort {
  public:
    virtual ~SettingsPort() = default;
    /// The stored text, or the default when the section or the key is missing.
    virtual std::string GetSetting(const std::string& section, const std::string& key,
                                   const std::string& defaultText) = 0;
    virtual void SaveSetting(const std::string& section, const std::string& key,
                             const std::string& value) = 0;
    /// Section "Main"; stores the default first when the value is missing or empty.
    virtual std::string GetMainSetting(const std::string& key, const std::string& defaultText) = 0;
    virtual void SaveMainSetting(const std::string& key, const std::string& value) = 0;
};

class LogPort {
  public:
    virtual ~LogPort() = default;
    virtual void AddToLog(const std::string& text) = 0;
};

class MessagePort {
  public:
    virtual ~MessagePort() = default;
    virtual void ShowPopupMessage(const std::string& text, double seconds) = 0;
    /// Closes the pop-up that is open; with a text only if it shows exactly that.
    virtual void ClosePopupMessage(const std::optional<std::string>& ifItShows = std::nullopt) = 0;
    /// How long the operator wants device messages to stay, in seconds.
    virtual double displaySeconds() const = 0;
};

class TelescopePort {
  public:
    virtual ~TelescopePort() = default;
    virtual double GetTelescopeRA() = 0;   // hours in [0, 24)
    virtual double GetTelescopeDec() = 0;  // degrees
    /// Where the mount says that it points; nothing when none is connected or it doesn't tell. Reports
    /// nothing.
    virtual std::optional<EquatorialPosition> readingIfKnown() { return std::nullopt; }
    /// Returns when the mount has stopped.
    virtual void SlewToCoordinates(double ra, double dec) = 0;
    virtual double SiderealTime() = 0;   // local, hours
    virtual double SiteLatitude() = 0;   // degrees, north positive
    virtual double SiteLongitude() = 0;  // degrees, east positive
    /// Metres above the sea; nothing when no real mount tells. Reports nothing.
    virtual std::optional<double> siteHeightIfKnown() { return std::nullopt; }
    /// Whether what its camera sees is refracted by the air, as everywhere but in a simulator without.
    virtual bool looksThroughAir() { return true; }
    virtual void AbortTelescopeSlew() = 0;
    /// The simulator's own camera: takes an image; throws OperationError.
    virtual void simulatorExpose() = 0;
    /// Writes that image as FITS; a full path with drive letter and backslashes; throws OperationError.
    virtual void simulatorSaveImage(const std::string& path) = 0;
};

class CameraPort {
  public:
    virtual ~CameraPort() = default;
    /// One exposure with the imaging program, which keeps the image open. Sets CameraFailed.
    virtual void AcquireImage(double seconds) = 0;
    /// Saves the open image in the image folder.
    virtual void SaveImageToFile(const std::string& fileName) = 0;
};

/// Where an image points, equinox of date, and how its pixels lie on the sky.
struct PlateSolution {
    double ra = 0;   // hours, image centre
    double dec = 0;  // degrees
    // Degrees per pixel: columns of the matrix belong to pixel column and row, rows to right ascension and
    // declination.
    double CD1_1 = 0, CD1_2 = 0, CD2_1 = 0, CD2_2 = 0;
    /// Where the solver tells.
    std::optional<SolutionQuality> quality{};
    /// Where the solver fits its own errors.
    std::optional<SolutionErrors> errors{};
};

class PlateSolverPort {
  public:
    virtual ~PlateSolverPort() = default;
    /// Solves the saved image, starting from the exposure position plus the offsets (hours, degrees). Sets
    /// PlateSolved and, on success, PlateRAError and PlateDecError. Errors of the image link before it starts
    /// leave as OperationError.
    virtual std::optional<PlateSolution> SolvePlate(const std::string& imageName, double raOffset,
                                                    double decOffset) = 0;
    virtual bool pinPointSelected() const = 0;
    virtual std::string selectedCatalog() const = 0;
};

/// The utility object's sexagesimal texts; throws OperationError when the object fails.
class UtilityPort {
  public:
    virtual ~UtilityPort() = default;
    virtual std::string HoursToHMS(double hours) = 0;
    virtual std::string DegreesToDMS(double degrees) = 0;
    virtual std::string DegreesToHMS(double degrees) = 0;
    virtual std::string HoursToHMS(double hours, const std::string& hourMark,
                                   const std::string& minuteMark) = 0;
    virtual std::string DegreesToDMS(double degrees, const std::string& degreeMark,
                                     const std::string& minuteMark, const std::string& secondMark) = 0;
    virtual std::string HoursToHMS(double hours, int decimals) = 0;
    virtual std::string DegreesToDMS(double degrees, int decimals) = 0;
    virtual double DMSToDegrees(const std::string& text) = 0;
    virtual void WaitForMilliseconds(int milliseconds) = 0;
};

/// One value a plate, in the order of the plates.
using PerPlate = std::vector<double>;

class ResultDisplayPort {
  public:
    virtual ~ResultDisplayPort() = default;
    /// Takes the last measurement's plot away.
    virtual void clearPolarPlot() = 0;
    virtual void showOffsets(const std::string& offsetRA, const std::string& offsetDec) = 0;
    virtual void showBadSolution() = 0;
    /// How good the result is that PlotPolar shows next: the estimate's, or the written calculation's.
    virtual void showCheck(const AxisCheck& check, const Site& site, bool leastSquares) = 0;
    /// Degrees from the pole and degrees counter-clockwise from "up".
    virtual void PlotPolar(double ErrorAmplitude, double ErrorAngle) = 0;
    /// Hours and degrees.
    virtual void PlotError(const PerPlate& plateRAs, const PerPlate& decErrors) = 0;
};

using platform::PixelPosition;

/// Marks burnt into the image that the imaging program shows. Failures are logged; the image is then
/// unchanged.
class OverlayPort {
  public:
    virtual ~OverlayPort() = default;
    /// A horizontal and a vertical band across the whole image; through its centre without a position.
    virtual void CrossHair(const std::optional<PixelPosition>& centre) = 0;
    /// The outline of a centred rectangle of this fraction of width and height. Returns the fraction that was
    /// drawn: the given one, held in [0, 1].
    virtual double DrawCenteredRectangles(double fraction) = 0;
    virtual void DrawLineOnImage(int x1, int y1, int x2, int y2) = 0;
};

class CorrectionPort {
  public:
    virtual ~CorrectionPort() = default;
    /// Guides the operator through the correction of this error (degrees).
    virtual void CorrectMisAlignment(double ErrorAmplitude, double ErrorAngle) = 0;
};

}  // namespace vantrel::engine
