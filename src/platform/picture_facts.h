// What the program knows of a picture beside what its camera knows.
#pragma once

#include <optional>
#include <string>

namespace vantrel::platform {

struct PictureFacts {
    struct Position {
        double rightAscension = 0;  // hours, equinox of date
        double declination = 0;     // degrees
    };
    struct Site {
        double latitude = 0;   // degrees
        double longitude = 0;  // degrees, east positive
    };

    std::string telescope;  // empty: none is connected
    std::optional<Position> position;
    std::optional<Site> site;
    std::optional<double> focalLength;  // millimetres
};

}  // namespace vantrel::platform
