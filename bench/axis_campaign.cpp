// Monte Carlo of the axis's estimate: how far from the truth, how honest about it, and what it notices.
// Prints the tables of docs/estimate.md. The mount, the camera and the air are those of the tests, which
// share nothing with the estimate.
//
//     axis-campaign [trials]
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "engine/axis/least_squares.h"
#include "engine/axis/prospect.h"
#include "engine/axis/simulated_mount.h"
#include "engine/axis/verdict.h"
#include "engine/axis/written_calculation.h"

namespace {

using namespace vantrel;
using engine::AxisEstimate;
using engine::AxisEstimator;
using engine::LeastSquares;
using engine::Plate;
using Plates = std::vector<Plate>;

int trials = 2000;

/// What is measured, and with which errors.
struct Measurement {
    double latitude = 50, middle = 0, declination = 30, slew = 15;
    int plates = 3;
    test::Errors errors{};
    bool roll = true, readings = true;
    double airError = 0;  // share of the refraction, one sigma

    test::SimulatedMount mount(std::mt19937& random) const {
        std::uniform_real_distribution<double> anywhere(-60, 60);
        test::SimulatedMount mount{.site = {latitude, engine::standardAir(300)},
                                   .azimuth = anywhere(random),
                                   .elevation = anywhere(random)};
        mount.site.air.uncertainty = airError;
        mount.declination = declination;
        return mount;
    }

    Plates taken(const test::SimulatedMount& mount, std::mt19937& random) const {
        test::SimulatedAir air(mount.site.air);
        air.thicken(1 + airError * std::normal_distribution<double>()(random));
        Plates result = test::blurred(mount.plates(test::arc(middle, slew, plates), air), errors, random);
        for (Plate& plate : result) {
            if (!roll) plate.positionAngle.reset();
            if (!readings) plate.reading.reset();
        }
        return result;
    }

    engine::FitSettings settings() const {
        return {.centreFloor = 0, .rollFloor = 0, .readingSigma = errors.reading, .sagSigma = 0};
    }
};

/// Of many estimates.
struct Outcome {
    std::vector<double> distances;  // arc-seconds
    double stated = 0;              // mean of what they say of themselves: 95 % of the distances are within
    int valid = 0, one = 0, two = 0;

    void add(const AxisEstimate& estimate, const test::SimulatedMount& mount) {
        if (!estimate.valid()) return;
        const double toSky = 60 * std::cos(mount.site.latitude * test::kDegree);
        const double east = (estimate.fromTruePole.azimuth - mount.azimuth) * toSky;
        const double up = (estimate.fromTruePole.elevation - mount.elevation) * 60;
        ++valid;
        distances.push_back(std::hypot(east, up));
        if (!estimate.covariance) return;
        const double chiSquare = estimate.covariance->chiSquareOf(east, up);
        one += chiSquare < 1;
        two += chiSquare < 4;
        stated += estimate.covariance->ellipse().major;
    }

    double quantile(double share) {
        if (distances.empty()) return std::nan("");
        std::sort(distances.begin(), distances.end());
        return distances[static_cast<std::size_t>(share * static_cast<double>(distances.size() - 1))];
    }
    std::string median() { return number(quantile(0.5)); }
    std::string ninetyFive() { return number(quantile(0.95)); }
    std::string major() const { return number(stated / valid); }
    static std::string number(double arcseconds) {
        if (std::isnan(arcseconds)) return "none";
        char text[32];
        if (arcseconds < 100)
            std::snprintf(text, sizeof text, arcseconds < 10 ? "%.1f\"" : "%.0f\"", arcseconds);
        else
            std::snprintf(text, sizeof text, "%.1f'", arcseconds / 60);
        return text;
    }
    std::string percent(int count) const {
        return std::to_string(static_cast<int>(std::lround(100.0 * count / std::max(1, valid)))) + " %";
    }
};

using Spoiling = std::function<void(Plates&)>;

Outcome outcomeOf(const Measurement& m, const AxisEstimator& estimator, const Spoiling& spoil = {}) {
    std::mt19937 random(20261125);
    Outcome outcome;
    for (int trial = 0; trial < trials; ++trial) {
        const auto mount = m.mount(random);
        Plates plates = m.taken(mount, random);
        if (spoil) spoil(plates);
        outcome.add(estimator.estimate(plates, mount.site), mount);
    }
    return outcome;
}

Outcome outcomeOf(const Measurement& m, const Spoiling& spoil = {}) {
    return outcomeOf(m, LeastSquares(m.settings()), spoil);
}

/// Leaves out the plate that the verdict blames, where it blames one.
Outcome outcomeWithoutBlamed(const Measurement& m, const Spoiling& spoil) {
    std::mt19937 random(20261125);
    Outcome outcome;
    for (int trial = 0; trial < trials; ++trial) {
        const auto mount = m.mount(random);
        Plates plates = m.taken(mount, random);
        spoil(plates);
        const auto verdict = engine::judge(plates, mount.site, m.settings());
        if (verdict.agreement == engine::Agreement::kSuspicious && verdict.suspicions.front().plate > 0)
            plates.erase(plates.begin() + verdict.suspicions.front().plate - 1);
        outcome.add(LeastSquares(m.settings()).estimate(plates, mount.site), mount);
    }
    return outcome;
}

void title(const char* text, const char* columns, int count) {
    std::printf("\n## %s\n\n%s\n|", text, columns);
    for (int i = 0; i < count; ++i) std::printf("---|");
    std::printf("\n");
}

void honesty() {
    title("Is it as good as it says?",
          "| latitude | hour angle | declination | plates | slew | air | median | 95 % | stated, long side | "
          "within 1 σ (39 %) | within 2 σ (86 %) |",
          11);
    const Measurement rows[] = {{50, 0, 30, 20, 3},   {50, 0, 0, 10, 3},  {50, 0, 75, 20, 3},
                                {50, 0, 30, 5, 7},    {50, 6, 40, 15, 3}, {50, -6, 40, 10, 5},
                                {65, 2, 15, 15, 3},   {10, 3, 15, 20, 3}, {-35, -4, -15, 10, 3},
                                {-60, 1, -60, 45, 3}, {40, 0, 60, 40, 2}};
    for (const Measurement& row : rows)
        for (const double air : {0.0, 0.05}) {
            Measurement m = row;
            m.airError = air;
            Outcome o = outcomeOf(m);
            std::printf("| %g° | %g h | %g° | %d | %g° | ±%g %% | %s | %s | %s | %s | %s |\n", m.latitude,
                        m.middle, m.declination, m.plates, m.slew, 100 * air, o.median().c_str(),
                        o.ninetyFive().c_str(), o.major().c_str(), o.percent(o.one).c_str(),
                        o.percent(o.two).c_str());
        }
}

void manyPlates() {
    title("Seven plates of 5° against three of 15°",
          "| plates | arc | roll | median | 95 % | with a jump of 5\" at the middle plate: median | 95 % | "
          "without the "
          "blamed plate: median | 95 % |",
          9);
    const Measurement rows[] = {
        {50, 0, 30, 15, 3}, {50, 0, 30, 5, 7}, {50, 0, 30, 7.5, 5}, {50, 0, 30, 30, 3}, {50, 0, 30, 10, 7}};
    for (const bool roll : {false, true})
        for (const Measurement& row : rows) {
            Measurement m = row;
            m.roll = roll;
            m.errors.roll = 15;
            const auto jump = [](Plates& plates) { plates[plates.size() / 2].declination += 5 / 3600.0; };
            Outcome plain = outcomeOf(m);
            Outcome jumped = outcomeOf(m, jump);
            Outcome cleaned = outcomeWithoutBlamed(m, jump);
            std::printf("| %d of %g° | %g° | %s | %s | %s | %s | %s | %s | %s |\n", m.plates, m.slew,
                        m.slew * (m.plates - 1), roll ? "15\"" : "no", plain.median().c_str(),
                        plain.ninetyFive().c_str(), jumped.median().c_str(), jumped.ninetyFive().c_str(),
                        cleaned.median().c_str(), cleaned.ninetyFive().c_str());
        }
}

void roll() {
    title("What the roll is worth", "| slew | declination | no roll | 30\" | 15\" | 5\" |", 6);
    for (const double slew : {5.0, 10.0, 20.0, 30.0})
        for (const double declination : {0.0, 60.0}) {
            std::printf("| %g° | %g° |", slew, declination);
            for (const double sigma : {0.0, 30.0, 15.0, 5.0}) {
                Measurement m{50, 0, declination, slew, 3};
                m.roll = sigma > 0;
                m.errors.roll = sigma;
                Outcome o = outcomeOf(m);
                std::printf(" %s |", o.median().c_str());
            }
            std::printf("\n");
        }
}

void fewerPlates() {
    title("A plate left out", "| plates | slew | all | without the first | without the middle one |", 5);
    const Measurement rows[] = {{50, 0, 30, 20, 3}, {50, 0, 30, 10, 5}, {50, 0, 30, 5, 7}};
    for (const Measurement& m : rows) {
        const auto without = [](std::size_t plate) {
            return [plate](Plates& p) { p.erase(p.begin() + static_cast<std::ptrdiff_t>(plate)); };
        };
        Outcome all = outcomeOf(m);
        Outcome noFirst = outcomeOf(m, without(0));
        Outcome noMiddle = outcomeOf(m, without(static_cast<std::size_t>(m.plates / 2)));
        std::printf("| %d | %g° | %s | %s | %s |\n", m.plates, m.slew, all.median().c_str(),
                    noFirst.median().c_str(), noMiddle.median().c_str());
    }
}

void againstTheWritten() {
    title("Against the written calculation, in the open air",
          "| hour angle | declination | slew | written: reported | median | 95 % | estimate: median | 95 % |",
          8);
    const Measurement rows[] = {{50, 0, 30, 20, 3}, {50, 0, 0, 20, 3},  {50, 0, 60, 20, 3},
                                {50, 3, 30, 20, 3}, {50, 0, 30, 40, 3}, {50, 5.5, 45, 15, 3},
                                {50, -6, 60, 15, 3}};
    for (Measurement m : rows) {
        m.errors.roll = 20;
        m.airError = 0.05;
        Outcome written = outcomeOf(m, engine::WrittenCalculation(m.settings()));
        Outcome estimate = outcomeOf(m);
        std::printf("| %g h | %g° | %g° | %s | %s | %s | %s | %s |\n", m.middle, m.declination, m.slew,
                    (std::to_string(100 * written.valid / trials) + " %").c_str(), written.median().c_str(),
                    written.ninetyFive().c_str(), estimate.median().c_str(), estimate.ninetyFive().c_str());
    }
}

struct FaultCase {
    const char* name;
    engine::Fault fault;
    double size;  // arc-seconds
    std::function<void(Plate&, double)> act;
};

void verdicts() {
    title("What is noticed, and called by its name",
          "| fault, from the middle plate on | plates | roll | readings | noticed | fault named | plate "
          "named, too | "
          "smallest that is noticed 9 times of 10 |",
          8);
    const FaultCase faults[] = {
        {"5\" in declination", engine::Fault::kDeclinationMoved, 5,
         [](Plate& p, double size) { p.declination += size / 3600; }},
        {"the camera turned by 90\"", engine::Fault::kCameraTurned, 90,
         [](Plate& p, double size) {
             if (p.positionAngle) *p.positionAngle += size / 3600;
         }},
        {"5' of slip", engine::Fault::kReadingDisagrees, 300, [](Plate& p, double size) {
             if (p.reading) p.reading->hourAngle += size / 3600 / 15;
         }}};
    struct Set {
        int plates;
        double slew, declination;
        bool hasRoll;
        test::Errors errors;
    };
    const Set sets[] = {{3, 15, 30, true, {0.3, 20, 60}},  {3, 15, 30, true, {0.3, 8, 60}},
                        {3, 20, 30, true, {0.3, 8, 60}},   {3, 30, 30, true, {0.3, 20, 60}},
                        {3, 15, 60, true, {0.3, 20, 10}},  {5, 7.5, 30, true, {0.3, 20, 60}},
                        {5, 10, 30, false, {0.3, 20, 60}}, {7, 5, 30, false, {0.3, 20, 60}},
                        {7, 5, 30, true, {0.3, 20, 60}}};
    const int count = std::min(trials, 400);
    for (const FaultCase& fault : faults)
        for (const Set& set : sets) {
            if (fault.fault == engine::Fault::kCameraTurned && !set.hasRoll) continue;
            Measurement m{50, 0.5, set.declination, set.slew, set.plates, set.errors, set.hasRoll};
            std::mt19937 random(7);
            int noticed = 0;
            int named = 0;
            int placed = 0;
            double smallest = 0;
            const int middle = set.plates / 2;
            for (int trial = 0; trial < count; ++trial) {
                const auto mount = m.mount(random);
                Plates plates = m.taken(mount, random);
                for (auto plate = plates.begin() + middle; plate != plates.end(); ++plate)
                    fault.act(*plate, fault.size);
                const auto verdict = engine::judge(plates, mount.site, m.settings());
                for (const auto& s : verdict.suspicions)
                    if (trial == 0 && s.fault == fault.fault)
                        smallest = std::max(smallest, s.smallestVisible);
                if (verdict.agreement != engine::Agreement::kSuspicious) continue;
                ++noticed;
                const auto& first = verdict.suspicions.front();
                named += first.fault == fault.fault;
                // With three plates what lasts from the second on is the first one's own fault.
                const bool here =
                    set.plates == 3 ? first.plate == 1 : first.plate == middle + 1 && first.lasting;
                placed += first.fault == fault.fault && here;
            }
            const auto share = [&](int n) { return 100 * n / count; };
            std::printf(
                "| %s | %d of %g° at %g° | %s | %g\" | %d %% | %d %% | %d %% | %s |\n", fault.name,
                set.plates, set.slew, set.declination,
                set.hasRoll ? (std::to_string(static_cast<int>(set.errors.roll)) + "\"").c_str() : "no",
                set.errors.reading, share(noticed), share(named), share(placed),
                smallest > 0 ? Outcome::number(smallest).c_str() : "never");
        }
}

void exposures() {
    title("Where twelve exposures are best spent", "| first, middle, last | stated, long side |", 2);
    const std::vector<int> rows[] = {{4, 4, 4}, {3, 6, 3}, {2, 8, 2}, {5, 2, 5}};
    for (const auto& row : rows) {
        const auto prospect =
            engine::foresee({.hourAngle = -1,
                             .declination = 30,
                             .slew = 15,
                             .exposures = row,
                             .centreSigma = 0.6,
                             .rollSigma = std::nullopt,
                             .readings = false},
                            {50, engine::standardAir(300)}, {.centreFloor = 0, .sagSigma = 0});
        std::printf("| %d, %d, %d | %s |\n", row[0], row[1], row[2],
                    Outcome::number(prospect.covariance.ellipse().major).c_str());
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc > 1) trials = std::max(10, std::atoi(argv[1]));
    std::printf(
        "%d measurements a row; errors of a plate: centre 0.3\" in each direction, roll 20\" where nothing "
        "else is said, the mount's hour angle 60\"; axis errors up to a degree.\n",
        trials);
    honesty();
    againstTheWritten();
    manyPlates();
    fewerPlates();
    roll();
    exposures();
    verdicts();
}
