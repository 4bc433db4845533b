// What a procedure is doing and how long it will take: one line for the eye and a bar.
//
// A procedure lays out its stages, enters them one after the other, and ends with a last word. How long slews
// and solutions take, and what an exposure takes beyond its time, is learned from those before.
#pragma once

#include <array>
#include <cstdint>
#include <exception>
#include <vector>

#include "engine/run_panel.h"
#include "engine/run_state.h"
#include "platform/event_loop.h"
#include "platform/timer.h"
#include "platform/words.h"

namespace vantrel::engine {

enum class Stage : std::uint8_t { kSlew, kReturn, kSettle, kExpose, kSolve };

/// `seconds` are the operator's own; 0 where nobody knows beforehand.
struct PlannedStage {
    Stage stage;
    double seconds = 0;
};

class Progress {
  public:
    Progress(RunPanel& panel, const RunState& state, platform::EventLoop& loop);

    /// A procedure begins. Without stages nobody knows how long it will take: the bar is each stage's own.
    void begin(std::vector<PlannedStage> stages);
    /// What the stages from now on belong to: "Plate 2 of 3". May be empty.
    void setSubject(const platform::Words& subject) { subject_ = subject; }
    /// Nothing goes on until the operator does something.
    void rest(const platform::Words& words);
    /// The procedure is over; these words stay.
    void end(const platform::Words& words);

    /// A stage is under way while one lives. Stages that were laid out before it count as done; one that
    /// wasn't laid out changes nothing about the others.
    class UnderWay {
      public:
        UnderWay(Progress& progress, const PlannedStage& stage) : progress_(progress) {
            progress_.enter(stage);
        }
        ~UnderWay() { progress_.leave(std::uncaught_exceptions() == exceptions_); }
        UnderWay(const UnderWay&) = delete;
        UnderWay& operator=(const UnderWay&) = delete;

      private:
        Progress& progress_;
        int exceptions_ = std::uncaught_exceptions();
    };

  private:
    void enter(const PlannedStage& stage);
    void leave(bool done);
    void show();
    void say(const platform::Words& words, double fraction);
    platform::Words doing(double elapsed) const;
    double expected(const PlannedStage& stage) const;
    double secondsSince(platform::Milliseconds instant) const;

    RunPanel& panel_;
    const RunState& state_;
    platform::EventLoop& loop_;
    platform::Timer tick_;

    platform::Words subject_;
    std::vector<PlannedStage> ahead_;
    bool foreseen_ = false;
    PlannedStage now_{Stage::kSlew};
    platform::Milliseconds began_{0}, entered_{0};
    double fraction_ = 0;

    /// By stage: all of it where the operator sets no time, else what comes on top.
    std::array<double, 5> learned_{5, 8, 0, 1, 2};
};

}  // namespace vantrel::engine
