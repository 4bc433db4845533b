// At the start of an adjustment: where the correction star must go, marked on the image.
#pragma once

#include "correction/correction_marks.h"
#include "correction/correction_star_finder.h"
#include "correction/correction_target.h"
#include "correction/exact_mark.h"
#include "correction/open_image.h"
#include "engine/indicators.h"
#include "engine/manual_exposures.h"
#include "engine/run_panel.h"
#include "engine/run_state.h"
#include "engine/services.h"

namespace vantrel::correction {

/// The pixel at which a sky position lies, given that the plate's centre position is taken to lie at the
/// star's pixel: the offset goes through the inverse of the CD matrix, the right-ascension difference as
/// 15·hours without the cosine of the declination. Nothing when the matrix is singular.
std::optional<engine::PixelPosition> SkyOffsetToPixel(double ra, double dec,
                                                      const engine::PlateSolution& plate,
                                                      const engine::PixelPosition& star);

/// How much of the sky a pixel shows on the average of both directions; 0 when the matrix doesn't tell.
double arcMinutesPerPixel(const engine::PlateSolution& plate);

/// Whether the operator chose marks by full rotations instead.
bool exactMarkWanted(engine::SettingsPort& settings);

class StarPointing {
  public:
    StarPointing(engine::RunPanel& panel, engine::RunState& state, const engine::Services& services,
                 engine::ManualExposures& exposures, engine::OverlayPort& overlays, OpenImage& image,
                 CorrectionStarFinder& starFinder, CorrectionMarks& marks);

    /// Both expose, solve, compute the target and mark it; when it lies off the image they mark the star and
    /// slew the telescope instead; an exact mark is made anew after the slew. Errors (degrees) are those of
    /// the last measurement. CorrectionPointed tells whether they got to their end: a stop ends them wherever
    /// it falls, and nothing slews after it. OperationError leaves them when an exposure's setting isn't a
    /// number.
    void PointAzCorrectionAllignmentStar(double ErrorAmplitude, double ErrorAngle);
    void PointAltCorrectionAllignmentStar(double ErrorAmplitude, double ErrorAngle);

  private:
    struct Adjustment;
    struct Ended {};  // before its end: by a plate that wasn't solved, by Stop or by the end of the program
    void pointOrAbort(const Adjustment& adjustment, double ErrorAmplitude, double ErrorAngle);
    void point(const Adjustment& adjustment, double ErrorAmplitude, double ErrorAngle);
    PointingSituation readSituation(double ErrorAmplitude, double ErrorAngle);
    void exposeAndSave();
    void findStar();
    std::optional<engine::PlateSolution> solve(const engine::EquatorialPosition& near);
    std::optional<PicturedSky> pictured(const engine::PlateSolution& plate);
    std::optional<engine::EquatorialPosition> starPlace(const engine::PlateSolution& plate);
    std::optional<engine::PixelPosition> exactPixel(const engine::PlateSolution& plate,
                                                    const std::optional<engine::EquatorialPosition>& star,
                                                    const AdjusterTurn& turn);
    bool LocateTargetOnImage(const std::optional<engine::PixelPosition>& pixel);
    void slewInstead(const CorrectionTarget& target);
    void markAfterSlew(const engine::EquatorialPosition& moveTo, const engine::EquatorialPosition& star,
                       const AdjusterTurn& turn);
    void drawPath();
    void tellTarget();
    void check();

    engine::RunPanel& panel_;
    engine::RunState& state_;
    engine::Services services_;
    engine::ManualExposures& exposures_;
    engine::OverlayPort& overlays_;
    OpenImage& image_;
    CorrectionStarFinder& starFinder_;
    CorrectionMarks& marks_;
    engine::Indicators indicators_;
};

}  // namespace vantrel::correction
