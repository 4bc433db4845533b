// A camera at an Alpaca server.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "hosts/alpaca/device_link.h"
#include "hosts/alpaca/exposure.h"
#include "hosts/alpaca/filter_wheel.h"
#include "hosts/granted_binning.h"
#include "platform/camera_hardware.h"

namespace vantrel::hosts::alpaca {

/// Functions that wait let other handlers run; the object must not go while one waits.
class Camera : public platform::CameraHardware {
  public:
    using Moved = std::function<void(const DeviceRecord&)>;
    /// The filter wheel at a server, if it has one. May wait.
    using WheelSearch = std::function<std::optional<DeviceRecord>(const ServerAddress&)>;

    Camera(const Surroundings& surroundings, const DeviceRecord& device, Moved moved,
           WheelSearch findWheel = {});

    std::string name() const override { return link_.name(); }
    void connect() override;
    void disconnect() override;
    bool connected() const override { return link_.connected(); }
    const platform::CameraFacts& facts() const override { return facts_; }

    void start(const platform::CameraOrder& order) override;
    void abort() override;
    Progress progress() const override;
    platform::TakenPicture take() override;

    void set(Level level, double value) override;
    void cool(std::optional<double> celsius) override;

  private:
    void readFacts();
    void readBinning();
    std::optional<platform::CameraLevel> readLevel(Level level);
    void readCooling();
    void connectWheel();
    std::string bayerPattern();
    std::optional<Json> member(const std::string& name);
    std::optional<double> number(const std::string& name);
    bool flag(const std::string& name);
    std::size_t sensorLength(const std::string& name);

    void requireSensible(const platform::CameraOrder& order) const;
    void setUp();
    void setBinning(const platform::CameraOrder& order);
    void put(const char* member, const char* parameter, int value);
    void begin(const platform::CameraOrder& order);
    void stop();
    void measure(std::size_t reading);
    platform::PlainPixels picture(const Exposure& exposure) const;

    const Surroundings& surroundings_;
    Moved moved_;
    WheelSearch findWheel_;
    DeviceLink link_;
    std::unique_ptr<FilterWheel> wheel_;  // once connected

    platform::CameraFacts facts_;
    bool canAbort_ = false;
    bool canStop_ = false;
    std::string bayerPattern_;  // of a colour camera: "RGGB"

    platform::CameraOrder order_;
    GrantedBinning binning_;
    std::unique_ptr<Exposure> exposure_;

    HttpExchange measuring_;
    platform::TimerHandle thermometer_;
};

}  // namespace vantrel::hosts::alpaca
