// The run and the correction with hand-made instruments, in virtual time: what the operator sees and does.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "correction/correction_sequence.h"
#include "correction/open_picture.h"
#include "engine/measurement_run.h"
#include "platform/class_registry.h"
#include "support/engine_world.h"

namespace vantrel::correction {

using namespace platform;

/// The marks as texts: "rectangle 0.2", "line 500 400 510 400", "cross 510 400".
struct Marks : engine::OverlayPort {
    void CrossHair(const std::optional<engine::PixelPosition>& centre) override {
        drawn.push_back("cross " + toText(centre->x) + " " + toText(centre->y));
    }
    double DrawCenteredRectangles(double fraction) override {
        drawn.push_back("rectangle " + toText(fraction));
        return fraction;
    }
    void DrawLineOnImage(int x1, int y1, int x2, int y2) override {
        drawn.push_back("line");
        for (const int c : {x1, y1, x2, y2}) drawn.back() += " " + std::to_string(c);
    }
    std::vector<std::string> drawn;
};

struct OneStar : CorrectionStarFinder {
    engine::PixelPosition FindBrightestStarOnImage() override { return place; }
    engine::PixelPosition place{500, 400};
};

/// The correction, wherever the run is built before it.
struct Guide : engine::CorrectionPort {
    void CorrectMisAlignment(double amplitude, double angle) override {
        target->CorrectMisAlignment(instead ? *instead : amplitude, angle);
    }
    CorrectionSequence* target = nullptr;
    std::optional<double> instead;  // of the measured amplitude
};

struct CorrectionWorld : test::EngineWorld {
    engine::ExposurePanel exposurePanel{form};
    Guide guide;
    Marks overlays;
    OneStar star;
    test::Picture frame{std::make_shared<ImageArray>(1000, 800, std::vector<std::uint16_t>(1000UL * 800))};
    ClassRegistry classes;
    CorrectionMarks marks;

    OpenImage image{classes, [] { return "MaxIm"; }};
    engine::ManualExposures exposures{exposurePanel, panel, state, services, overlays};
    StarPointing pointing{panel, state, services, exposures, overlays, image, star, marks};
    GuidancePanel guidancePanel{form};
    StarGuide starGuide{guidancePanel, image};
    CorrectionSequence correction{panel,     exposurePanel, state,    services, prompt,
                                  exposures, overlays,      pointing, marks,    starGuide};

    explicit CorrectionWorld(bool simulator = false) : EngineWorld(guide) {
        classes.install("MaxIm.Application",
                        {[this] { return std::make_shared<test::FakeApplication>(frame); }, "", "", ""});
        guide.target = &correction;
        state.UsingAxisSimulator = simulator;
    }
};

}  // namespace vantrel::correction
