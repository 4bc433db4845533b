// The guided correction: first the azimuth adjuster, then the elevation adjuster.
#pragma once

#include "correction/correction_marks.h"
#include "correction/star_guide.h"
#include "correction/star_pointing.h"
#include "engine/exposure_panel.h"
#include "engine/operator_prompt.h"

namespace vantrel::correction {

/// For each adjuster: the operator places a star (short exposures with a rectangle), the pointing marks where
/// it must go, the operator turns the adjuster until the star is there (short exposures with the marks).
class CorrectionSequence : public engine::CorrectionPort {
  public:
    CorrectionSequence(engine::RunPanel& panel, engine::ExposurePanel& exposurePanel, engine::RunState& state,
                       const engine::Services& services, engine::OperatorPrompt& prompt,
                       engine::ManualExposures& exposures, engine::OverlayPort& overlays,
                       StarPointing& pointing, CorrectionMarks& marks, StarGuide& guide);

    /// Returns when the operator is through, stopped, or skipped everything, and at once when the program
    /// closes. OperationError leaves it when an exposure's setting isn't a number.
    void CorrectMisAlignment(double ErrorAmplitude, double ErrorAngle) override;

  private:
    struct Adjuster;
    class Guided;
    struct Aborted {};  // stopped, or the pointing failed
    struct Closing {};

    bool adjust(const Adjuster& adjuster, double ErrorAmplitude, double ErrorAngle);
    void expectClicks();
    void placingLoop();
    void centringLoop();
    template <typename Mark>
    void exposeUntilClick(Mark&& mark);
    void checkAfterLoop();
    void check();

    engine::RunPanel& panel_;
    engine::ExposurePanel& exposurePanel_;
    engine::RunState& state_;
    engine::Services services_;
    engine::OperatorPrompt& prompt_;
    engine::ManualExposures& exposures_;
    engine::OverlayPort& overlays_;
    StarPointing& pointing_;
    CorrectionMarks& marks_;
    StarGuide& guide_;
    engine::Indicators indicators_;
};

}  // namespace vantrel::correction
