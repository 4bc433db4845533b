// What the window of the simulated mount does.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "observatory/panel/bright_stars.h"
#include "observatory/panel/frm_simulator.h"
#include "observatory/telescopes/noise.h"
#include "platform/automation.h"
#include "platform/event_loop.h"
#include "platform/site_angle.h"
#include "platform/timer.h"

namespace vantrel::observatory {

/// Drives the class "AxisSimulator.Telescope" by its automation members only, beside the program that uses
/// the same device. Handlers never wait. What the simulator refuses is shown in the window's last line.
class SimulatorPanel {
  public:
    /// The window works from its first showing on. The chance is what sets the axis askew.
    SimulatorPanel(platform::EventLoop& loop, platform::AutomationHost& host, NoiseSource& chance,
                   frmSimulator& window);

  private:
    /// A number of the simulator and the box that shows and changes it.
    struct Field {
        platform::TextBox& box;
        const char* member;
        const char* pattern;  // none: as many figures as the number has
        std::string shown;    // the text last put there; another one is the operator's
        std::optional<platform::SiteAxis> axis = std::nullopt;  // of an angle on the Earth
    };
    struct Switch {
        platform::CheckBox& box;
        const char* member;
    };
    /// Pointing the camera at a star by trial, as at the eyepiece.
    struct Centering {
        std::size_t star;
        int slewsLeft;
    };

    void open();
    void close();
    void refresh();
    void refreshMount();
    void refreshStars();
    void refreshField();
    void followCentering();

    void tieAdjusters();
    void tieMount();
    void put(Field& field);
    void put(const Switch& box);
    void setAskew();
    void nudge(double raStep, double decStep);
    void slewTo(double ra, double dec);
    void goToStar();
    void centerStar();
    void sync();
    void chooseStar();

    double number(const char* member) const;
    std::string textFor(const Field& field) const;
    /// Throws what to tell the operator when his text is none.
    static double numberIn(const Field& field);
    /// Runs the operator's wish and shows what came of it; what goes wrong becomes the status.
    void attempt(const std::function<void()>& wish);

    platform::EventLoop& loop_;
    platform::AutomationHost& host_;
    NoiseSource& chance_;
    frmSimulator& window_;
    platform::Timer timer_;
    platform::ObjectRef simulator_;
    std::vector<Field> fields_;
    std::vector<Switch> switches_;
    std::vector<StarNow> stars_;
    platform::Milliseconds starsDue_{0};
    std::optional<std::size_t> star_;  // in brightStars()
    std::optional<Centering> centering_;
    PlaceOfDate aim_;  // of the last slew
};

}  // namespace vantrel::observatory
