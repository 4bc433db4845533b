// A camera as a piece of hardware: what the built-in camera program drives, whether it is simulated or stands
// at a server in the network.
//
// One exposure at a time. start() begins it; from then on progress() tells how it goes until it is kReady or
// kFailed, and take() hands the picture out or says what went wrong. connect, disconnect, start, abort and
// what sets something may wait for the device; progress and the facts never do. What goes wrong is a
// std::runtime_error with a sentence for the operator.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <variant>
#include <vector>

#include "platform/image_array.h"

namespace vantrel::platform {

/// From the least to the greatest, both included.
struct CameraRange {
    double least = 0, greatest = 0;
    bool operator==(const CameraRange&) const = default;
};

/// Gain or offset as a camera has it.
struct CameraLevel {
    double value = 0;                       // as set now
    std::optional<CameraRange> range = {};  // nothing: it doesn't say
    std::vector<std::string> names = {};    // of the values from 0, where it has steps with names
    bool canSet = true;
    bool operator==(const CameraLevel&) const = default;
};

/// What a camera says of itself once it is connected. What it doesn't know is left out.
struct CameraFacts {
    std::size_t width = 0, height = 0;                       // unbinned pixels
    std::optional<double> pixelSizeX = {}, pixelSizeY = {};  // micrometres, unbinned
    std::optional<double> focalLength = {};  // millimetres, of the telescope that it looks through
    int maxBinX = 1, maxBinY = 1;
    bool binsAlike = true;                         // binX and binY have to be the same
    std::vector<std::string> filters = {};         // in the order of their numbers, from 0; empty: no wheel
    double shortest = 0, longest = 24 * 3600;      // seconds of exposure
    std::optional<double> temperature = {};        // degrees Celsius, of the sensor, as read last
    bool canCool = false;                          // to a temperature
    std::optional<CameraRange> coolingRange = {};  // degrees Celsius; nothing: it doesn't say
    std::optional<double> coolsTo = {};            // degrees Celsius, as it was told last
    std::optional<bool> cooling = {};              // whether its cooler is on; nothing: it has no switch
    std::optional<double> coolerPower = {};        // percent, as read last
    std::optional<CameraLevel> gain = {}, offset = {};  // nothing: it has none
};

/// What is asked for.
struct CameraOrder {
    enum class Frame { kLight, kDark, kBias, kFlat };
    struct Part {
        int left = 0, top = 0, width = 0, height = 0;  // binned pixels
    };

    double seconds = 1;
    Frame frame = Frame::kLight;
    int binX = 1, binY = 1;
    std::optional<Part> part = {};   // nothing: the whole sensor
    std::optional<int> filter = {};  // nothing: as it is
    bool subtractDark = false;       // take a dark frame as well, and take it off; not every camera can
};

/// A picture as the device gave it: a FITS file's bytes, or pixels with the cards that belong to them.
struct FitsBytes {
    std::vector<std::byte> bytes;
    bool tileCompressed = false;  // a ".fz" file
};
struct PictureCard {
    std::string keyword;  // as FITS has them
    std::variant<bool, std::int64_t, double, std::string> value;
    std::string comment = {};
};
struct PlainPixels {
    ImageArray image;
    std::vector<PictureCard> cards;
};
using TakenPicture = std::variant<FitsBytes, PlainPixels>;

class CameraHardware {
  public:
    virtual ~CameraHardware() = default;

    virtual std::string name() const = 0;

    virtual void connect() = 0;
    virtual void disconnect() = 0;
    virtual bool connected() const = 0;

    /// Valid while it is connected.
    virtual const CameraFacts& facts() const = 0;

    /// Begins an exposure; one that is under way is given up.
    virtual void start(const CameraOrder& order) = 0;
    /// Gives the exposure up; nothing when there is none.
    virtual void abort() = 0;

    enum class Progress { kIdle, kExposing, kDownloading, kReady, kFailed };
    virtual Progress progress() const = 0;
    /// Called by hardware that knows the moment at which an exposure is over; others are looked at.
    std::function<void()> onProgress;

    /// Sets the gain or the offset.
    enum class Level { kGain, kOffset };
    virtual void set(Level level, double /*value*/) {
        throw std::runtime_error(name() + " has no " + levelName(level) + " that can be set");
    }
    static std::string levelName(Level level) { return level == Level::kGain ? "gain" : "offset"; }

    /// Keeps the sensor at so many degrees Celsius, or as cold as it gets where the cooler can only be
    /// switched; nothing: lets it warm up again.
    virtual void cool(std::optional<double> /*celsius*/) {
        throw std::runtime_error(name() + " can't be cooled.");
    }

    /// The picture of the exposure that is kReady; throws what a kFailed one failed with. Then the camera is
    /// idle.
    virtual TakenPicture take() = 0;
};

}  // namespace vantrel::platform
