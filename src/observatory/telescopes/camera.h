// A camera on a simulated mount: turns where the mount truly points into pictures of the real sky.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "fits/fits_header.h"
#include "imaging/picture.h"
#include "observatory/telescopes/mount.h"
#include "observatory/telescopes/noise.h"
#include "observatory/telescopes/renderer.h"
#include "platform/automation.h"
#include "platform/clock.h"
#include "sky/epoch.h"
#include "sky/focal_plane.h"
#include "sky/refraction.h"
#include "sky/star_catalog.h"

namespace vantrel::observatory {

/// A refractor of 80 mm with a cooled sensor: 3.6" per pixel, 1.39 by 1.04 degrees. A star of magnitude 10
/// gives 20,000 electrons a second.
struct CameraSettings {
    double focalLength = 370;  // mm
    double pixelSize = 6.45;   // micrometres
    double width = 1392;       // pixels
    double height = 1040;
    double rotation = 0;  // degrees, see CameraMounting
    bool mirrored = false;
    double seeing = 3;              // arcsec, full width at half maximum
    double imageMotion = 0;         // arcsec, see movedByAir()
    double skyLevel = 30;           // electrons per second and pixel
    double limitingMagnitude = 25;  // fainter stars are not drawn
    double hotPixels = 0;           // a count, or below 1 the share of all pixels
    bool refraction = false;        // by the air
    sky::AirState air;
    double exposureTime = 1;  // seconds
    double readNoise = 8;     // electrons
    double gain = 1;          // electrons per count
    double bias = 100;        // counts
};

/// How one picture is taken.
struct Shot {
    double seconds = 1;
    bool light = true;                      // false: the shutter stays closed
    double transmission = 1;                // of the filter, 0 to 1
    std::optional<ReadWindow> window = {};  // inside the sensor; nothing: all of it, unbinned
};

/// An exposed picture that is still to be drawn, which takes its time.
using LatentPicture = std::function<imaging::Picture()>;

class Camera {
  public:
    Camera(const Mount& mount, NoiseSource& noise, sky::CatalogSource catalog);

    CameraSettings& settings() { return settings_; }
    const CameraSettings& settings() const { return settings_; }

    /// What an exposure that begins at the instant, which should be now, records. The mount tracks well
    /// enough for round stars. What is given holds all that it needs, and may be developed in any thread.
    LatentPicture expose(platform::Instant start, const std::string& telescope, const Shot& shot);
    /// The same of the whole sensor, with the settings' exposure time.
    LatentPicture expose(platform::Instant start, const std::string& telescope) {
        return expose(start, telescope, {.seconds = settings_.exposureTime});
    }

    /// Where the stars of the catalogue fall on the sensor at the instant, and their light in the settings'
    /// exposure time.
    std::vector<StarSpot> starsInView(platform::Instant instant);

    /// Where the optical axis truly points: hour angle and declination, apparent of date. With refraction on,
    /// where it points through the air, which is higher than what it sees.
    HaDec axis() const { return haDecOf(mount_.pointing().ahead); }

  private:
    sky::FocalPlane focalPlane(const TubeAttitude& pointing) const;
    SensorExposure exposure(const Shot& shot) const;
    /// The whole picture moved by the air: imageMotion is what is left of it in a second along each axis of
    /// the sensor, one sigma; it averages out with the root of the time.
    std::vector<StarSpot> movedByAir(std::vector<StarSpot> stars, double seconds);
    std::vector<StarSpot> starsOf(const Shot& shot, platform::Instant start);
    std::vector<fits::FitsCard> header(platform::Instant start, const std::string& telescope,
                                       const Shot& shot) const;

    const Mount& mount_;
    NoiseSource& noise_;
    sky::CatalogSource openCatalog_;
    std::shared_ptr<const sky::StarCatalog> catalog_;
    CameraSettings settings_;
};

}  // namespace vantrel::observatory
