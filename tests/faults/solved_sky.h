// Plate solvers that know where the mount points: the fault table is about what happens around a solution,
// so none has to be found.
#pragma once

#include <cmath>
#include <memory>
#include <string>
#include <utility>

#include "platform/class_registry.h"
#include "platform/text.h"
#include "support/willing_object.h"

namespace vantrel::faults {

/// Where a camera on an axis half a degree above the pole looks: hours and degrees.
inline std::pair<double, double> truePosition(platform::AutomationObject& mount) {
    constexpr double kPi = 3.14159265358979;
    constexpr double kTilt = 0.5 * kPi / 180;
    const double lst = mount.get("SiderealTime").toDouble();
    const double hourAngle = (lst - mount.get("RightAscension").toDouble()) * kPi / 12;
    const double dec = mount.get("Declination").toDouble() * kPi / 180;
    const double x = std::cos(dec) * std::cos(hourAngle);
    const double y = std::cos(dec) * std::sin(hourAngle);
    const double z = std::sin(dec);
    const double tiltedX = x * std::cos(kTilt) + z * std::sin(kTilt);
    const double tiltedZ = z * std::cos(kTilt) - x * std::sin(kTilt);
    const double ra = std::fmod(lst - std::atan2(y, tiltedX) * 12 / kPi + 48, 24);
    return {ra, std::asin(tiltedZ) * 180 / kPi};
}

class KnowingPlate : public test::WillingObject {
  public:
    explicit KnowingPlate(platform::ObjectRef mount)
        : WillingObject("PinPoint.Plate",
                        {{"WCSValid", false},
                         {"Columns", 32},
                         {"Rows", 32},
                         {"ImageStars", stars()},
                         {"CatalogStars", stars()},
                         {"MatchedStars", stars()}},
                        1.0),
          mount_(std::move(mount)) {}

    platform::Value call(const std::string& member, const platform::Arguments& /*arguments*/) override {
        if (platform::equalIgnoringCase(member, "Solve")) {
            const auto [ra, dec] = truePosition(*mount_);
            tell("RightAscension", ra);
            tell("Declination", dec);
        }
        return true;
    }

  private:
    static platform::ObjectRef stars() {
        return std::make_shared<test::WillingObject>("PinPoint.Stars", Values{}, 20);
    }

    platform::ObjectRef mount_;
};

/// The image of CCDSoft, with a link that knows.
class KnowingImage : public platform::AutomationObject {
  public:
    KnowingImage(platform::ObjectRef inner, platform::ObjectRef mount)
        : inner_(std::move(inner)), mount_(std::move(mount)) {}

    std::string className() const override { return inner_->className(); }
    platform::Value get(const std::string& member, const platform::Arguments& arguments) override {
        if (!platform::equalIgnoringCase(member, "FITSKeyword")) return inner_->get(member, arguments);
        const auto [ra, dec] = truePosition(*mount_);
        const std::string keyword = arguments.at(0).toText();
        if (keyword == "CRVAL1") return ra * 15;
        if (keyword == "CRVAL2") return dec;
        return keyword == "CD1_1" || keyword == "CD2_2" ? 0.001 : 0.0;
    }
    void put(const std::string& member, const platform::Value& value,
             const platform::Arguments& arguments) override {
        inner_->put(member, value, arguments);
    }
    platform::Value call(const std::string& member, const platform::Arguments& arguments) override {
        if (platform::equalIgnoringCase(member, "InsertWCS")) return true;
        return inner_->call(member, arguments);
    }

  private:
    platform::ObjectRef inner_;
    platform::ObjectRef mount_;
};

}  // namespace vantrel::faults
