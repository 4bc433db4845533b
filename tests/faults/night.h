// One night with the whole program in which something outside goes wrong, in virtual time.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/application.h"
#include "faults/faulty_host.h"
#include "observatory/observatory.h"
#include "platform/class_registry.h"
#include "platform/outside_call.h"
#include "support/recording_dialogs.h"
#include "support/temp_folder.h"

namespace vantrel::faults {

/// Which instruments are used.
struct Equipment {
    const char* name;
    const char* mount;
    const char* imaging;
    const char* method;  // 0: PinPoint, 1: image link
};

inline constexpr Equipment kSetUps[] = {
    {"simulator", "AxisSimulator.Telescope", "MaxIm", "0"},
    {"first program", "ScopeSim.Telescope", "MaxIm", "0"},
    {"second program", "ScopeSim.Telescope", "CCDSoft", "1"},
    {"built-in program", "ScopeSim.Telescope", "BuiltIn", "0"},
};

/// What the operator is at when the fault comes.
enum class Activity { kStart, kMeasurement, kSeries, kCorrection, kStop, kSolve, kReconnect, kShutdown };

const char* nameOf(Activity activity);

inline platform::Milliseconds inSeconds(double seconds) {
    return platform::Milliseconds(static_cast<long>(seconds * 1000));
}

/// What came of a night. `defects` names what must not be.
struct Outcome {
    std::vector<std::string> said;  // log without times, pop-ups, boxes and instructions of the activity
    std::map<Member, Sighting> seen;
    long struck = 0;
    bool neededStop = false;
    bool slewsOn = false;  // half a second after Stop
    bool hung = false;     // even after Stop: the operator closed the program, or can only do that
    std::vector<std::string> defects;
};

/// What devices that are brought along stand on.
struct Workshop {
    platform::VirtualTime& time;
    platform::QueuedEventLoop& loop;
    platform::OutsideCalls& calls;
    platform::ClassRegistry& classes;
    observatory::Observatory& observatory;
    std::function<void(const std::string& line)> tell;
    std::function<bool()> stopping;
};

class Night {
  public:
    /// Makes the equipment's devices, where the built-in ones don't do, and owns them.
    using Bring = std::function<std::shared_ptr<void>(const Workshop& workshop)>;

    explicit Night(const Equipment& equipment, const Bring& bring = {});

    /// The activity with the fault in it, a measurement after it without, and the end.
    Outcome spend(Activity activity, const std::optional<Fault>& fault);

    /// The text in one of the operator's boxes ("frmMain.txtDeltaRA") while he measures, exposes, solves and
    /// starts anew; then the old text again, and a measurement.
    Outcome spendWith(const std::string& box, const std::string& text);

    /// Continuous exposures over several spans of so many seconds; `onSpan` hears of all exposures so far.
    Outcome exposeFor(double seconds, int spans, const std::function<void(long exposures)>& onSpan);

    /// The operator does anything at any moment, outside things fail (two nights in three), and in the middle
    /// of it he closes the program. The seed tells one night from another.
    Outcome spendRestlessly(std::uint64_t seed);

    /// Lets time pass, in which the program finds back what it has lost.
    void rest(double seconds) { pass(seconds); }

    /// How many turns the loop takes while the activity lasts.
    long turnsOf(Activity activity);
    /// Stop in that turn, or in the first one after it that has the button.
    Outcome stopInTurn(Activity activity, long turn);

    /// The boxes that the operator can write in.
    std::vector<std::string> boxes();

    /// Called when the activity begins, twice a second while the program is at work, and when all is to be
    /// well again.
    std::function<void()> onBegin, onTurn, onRepair;

    /// What the operator sees when he looks at the mount, where asking it takes time.
    std::function<bool()> mountSlews;

    /// What the machine's clock is wrong by; running times go on as ever.
    void setClockWrongBy(platform::Milliseconds error) { loopOfMachine_.wall.error = error; }
    platform::MemorySettings& settings() { return settings_; }
    const std::filesystem::path& home() const { return home_.path(); }

  private:
    class Restless;
    void checkMeasuredErrors();
    void closeInTheMiddle();
    void type(const std::string& box, const std::string& text);
    void useEverything(const std::string& box);
    void act(Activity activity);
    void operate();
    void awaitIdle(double seconds);
    void clickAfter(double seconds, const char* button);
    void setSeries(int on);
    void awaitEnd();
    void checkAtRest();
    void checkMount();
    void startProgram();
    void end();
    void reconnect();
    void checkNextMeasurement();
    bool measures();
    void checkEnd();
    void collect();
    platform::Value ask(const char* member);
    template <typename Kind>
    Kind& control(const std::string& name);
    void pass(double seconds) { loop_.sleep(platform::Milliseconds(static_cast<long>(seconds * 1000))); }
    std::vector<std::string> stateOfControls() const;
    void defect(const std::string& text) { outcome_.defects.push_back(text); }

    void watchHeartbeat();

    struct Desktop : platform::Desktop {
        std::optional<platform::SystemVersion> systemVersion() const override {
            return platform::SystemVersion{};
        }
        std::string userProfile() const override { return "C:\\Users\\me"; }
        bool open(const std::string&) override { return true; }
    };

    /// A clock that can be set while the time goes on.
    struct WallClock : platform::Clock {
        explicit WallClock(const platform::Clock& running) : time(running) {}
        platform::Instant utc() const override { return time.utc() + error; }
        platform::Milliseconds sinceStart() const override { return time.sinceStart(); }
        const platform::Clock& time;
        platform::Milliseconds error{0};
    };
    struct LoopOfMachine : platform::EventLoop {
        explicit LoopOfMachine(platform::EventLoop& loop) : inner(loop), wall(loop.clock()) {}
        const platform::Clock& clock() const override { return wall; }
        void post(std::function<void()> handler) override { inner.post(std::move(handler)); }
        platform::TimerHandle every(platform::Milliseconds interval, std::function<void()> handler) override {
            return inner.every(interval, std::move(handler));
        }
        platform::TimerHandle whenReadable(int descriptor, std::function<void()> handler) override {
            return inner.whenReadable(descriptor, std::move(handler));
        }
        void yield() override { inner.yield(); }
        void sleep(platform::Milliseconds duration) override { inner.sleep(duration); }
        platform::EventLoop& inner;
        WallClock wall;
    };

    Equipment equipment_;
    platform::VirtualTime time_;
    platform::QueuedEventLoop loop_;
    LoopOfMachine loopOfMachine_;
    test::TempFolder home_;
    platform::FolderMap folders_;
    platform::MemorySettings settings_;
    platform::ClassRegistry originals_;
    platform::ClassRegistry classes_;
    FaultyHost host_;
    FaultyWindows windows_;
    observatory::Observatory observatory_;
    platform::OutsideCalls calls_;
    platform::Screen screen_;
    test::RecordingDialogs dialogs_;
    Desktop desktop_;
    std::shared_ptr<void> devices_;
    std::optional<app::Application> program_;
    platform::TimerHandle heartbeat_;
    platform::Milliseconds lastBeat_{0};
    platform::TimerHandle operator_;
    std::vector<platform::TimerHandle> plans_;
    platform::Subscription atTheEnd_;
    bool corrects_ = false;
    bool stops_ = false;
    int turnsOfWork_ = 0;
    std::size_t saidFrom_ = 0;
    std::size_t poppedFrom_ = 0;
    std::vector<std::string> atRest_;
    Outcome outcome_;
};

}  // namespace vantrel::faults
