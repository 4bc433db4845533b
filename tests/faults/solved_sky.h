// Plate solvers that know where the mount points: the fault table is about what happens around a solution,
// so none has to be found.
#pragma once

#include <cmath>
#include <map>
#include <string>
#include <utility>

#include "platform/class_registry.h"
#include "platform/text.h"

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

/// An object with a count.
class Collection : public platform::AutomationObject {
  public:
    std::string className() const override { return "PinPoint.Stars"; }
    platform::Value get(const std::string&, const platform::Arguments&) override { return 20; }
    void put(const std::string&, const platform::Value&, const platform::Arguments&) override {}
    platform::Value call(const std::string&, const platform::Arguments&) override { return true; }
};

class KnowingPlate : public platform::AutomationObject {
  public:
    explicit KnowingPlate(platform::ObjectRef mount) : mount_(std::move(mount)) {}

    std::string className() const override { return "PinPoint.Plate"; }
    platform::Value get(const std::string& member, const platform::Arguments&) override {
        using platform::equalIgnoringCase;
        if (equalIgnoringCase(member, "WCSValid")) return false;
        for (const char* collection : {"ImageStars", "CatalogStars", "MatchedStars"})
            if (equalIgnoringCase(member, collection))
                return platform::ObjectRef(std::make_shared<Collection>());
        if (equalIgnoringCase(member, "Columns") || equalIgnoringCase(member, "Rows")) return 32;
        const auto found = values_.find(platform::toLower(member));
        return found == values_.end() ? platform::Value(1.0) : found->second;
    }
    void put(const std::string& member, const platform::Value& value, const platform::Arguments&) override {
        values_[platform::toLower(member)] = value;
    }
    platform::Value call(const std::string& member, const platform::Arguments&) override {
        if (platform::equalIgnoringCase(member, "Solve")) {
            const auto [ra, dec] = truePosition(*mount_);
            values_["rightascension"] = ra;
            values_["declination"] = dec;
        }
        return true;
    }

  private:
    platform::ObjectRef mount_;
    std::map<std::string, platform::Value> values_;
};

/// The image of the second program, with a link that knows.
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
