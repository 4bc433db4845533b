// restless_operator: an operator who clicks, types and closes at random, and one who presses Stop in every
// turn of the loop. Whatever he does, the program ends within ten seconds of his wish, a measurement that
// succeeds is right, and nothing exposes or slews after a Stop.
//
//   restless_operator [--nights N] [--seed FIRST] [--stops N]
//
// --nights random nights for each set-up from that seed on, --stops as many places to stop for each activity.

#include <cstdlib>
#include <string>

#include "faults/night.h"
#include "faults/table_options.h"

namespace {

using namespace vantrel::faults;

class Report : public TableReport {
  public:
    using TableReport::TableReport;

    void add(const std::string& name, const Outcome& outcome) {
        ++cases_;
        for (const std::string& defect : outcome.defects) complain(name, defect);
    }
};

void spendNights(Report& report, long nights, long first) {
    for (long seed = first; seed < first + nights; ++seed) {
        const Equipment& equipment = kSetUps[seed % std::size(kSetUps)];
        Outcome outcome;
        try {
            outcome = Night(equipment).spendRestlessly(static_cast<std::uint64_t>(seed));
        } catch (const std::exception& error) {
            outcome.defects.push_back(std::string("doesn't end: ") + error.what());
        }
        report.add(std::string(equipment.name) + ", seed " + std::to_string(seed), outcome);
    }
}

void stopEverywhere(Report& report, long stops) {
    for (const Equipment& equipment : kSetUps)
        for (const Activity activity : {Activity::kMeasurement, Activity::kCorrection}) {
            const long turns = Night(equipment).turnsOf(activity);
            for (long i = 0; i < stops; ++i) {
                const long turn = turns * i / stops;
                report.add(std::string(equipment.name) + ", " + nameOf(activity) + ", Stop in turn " +
                               std::to_string(turn) + " of " + std::to_string(turns),
                           Night(equipment).stopInTurn(activity, turn));
            }
        }
}

}  // namespace

int main(int argc, char** argv) {
    long nights = 0, first = 0, stops = 0;
    for (int i = 1; i + 1 < argc; i += 2) {
        const std::string option = argv[i];
        const long value = std::atol(argv[i + 1]);
        if (option == "--nights") nights = value;
        if (option == "--seed") first = value;
        if (option == "--stops") stops = value;
    }
    Report report(TableOptions(0, nullptr));
    spendNights(report, nights, first);
    stopEverywhere(report, stops);
    return report.report();
}
