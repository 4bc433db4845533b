// A camera without any device behind it: it is as the test says.
#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/camera_hardware.h"

namespace vantrel::test {

/// Writes down what it is told.
class PlainCamera : public platform::CameraHardware {
  public:
    std::string name() const override { return "Cam"; }
    void connect() override { on = true; }
    void disconnect() override { on = false; }
    bool connected() const override { return on; }
    const platform::CameraFacts& facts() const override { return camera; }
    void start(const platform::CameraOrder&) override { done.push_back("start"); }
    void abort() override {}
    Progress progress() const override { return state; }
    platform::TakenPicture take() override { return platform::FitsBytes{}; }
    void set(Level level, double value) override {
        done.push_back(levelName(level) + " " + std::to_string(static_cast<int>(value)));
        if (!refusal.empty()) throw std::runtime_error(refusal);
        (level == Level::kGain ? camera.gain : camera.offset)->value = value;
    }
    void cool(std::optional<double> celsius) override {
        done.push_back(celsius ? "cool " + std::to_string(static_cast<int>(*celsius)) : "warm up");
        if (!refusal.empty()) throw std::runtime_error(refusal);
        if (camera.cooling) camera.cooling = celsius.has_value();
        if (camera.canCool) camera.coolsTo = celsius;
    }

    bool on = false;
    platform::CameraFacts camera;
    Progress state = Progress::kIdle;
    std::string refusal;
    std::vector<std::string> done;
};

}  // namespace vantrel::test
