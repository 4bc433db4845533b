#include "correction/correction_sequence.h"

#include "engine/waiting.h"
#include "platform/text.h"

namespace vantrel::correction {

using engine::Indicators;
using platform::Alignment;
using platform::joinLines;

struct CorrectionSequence::Adjuster {
    const char* heading;
    const char* centreUsing;
    void (StarPointing::*point)(double, double);
};

/// A star is guided for as long as this lives.
class CorrectionSequence::Guided {
  public:
    Guided(StarGuide& guide, const CorrectionMarks& marks) : guide_(guide) { guide_.begin(marks); }
    ~Guided() { guide_.end(); }
    Guided(const Guided&) = delete;
    Guided& operator=(const Guided&) = delete;

  private:
    StarGuide& guide_;
};

CorrectionSequence::CorrectionSequence(engine::RunPanel& panel, engine::ExposurePanel& exposurePanel,
                                       engine::RunState& state, const engine::Services& services,
                                       engine::OperatorPrompt& prompt, engine::ManualExposures& exposures,
                                       engine::OverlayPort& overlays, StarPointing& pointing,
                                       CorrectionMarks& marks, StarGuide& guide)
    : panel_(panel),
      exposurePanel_(exposurePanel),
      state_(state),
      services_(services),
      prompt_(prompt),
      exposures_(exposures),
      overlays_(overlays),
      pointing_(pointing),
      marks_(marks),
      guide_(guide),
      indicators_(services.settings) {}

void CorrectionSequence::CorrectMisAlignment(double ErrorAmplitude, double ErrorAngle) {
    const Adjuster azimuth = {"Polar Azimuth Correction", "      polar Azimuth adjuster",
                              &StarPointing::PointAzCorrectionAllignmentStar};
    const Adjuster elevation = {"Polar Elevation Correction", "      polar Elevation adjuster",
                                &StarPointing::PointAltCorrectionAllignmentStar};
    try {
        panel_.lblMeasure.setCaption("Correct");
        for (platform::Label* frame : {&panel_.lblFrame1, &panel_.lblFrame2, &panel_.lblFrame3})
            frame->setVisible(false);
        panel_.lblAlt.setVisible(true);
        panel_.lblAz.setVisible(true);

        indicators_.SetActiveColors(panel_.lblAz);
        marks_.azimuthTurned = false;
        bool corrected = adjust(azimuth, ErrorAmplitude, ErrorAngle);
        marks_.azimuthTurned = corrected;
        panel_.cmdSkip.setEnabled(true);
        Indicators::switchOff(panel_.lblAz);
        indicators_.SetActiveColors(panel_.lblAlt);
        corrected = adjust(elevation, ErrorAmplitude, ErrorAngle) || corrected;
        if (!corrected) return;

        panel_.txtInstructions.setAlignment(Alignment::kCentre);
        panel_.txtInstructions.setText(joinLines(
            {"Polar Alignment Correction", "was Successful!", "", "", "Click Next to measure again"}));
        panel_.cmdNext.setEnabled(true);
        prompt_.WaitForNextOrSkipClick();
    } catch (const Closing&) {
        return;
    } catch (const Aborted&) {
        if (!state_.AppUnloading) services_.log.AddToLog("Align Aborted");
    }
}

/// True when the operator started this adjustment, false when it was skipped.
bool CorrectionSequence::adjust(const Adjuster& adjuster, double ErrorAmplitude, double ErrorAngle) {
    panel_.txtInstructions.setAlignment(Alignment::kLeft);
    panel_.txtInstructions.setText(
        joinLines({adjuster.heading, "1. Slew Telescope to place", "     any Bright Star in rectangle",
                   "     and Sync", "2. Click Next Button to start,", "     or click Skip Button to skip"}));
    expectClicks();
    placingLoop();
    checkAfterLoop();
    if (!state_.NextClicked) return false;

    panel_.cmdNext.setEnabled(false);
    panel_.cmdSkip.setEnabled(false);
    panel_.cmdExpose.setEnabled(false);
    panel_.txtInstructions.setAlignment(Alignment::kCentre);
    panel_.txtInstructions.setText(
        joinLines({adjuster.heading, "", "Determining Correction", "", "Please Wait"}));
    (pointing_.*adjuster.point)(ErrorAmplitude, ErrorAngle);
    if (!marks_.CorrectionPointed) throw Aborted{};

    panel_.txtInstructions.setAlignment(Alignment::kLeft);
    panel_.txtInstructions.setText(
        joinLines({adjuster.heading, "1. Center Star on Cross Hair", "      using ONLY", adjuster.centreUsing,
                   "Do Not center by slewing!!", "2. Click Next when centered"}));
    panel_.cmdNext.setEnabled(true);
    expectClicks();
    centringLoop();
    checkAfterLoop();
    return true;
}

void CorrectionSequence::expectClicks() {
    state_.NextClicked = false;
    state_.SkipClicked = false;
}

void CorrectionSequence::placingLoop() {
    constexpr double kFractionOfImage = 0.2;
    exposeUntilClick([&] { overlays_.DrawCenteredRectangles(kFractionOfImage); });
}

void CorrectionSequence::centringLoop() {
    const Guided guided(guide_, marks_);
    exposeUntilClick([&] {
        overlays_.DrawLineOnImage(platform::toInt32(marks_.StarX), platform::toInt32(marks_.StarY),
                                  platform::toInt32(marks_.TargetX), platform::toInt32(marks_.TargetY));
        overlays_.CrossHair(engine::PixelPosition{marks_.TargetX, marks_.TargetY});
        guide_.look();
    });
}

/// A failed exposure ends the loop after its pass, as a click would.
template <typename Mark>
void CorrectionSequence::exposeUntilClick(Mark&& mark) {
    do {
        if (state_.StopRequested) throw Aborted{};  // while waiting; the camera's next exposure forgets it
        indicators_.SetActiveColors(panel_.lblExpose);
        if (exposures_.SimpleShortExpose()) throw Aborted{};
        Indicators::switchOff(panel_.lblExpose);
        mark();
        check();
        engine::WaitSeconds(services_.loop,
                            platform::leadingNumber(exposurePanel_.txtContinuousExposeDelay.text()));
    } while (!state_.NextClicked && !state_.SkipClicked && !state_.CameraFailed);
}

void CorrectionSequence::checkAfterLoop() {
    Indicators::switchOff(panel_.cmdNext);
    if (state_.StopRequested) throw Aborted{};
    if (state_.AppUnloading) throw Closing{};
}

void CorrectionSequence::check() {
    services_.loop.yield();
    if (state_.StopRequested) throw Aborted{};
    if (state_.AppUnloading) throw Closing{};
}

}  // namespace vantrel::correction
