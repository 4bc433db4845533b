#include "faults/night.h"

#include <algorithm>
#include <set>
#include <string>

#include "app/message_log.h"
#include "app/popup_messages.h"
#include "faults/solved_sky.h"

namespace vantrel::faults {

using namespace platform;

namespace {

constexpr Milliseconds kNightLimit = std::chrono::hours{200};
constexpr int kPatience = 500;  // turns of the operator, half a second or more apart
constexpr const char* kMountClass[] = {"AxisSimulator.Telescope", "ScopeSim.Telescope"};

observatory::ObservatorySeams seams(DesktopWindows& windows) {
    observatory::ObservatorySeams seams;
    seams.desktop = &windows;
    return seams;
}

}  // namespace

const char* nameOf(Activity activity) {
    constexpr const char* kNames[] = {"start", "measurement", "series",    "correction",
                                      "stop",  "solve",       "reconnect", "shutdown"};
    return kNames[static_cast<std::size_t>(activity)];
}

Night::Night(const Equipment& equipment, const Bring& bring)
    : equipment_(equipment),
      time_(*parseInstant("2026-11-24T20:00:00Z"), kNightLimit),
      loop_(time_),
      loopOfMachine_(loop_),
      home_(test::TempFolder::quickPlace()),
      folders_(home_.path()),
      host_(classes_, time_),
      windows_(host_),
      observatory_(loop_, folders_, 1, seams(windows_)),
      screen_({0, 0, 1920, 1080}) {
    observatory_.install(originals_);
    observatory_.install(classes_);
    if (bring) {
        devices_ = bring({time_, loop_, calls_, classes_, observatory_,
                          [this](const std::string& line) {
                              if (program_) program_->log().AddToLog(line);
                          },
                          [this] { return program_ && program_->stopping(); }});
        watchHeartbeat();
    }
    const ObjectRef mount = classes_.create(equipment.mount);
    const ObjectRef simulator = classes_.create(kMountClass[0]);
    simulator->put("CameraWidth", 24);
    simulator->put("CameraHeight", 16);
    classes_.install("PinPoint.Plate",
                     {[mount] { return std::make_shared<KnowingPlate>(mount); }, "", "", ""});
    classes_.install(
        "CCDSoft.Image",
        {[this, mount] { return std::make_shared<KnowingImage>(originals_.create("CCDSoft.Image"), mount); },
         "", "", ""});
    settings_.write("Main", "MyTelescopeID", equipment.mount);
    settings_.write("PolarAlign", "ImagingSoftware", equipment.imaging);
    settings_.write("PolarAlign", "PlateSolveMethod", equipment.method);
    settings_.write("PolarAlign", "DeltaRA", "15");
    settings_.write("Solve", "CamBin", "1");
    for (const char* scale : {"ScaleH", "ScaleV", "TheSkyImageScale"}) settings_.write("Solve", scale, "3.6");
    loop_.setOnFailure([this] {
        defect("a failure left a handler: " + currentError().description());
        program_->reportFailure("event loop");
    });
}

/// The window has to answer while devices are waited for.
void Night::watchHeartbeat() {
    constexpr Milliseconds kBeat{50}, kMostDeaf{200};
    lastBeat_ = time_.sinceStart();
    heartbeat_ = loop_.every(kBeat, [this, kMostDeaf] {
        const Milliseconds now = time_.sinceStart();
        if (now - lastBeat_ > kMostDeaf)
            defect("the window is deaf for " + std::to_string((now - lastBeat_).count()) + " ms");
        lastBeat_ = now;
    });
}

template <typename Kind>
Kind& Night::control(const std::string& name) {
    return dynamic_cast<Kind&>(*screen_.findControl(name));
}

Outcome Night::spend(Activity activity, const std::optional<Fault>& fault) {
    const auto begin = [&] {
        host_.watch();
        if (program_) {
            saidFrom_ = program_->log().lines().size();
            poppedFrom_ = program_->popups().history().size();
        }
        if (fault) host_.arm(*fault);
        if (onBegin) onBegin();
    };
    if (activity == Activity::kStart) begin();
    startProgram();
    if (activity != Activity::kStart) {
        pass(2);
        atRest_ = stateOfControls();
        begin();
        act(activity);
    }
    collect();
    if (activity != Activity::kShutdown) {
        checkMount();
        host_.disarm();
        if (onRepair) onRepair();
        pass(2);
        checkAtRest();
    }
    if (activity == Activity::kStart) {
        // What the start left out the next start makes good.
        end();
        saidFrom_ = 0;
        startProgram();
    }
    if (activity != Activity::kShutdown) checkNextMeasurement();
    end();
    return std::move(outcome_);
}

std::vector<std::string> Night::boxes() {
    startProgram();
    std::vector<std::string> names;
    for (const Form* form : screen_.forms())
        for (const Control* control : form->controls())
            if (const auto* box = dynamic_cast<const TextBox*>(control); box != nullptr && !box->readOnly())
                names.push_back(form->name() + "." + control->name());
    end();
    return names;
}

Outcome Night::spendWith(const std::string& box, const std::string& text) {
    startProgram();
    const std::string before = control<TextBox>(box).text();
    type(box, text);
    useEverything(box);
    const std::string kept = control<TextBox>(box).text();
    end();
    startProgram();
    const std::string shown = control<TextBox>(box).text();
    // A long text is stored as far as there is room, an empty one stands for the default.
    if (!kept.starts_with(shown) && shown != before && !kept.empty())
        defect("shows \"" + shown.substr(0, 40) + "\" after a new start");
    useEverything(box);
    collect();
    type(box, before);
    checkNextMeasurement();
    end();
    return std::move(outcome_);
}

Outcome Night::exposeFor(double seconds, int spans, const std::function<void(long exposures)>& onSpan) {
    startProgram();
    host_.watch();
    const auto exposures = [this] {
        long uses = 0;
        for (const auto& [member, seen] : host_.seen())
            if (member.name == "expose" || member.name == "takeimage") uses += seen.uses;
        return uses;
    };
    operator_.reset();  // he sleeps
    setSeries(1);
    clickAfter(0, "frmMain.cmdExpose");
    for (int span = 1; span <= spans; ++span)
        plans_.push_back(loop_.after(inSeconds(seconds * span), [&, last = span == spans] {
            onSpan(exposures());
            if (last) setSeries(0);
        }));
    awaitIdle(1);
    checkMount();
    end();
    return std::move(outcome_);
}

void Night::type(const std::string& box, const std::string& text) {
    auto& field = control<TextBox>(box);
    const bool wasShown = field.form().shown();
    field.form().show();
    loop_.post([&field, text] {
        field.type(text);
        field.leave();
    });
    pass(0.1);
    if (!wasShown) field.form().unload();
}

/// What the operator can do with the field: its window's buttons, an exposure, a measurement, a solve.
void Night::useEverything(const std::string& box) {
    corrects_ = stops_ = false;
    Form& form = control<TextBox>(box).form();
    for (Control* other : form.name() == "frmMain" ? std::vector<Control*>{} : form.controls())
        if (auto* button = dynamic_cast<Button*>(other); button != nullptr && button->reachable()) {
            loop_.post([button] { button->click(); });
            awaitIdle(0.2);
        }
    for (const char* button : {"frmMain.cmdExpose", "frmMain.cmdRun", "frmMain.cmdExposeSolve"}) {
        clickAfter(0, button);
        awaitIdle(1);
        if (program_->ended()) {
            end();
            return startProgram();
        }
    }
}

void Night::startProgram() {
    program_.emplace(Machine{
        loopOfMachine_, host_, settings_, folders_, screen_, dialogs_, desktop_, windows_, {}, &calls_});
    operator_ = loop_.every(Milliseconds{500}, [this] { operate(); });
    program_->start();
    awaitIdle(0.1);
}

void Night::end() {
    program_->close();
    awaitEnd();
    checkEnd();
    plans_.clear();
    operator_.reset();
    program_.reset();
}

/// A click a little later, when the operator's own turn is over.
void Night::clickAfter(double seconds, const char* button) {
    plans_.push_back(loop_.after(inSeconds(seconds), [this, button] { control<Button>(button).click(); }));
}

void Night::act(Activity activity) {
    corrects_ = activity == Activity::kCorrection;
    stops_ = activity == Activity::kStop;
    switch (activity) {
        case Activity::kStart:
            return;
        case Activity::kMeasurement:
        case Activity::kCorrection:
        case Activity::kStop:
            clickAfter(0, "frmMain.cmdRun");
            break;
        case Activity::kSeries:
            setSeries(1);
            clickAfter(0, "frmMain.cmdExpose");
            plans_.push_back(loop_.after(inSeconds(15), [this] { setSeries(0); }));
            break;
        case Activity::kSolve:
            clickAfter(0, "frmMain.cmdExposeSolve");
            break;
        case Activity::kReconnect:
            clickAfter(0, "frmTelescope.cmdDisconnectTelescope");
            awaitIdle(3);
            clickAfter(0, "frmTelescope.cmdConnectTelescope");
            break;
        case Activity::kShutdown:
            program_->close();
            awaitEnd();
            return;
    }
    awaitIdle(activity == Activity::kSeries ? 16 : 1);
}

void Night::setSeries(int on) {
    control<CheckBox>("frmMain.chkExposeContinuousEnable").check(on);
    control<CheckBox>("frmMain.chkCrossHairEnable").check(on);
}

/// The operator's turn, twice a second, however deep the program is in its procedures: he goes through what
/// it offers, to the end of a measurement or of a correction, and loses patience with what takes too long.
void Night::operate() {
    if (program_->ended() || !program_->busy()) {
        turnsOfWork_ = 0;
        return;
    }
    ++turnsOfWork_;
    if (onTurn) onTurn();
    if (turnsOfWork_ == kPatience) {
        outcome_.neededStop = true;
        control<Button>("frmMain.cmdStop").click();
    }
    if (turnsOfWork_ == 2 * kPatience) {
        outcome_.hung = true;
        program_->close();
    }
    if (stops_ && (mountSlews ? mountSlews() : ask("Slewing").toBool())) {
        stops_ = false;
        control<Button>("frmMain.cmdStop").click();
        if (mountSlews)
            plans_.push_back(loop_.after(inSeconds(0.5), [this] { outcome_.slewsOn = mountSlews(); }));
    }
    auto& next = control<Button>("frmMain.cmdNext");
    auto& skip = control<Button>("frmMain.cmdSkip");
    if (!next.enabled()) return;
    if (!corrects_ && skip.enabled())
        skip.click();
    else
        next.click();
}

/// At least these seconds, and until nothing runs any more.
void Night::awaitIdle(double seconds) {
    pass(seconds);
    while (program_->busy() && !program_->ended()) pass(1);
}

void Night::awaitEnd() {
    for (int look = 0; !program_->ended(); ++look) {
        if (look == kPatience) return defect("the shutdown hangs");
        pass(1);
    }
}

void Night::collect() {
    const auto& lines = program_->log().lines();
    for (std::size_t i = saidFrom_; i < lines.size(); ++i) outcome_.said.push_back(lines[i].substr(11));
    const auto& popups = program_->popups().history();
    for (std::size_t i = poppedFrom_; i < popups.size(); ++i) outcome_.said.push_back(popups[i].text);
    for (const auto& box : dialogs_.boxes) outcome_.said.push_back(box.text);
    outcome_.seen = host_.seen();
    outcome_.struck = host_.struck();
}

/// What stands there of the last measurement, and what it teaches about the next.
bool tellsOfThePast(const std::string& control) {
    static const std::set<std::string> all{"lblProspect",      "lblProgress",        "gaugeProgress",
                                           "lblAzimuthAdvice", "lblElevationAdvice", "lblTotal",
                                           "lblVerdict",       "cmdLastMessage"};
    return all.contains(control);
}

/// The lamps tell of the devices, which the night breaks, and follow them once a second.
bool tellsOfADevice(const std::string& control) { return control.ends_with("Status"); }

/// Which of the main window's buttons, boxes and lists can be used, and the captions.
std::vector<std::string> Night::stateOfControls() const {
    std::vector<std::string> state;
    for (const Control* control : screen_.find("frmMain")->controls()) {
        if (tellsOfThePast(control->name())) continue;
        std::string text = control->name() + (control->enabled() ? " on" : " off");
        text += control->visible() ? " shown" : " hidden";
        if (const auto* captioned = dynamic_cast<const Captioned*>(control);
            captioned != nullptr && !tellsOfADevice(control->name()))
            text += " " + captioned->caption();
        state.push_back(text);
    }
    return state;
}

void Night::checkAtRest() {
    if (program_->busy() || program_->ended()) return;
    if (!screen_.find("frmMain")->shown()) defect("the main window isn't shown");
    if (!control<Button>("frmMain.cmdRun").reachable()) defect("Run is off");
    if (!control<Button>("frmMain.cmdExpose").reachable()) defect("Expose is off");
    if (atRest_.empty()) return;
    const auto now = stateOfControls();
    for (std::size_t i = 0; i < now.size(); ++i)
        if (now[i] != atRest_[i]) defect("not at rest: " + now[i] + " instead of " + atRest_[i]);
}

Value Night::ask(const char* member) {
    const bool atRest = std::string(member) == "Tracking";
    try {
        const ObjectRef mount = classes_.create(equipment_.mount);
        if (!mount->get("Connected").toBool()) return atRest;
        return mount->get(member);
    } catch (const AutomationError&) {
        if (devices_ == nullptr) throw;
        return atRest;  // it is out of reach
    }
}

/// A stop sends nothing to the mount: a slew that the program lost sight of ends by itself.
void Night::checkMount() {
    constexpr int kLongestSlew = 200;  // seconds
    for (int i = 0; i < kLongestSlew && ask("Slewing").toBool(); ++i) pass(1);
    if (ask("Slewing").toBool()) defect("the mount still slews");
    if (!ask("Tracking").toBool()) defect("the mount doesn't track any more");
}

/// As the Telescope window offers it, where the link is down or half made.
void Night::reconnect() {
    const auto linked = [this] {
        return control<TextBox>("frmTelescope.txtTelescopeSelectionStatus").text() == " Connected";
    };
    if (linked()) return;
    if (!control<Button>("frmTelescope.cmdConnectTelescope").enabled()) {
        clickAfter(0, "frmTelescope.cmdDisconnectTelescope");
        awaitIdle(3);
    }
    clickAfter(0, "frmTelescope.cmdConnectTelescope");
    awaitIdle(3);
    if (!linked()) defect("the mount can't be connected again");
}

void Night::checkNextMeasurement() {
    if (program_->busy() || program_->ended()) return;
    corrects_ = stops_ = false;
    reconnect();
    if (measures()) return;
    if (devices_ != nullptr) {
        // After a Stop the Telescope window shows no link that went down until something is begun.
        pass(2);
        reconnect();
        if (measures()) return;
    }
    defect("the next measurement doesn't work: " + program_->log().lines().back());
}

bool Night::measures() {
    const auto before = program_->log().lines().size();
    clickAfter(0, "frmMain.cmdRun");
    awaitIdle(1);
    const auto& lines = program_->log().lines();
    return std::any_of(lines.begin() + static_cast<std::ptrdiff_t>(before), lines.end(),
                       [](const std::string& line) { return line.ends_with("Alignment Run Complete"); });
}

void Night::checkEnd() {
    if (!program_->ended()) return;
    // What was logged before the file was there, or while it was shut already, is in the window only.
    std::string all;
    for (const std::string& line : program_->log().lines()) all += line + "\r\n";
    std::string file;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(home_.path())) {
        if (entry.path().extension() != ".log") continue;
        file += test::contentsOf(entry.path());
        std::filesystem::remove(entry.path());
    }
    if (file.empty() || all.find(file) == std::string::npos) defect("lines are missing in the log file");
    const auto rest = all.size() - file.size();
    if (rest > 200) defect("the log file ends early");
    if (settings_.read("PolarAlign", "ImagingSoftware") != equipment_.imaging)
        defect("the settings are not stored");
    if (program_->failed()) defect("the program ended as failed");
}

}  // namespace vantrel::faults
