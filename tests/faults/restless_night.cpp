// The nights of an operator who does anything at any moment.
#include <algorithm>
#include <random>

#include "app/message_log.h"
#include "app/popup_messages.h"
#include "faults/night.h"

namespace vantrel::faults {

using namespace platform;

namespace {

constexpr double kPatienceAtTheEnd = 10;  // seconds from the wish to close to the end
const char* const kTexts[] = {"", "0", "1", "5", "15", "46", "-3", "abc", "1e9", "51.5", "C:\\", "3.6"};
const char* const kAnswers[] = {"", "AxisSimulator.Telescope", "ScopeSim.Telescope", "C:\\elsewhere"};
const char* const kLikely[] = {"cmdRun",  "cmdExpose", "cmdExposeSolve", "cmdNext",     "cmdNext",
                               "cmdSkip", "cmdStop",   "cmdTestCatPath", "cmdTelescope"};

/// Stops the program, closes it, or is seen to by the night itself.
bool leftAlone(const std::string& name) { return name == "mnuFileExit"; }

template <typename Kind>
bool click(Control* control) {
    auto* one = dynamic_cast<Kind*>(control);
    return one != nullptr && one->click();
}

/// Chance that is the same everywhere: the library's distributions aren't.
class Dice {
  public:
    explicit Dice(std::uint64_t seed) : engine_(seed) {}
    std::size_t below(std::size_t count) { return engine_() % count; }
    bool oneIn(std::size_t count) { return below(count) == 0; }
    template <typename List>
    auto& among(List& list) {
        return list[below(std::size(list))];
    }

  private:
    std::mt19937_64 engine_;
};

}  // namespace

class Night::Restless {
  public:
    Restless(Night& night, std::uint64_t seed) : night_(night), dice_(seed), faulty_(seed % 3 != 0) {}

    /// What he does comes from the loop, however deep the program is in its procedures by then; in the end he
    /// closes it.
    void plan() {
        constexpr int kDeeds = 40;
        double when = 0;  // seconds
        for (int deed = 0; deed < kDeeds; ++deed) {
            when += pause();
            at(when, [this] { act(); });
        }
        at(when + pause(), [this] { night_.closeInTheMiddle(); });
    }

    /// True while nothing outside was made to fail.
    bool calm() const { return !faulty_; }

  private:
    void at(double seconds, std::function<void()> deed) {
        night_.plans_.push_back(night_.loop_.after(inSeconds(seconds), std::move(deed)));
    }

    double pause() {
        switch (dice_.below(4)) {
            case 0:
                return 0;
            case 1:
                return 0.001 * static_cast<double>(dice_.below(1000));
            case 2:
                return static_cast<double>(dice_.below(10));
            default:
                return static_cast<double>(dice_.below(60));
        }
    }

    void act() {
        if (night_.program_->ended()) return;
        night_.dialogs_.answers = {dice_.among(kAnswers)};
        const std::size_t deed = dice_.below(20);
        if (deed < 10) return pressLikely();
        if (deed < 16) return useAny();
        if (deed < 17) return closeAny();
        if (faulty_ && deed < 19) return breakAny();
        if (faulty_) night_.host_.disarm();
    }

    void pressLikely() {
        if (Control* control = night_.screen_.find("frmMain")->find(dice_.among(kLikely)))
            click<Button>(control);
    }

    void useAny() {
        const auto forms = night_.screen_.forms();
        const Form* form = forms[dice_.below(forms.size())];
        const auto& controls = form->controls();
        if (!form->shown() || controls.empty()) return;
        Control* control = controls[dice_.below(controls.size())];
        if (leftAlone(control->name())) return;
        if (click<Button>(control) || click<MenuItem>(control) || click<CheckBox>(control) ||
            click<OptionButton>(control))
            return;
        if (auto* box = dynamic_cast<TextBox*>(control)) {
            box->type(dice_.among(kTexts));
            box->leave();
        } else if (auto* list = dynamic_cast<ComboBox*>(control); list != nullptr && !list->items().empty()) {
            list->choose(list->items()[dice_.below(list->items().size())].text.english());
        }
    }

    void closeAny() {
        const auto forms = night_.screen_.forms();
        Form* form = forms[dice_.below(forms.size())];
        if (form->name() != "frmMain" && form->shown()) form->closeByOperator();
    }

    /// A slow answer holds everything up for longer than the end may take; the fault table has those.
    void breakAny() {
        constexpr Kind kKinds[] = {Kind::kRaises, Kind::kFalse,      Kind::kTrue,    Kind::kEmpty,
                                   Kind::kHuge,   Kind::kNotANumber, Kind::kGarbage, Kind::kGone};
        const auto& seen = night_.host_.seen();
        if (seen.empty()) return;
        auto member = seen.begin();
        std::advance(member, static_cast<long>(dice_.below(seen.size())));
        const Kind kind = dice_.among(kKinds);
        if (!applies(kind, member->first, member->second)) return;
        night_.host_.arm({member->first, kind, 0, dice_.oneIn(2) ? 1 : 1'000'000});
    }

    Night& night_;
    Dice dice_;
    bool faulty_;
};

Outcome Night::spendRestlessly(std::uint64_t seed) {
    startProgram();
    operator_.reset();
    host_.watch();
    Restless restless(*this, seed);
    restless.plan();
    while (!program_->ended()) pass(1);
    if (restless.calm()) checkMeasuredErrors();
    plans_.clear();
    program_.reset();
    return std::move(outcome_);
}

/// Nothing that the operator did may have spoiled a measurement unnoticed. Of what goes wrong nevertheless
/// the program warns: plates on both sides of six hours, and a mount that didn't go where it was sent, as one
/// that was disconnected.
void Night::checkMeasuredErrors() {
    constexpr double kTrue = 0.5, kTolerance = 0.02;  // degrees; the solver that knows
    const std::string label = "Error Amplitude = ";
    bool warned = false;
    for (const std::string& line : program_->log().lines()) {
        if (line.find("Start Alignment Run") != std::string::npos) warned = false;
        for (const char* warning :
             {"Plates lie on both sides of hour angle six", "don't trust this measurement"})
            if (line.find(warning) != std::string::npos) warned = true;
        const auto at = line.find(label);
        if (at == std::string::npos || warned) continue;
        const double measured = std::atof(line.c_str() + at + label.size());
        if (std::abs(measured - kTrue) > kTolerance) defect("measured wrongly: " + line);
    }
}

/// The program ends soon and without a word about what it was at.
void Night::closeInTheMiddle() {
    const Instant wished = time_.utc();
    const auto lines = program_->log().lines().size();
    atTheEnd_ = program_->endedChanged.subscribe([this, wished, lines] {
        if (time_.utc() - wished > inSeconds(kPatienceAtTheEnd)) defect("takes long to end");
        const auto& all = program_->log().lines();
        for (std::size_t i = lines; i < all.size(); ++i)
            for (const char* cutOff : {"Aborted", "Plate Solve", "Trying again", "Exposing", "Complete"})
                if (all[i].find(cutOff) != std::string::npos) defect("says at the end: " + all[i]);
    });
    program_->close();
}

long Night::turnsOf(Activity activity) {
    long turns = 0;
    startProgram();
    loop_.setAttendant([&turns] { ++turns; });
    act(activity);
    loop_.setAttendant(nullptr);
    end();
    return turns;
}

Outcome Night::stopInTurn(Activity activity, long turn) {
    startProgram();
    atRest_ = stateOfControls();
    auto& stop = control<Button>("frmMain.cmdStop");
    bool stopped = false;
    loop_.setAttendant([&] {
        if (stopped || --turn > 0 || !stop.reachable()) return;
        stopped = true;
        stop.click();
        host_.onUse = [this](const Member& member) {
            for (const char* moves : {"slewtocoordinatesasync", "expose", "takeimage"})
                if (member.name == moves) defect(member.text() + " is used after a Stop");
        };
    });
    act(activity);
    loop_.setAttendant(nullptr);
    host_.onUse = nullptr;
    checkMount();
    pass(2);
    checkAtRest();
    end();
    return std::move(outcome_);
}

}  // namespace vantrel::faults
