// A camera at an INDI server, with the filter wheel that belongs to it.
//
// Its pictures come over a connection of their own, on which nothing else is sent: a long download neither
// delays the mount's positions nor the camera's own words. The two connections aren't in step. What tells
// that a picture belongs to the exposure under way is when it comes: not before the exposure's time was over,
// nor, by the driver's clock, before it began.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "hosts/granted_binning.h"
#include "hosts/indi/blob.h"
#include "hosts/indi/device.h"
#include "hosts/indi/surroundings.h"
#include "platform/camera_hardware.h"

namespace vantrel::hosts::indi {

class Camera : public platform::CameraHardware {
  public:
    Camera(Surroundings surroundings, const std::shared_ptr<Client>& client, const std::string& name);

    std::string name() const override { return device_.name(); }
    void connect() override;
    void disconnect() override;
    bool connected() const override { return device_.ready(); }
    const platform::CameraFacts& facts() const override { return facts_; }
    /// Takes no dark frames off.
    void start(const platform::CameraOrder& order) override;
    void abort() override;
    void set(Level level, double value) override;
    void cool(std::optional<double> celsius) override;
    Progress progress() const override;
    platform::TakenPicture take() override;

  private:
    struct Exposure {
        double seconds = 0;
        Request request;
        platform::Milliseconds begun{0};     // by the loop's clock
        std::string begunThere;              // by the driver's clock, to the second; empty: not known yet
        bool over = false;                   // the driver says so
        platform::Milliseconds deadline{0};  // of the picture
        std::optional<Blob> picture;
        std::string failure;

        bool done() const { return picture || !failure.empty(); }
    };
    /// Where gain or offset stand.
    struct Place {
        const Property* property = nullptr;  // nothing: nowhere
        std::string element;
    };

    platform::Milliseconds now() const { return surroundings_.loop.clock().sinceStart(); }
    bool complete() const;
    void setUp();
    void askForPictures();
    std::string filterWheel() const;

    void readFacts();
    std::optional<double> focalLength() const;
    int greatestBin(const char* axis) const;
    std::vector<std::string> filterNames() const;
    Place placeOf(Level level) const;
    std::optional<platform::CameraLevel> readLevel(Level level) const;
    void readCooling();

    void preparePictures();
    void apply(const platform::CameraOrder& order);
    void setBinning(const platform::CameraOrder& order);
    void setFrame(const platform::CameraOrder& order);
    void setFrameType(platform::CameraOrder::Frame frame);
    void setFilter(int number);
    void ensure(const std::string& property, const NumberValues& values, const std::string& what);

    void hear(const Event& event);
    void followExposure(const Property& answer);
    void watchDeadline();
    void fail(const std::string& why);
    void tellEnd();
    void losePictures(const std::string& why);
    std::optional<std::size_t> accept(const Blob& blob) const;
    void receive(Blob blob);

    Surroundings surroundings_;
    Device device_;
    BlobReceiver blobs_;
    ServerLink pictures_;
    platform::CameraFacts facts_;
    std::optional<double> coolsTo_;  // since it was connected
    GrantedBinning binning_;
    std::optional<Exposure> exposure_;
    platform::Milliseconds asked_{0};  // for pictures
    bool taken_ = false;               // the server has taken the request for pictures
    bool lateOnePossible_ = false;     // the picture of an exposure that was given up may still come
    platform::Subscription listening_;
    std::shared_ptr<void> alive_ = std::make_shared<char>();  // for what is posted
};

}  // namespace vantrel::hosts::indi
