// A camera as the operator wants it set: gain, offset and cooling follow his wishes when it is connected,
// when the wishes change, and before an exposure where something has changed them meanwhile. A wish that
// can't be fulfilled is told and costs neither the connection nor the exposure.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>

#include "platform/camera_hardware.h"

namespace vantrel::hosts {

/// Texts as they were typed.
struct CameraWishes {
    std::string gain = {}, offset = {};  // a number or the name of a step; empty: as the camera has it
    bool cool = false;  // false: its cooler is left alone, unless these wishes had switched it on
    std::string celsius = {};
};

class AdjustedCamera : public platform::CameraHardware {
  public:
    AdjustedCamera(std::shared_ptr<platform::CameraHardware> camera, std::function<CameraWishes()> wishes,
                   std::function<void(const std::string& line)> tell);
    ~AdjustedCamera() override;

    std::string name() const override { return camera_->name(); }
    void connect() override;
    void disconnect() override { camera_->disconnect(); }
    bool connected() const override { return camera_->connected(); }
    const platform::CameraFacts& facts() const override { return camera_->facts(); }
    void start(const platform::CameraOrder& order) override;
    void abort() override { camera_->abort(); }
    Progress progress() const override { return camera_->progress(); }
    platform::TakenPicture take() override { return camera_->take(); }
    void set(Level level, double value) override { camera_->set(level, value); }
    void cool(std::optional<double> celsius) override { camera_->cool(celsius); }

    /// The wishes have changed: they are followed at once. Gain and offset of an exposure under way stay; the
    /// next one has the new ones. May wait; never throws.
    void adjust();

  private:
    void adjustLevels(const CameraWishes& wishes);
    void adjustLevel(Level level, const std::string& wish);
    void adjustCooling(const CameraWishes& wishes);
    void attempt(const std::string& what, const std::function<void()>& action);

    std::shared_ptr<platform::CameraHardware> camera_;
    std::function<CameraWishes()> wishes_;
    std::function<void(const std::string& line)> tell_;
    bool cools_ = false;          // by these wishes
    std::set<std::string> told_;  // since the wishes changed: once is enough
};

}  // namespace vantrel::hosts
