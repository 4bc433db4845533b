#include "station/picture_cards.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <string>

#include "sky/epoch.h"

namespace vantrel::station {
namespace {

/// "05 30 00.0", "+40 15 07": hours or degrees, minutes and seconds, as many headers have them.
std::string sexagesimal(double value, bool withSign) {
    const long tenths = std::lround(std::abs(value) * 36'000);
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%s%02ld %02ld %02ld.%ld",
                  withSign ? (value < 0 ? "-" : "+") : "", tenths / 36'000, tenths / 600 % 60,
                  tenths / 10 % 60, tenths % 10);
    return text.data();
}

}  // namespace

std::vector<fits::FitsCard> picturesCards(const platform::PictureFacts& facts, platform::Instant utc) {
    std::vector<fits::FitsCard> cards;
    if (facts.position) {
        const sky::SkyPosition place = sky::SkyOfDate(utc).catalogue(
            sky::SkyPosition{facts.position->rightAscension * 15, facts.position->declination});
        cards.push_back({"RA", place.ra, "degrees, the mount's reading, J2000"});
        cards.push_back({"DEC", place.dec, "degrees, the mount's reading, J2000"});
        cards.push_back({"OBJCTRA", sexagesimal(place.ra / 15, false), "the mount's reading, J2000"});
        cards.push_back({"OBJCTDEC", sexagesimal(place.dec, true), "the mount's reading, J2000"});
        cards.push_back({"EQUINOX", 2000.0, ""});
    }
    if (facts.site) {
        cards.push_back({"SITELAT", sexagesimal(facts.site->latitude, true), "degrees north"});
        cards.push_back({"SITELONG", sexagesimal(facts.site->longitude, true), "degrees east"});
    }
    if (facts.focalLength) cards.push_back({"FOCALLEN", *facts.focalLength, "mm"});
    if (!facts.telescope.empty()) cards.push_back({"TELESCOP", facts.telescope, ""});
    cards.push_back({"SWCREATE", std::string("Vantrel"), ""});
    return cards;
}

}  // namespace vantrel::station
