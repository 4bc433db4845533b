// fault_table: for every member of every outside program, in every way that it can go wrong, while the
// program is at each of its activities: it reports, can be used afterwards, leaves the mount at rest, and
// loses no line of its log. Which members there are is seen in a night in which nothing goes wrong.
//
//   fault_table [--part N/M] [--only TEXT]
//
// --part takes one share of the table, --only the cases whose name contains the text, with what the program
// said.

#include <algorithm>
#include <set>

#include "faults/night.h"
#include "faults/table_options.h"

namespace {

using namespace vantrel::faults;

constexpr Activity kActivities[] = {Activity::kStart,      Activity::kMeasurement, Activity::kSeries,
                                    Activity::kCorrection, Activity::kStop,        Activity::kSolve,
                                    Activity::kReconnect,  Activity::kShutdown};
constexpr Kind kKinds[] = {Kind::kRaises,   Kind::kFalse,      Kind::kTrue,    Kind::kEmpty, Kind::kHuge,
                           Kind::kNegative, Kind::kNotANumber, Kind::kGarbage, Kind::kSlow,  Kind::kGone};

/// For ever from the first use on, for ever from the middle on, or just once in the middle.
struct Course {
    const char* name;
    bool late;
    bool once;
};
constexpr Course kCourses[] = {{"always", false, false}, {"later", true, false}, {"once", true, true}};

/// The text without its numbers, which differ from night to night.
std::string withoutNumbers(const std::string& text) {
    std::string result;
    for (const char c : text)
        if (!std::isdigit(static_cast<unsigned char>(c)) && c != '-') result += c;
    return result;
}

std::multiset<std::string> comparable(const std::vector<std::string>& said) {
    std::multiset<std::string> lines;
    for (const std::string& line : said) lines.insert(withoutNumbers(line));
    return lines;
}

/// Errors of the plate solver stop nothing once it holds the image: the line of the step that failed is left
/// out, but what comes of the solve is told.
bool maySayLess(const std::vector<std::string>& missing) {
    return std::all_of(missing.begin(), missing.end(), [](const std::string& line) {
        for (const char* step :
             {"Plate Solve Attempt at", "Step ", " Solved using", " RA Error", " Dec Error"})
            if (line.starts_with(step)) return true;
        return false;
    });
}

/// Waits that only the mount's or the desktop's answer ends, or closing the program.
bool mayWaitForEver(const Member& member) { return member.name == "slewing" || member.object == "desktop"; }

class Table : public TableReport {
  public:
    using TableReport::TableReport;

    void run() {
        for (const Equipment& equipment : kSetUps)
            for (const Activity activity : kActivities) {
                const Outcome calm = Night(equipment).spend(activity, std::nullopt);
                for (const std::string& defect : calm.defects)
                    complain(std::string(equipment.name) + ", " + nameOf(activity) + ", nothing wrong",
                             defect);
                for (const auto& [member, seen] : calm.seen)
                    runMember(equipment, activity, calm, member, seen);
            }
    }

  private:
    void runMember(const Equipment& equipment, Activity activity, const Outcome& calm, const Member& member,
                   const Sighting& seen) {
        for (const Kind kind : kKinds) {
            if (!applies(kind, member, seen)) continue;
            for (const Course& course : kCourses) {
                if (course.late && seen.uses < 2) continue;
                if (course.once && kind == Kind::kGone) continue;
                if (course.late && !course.once && kind != Kind::kRaises && kind != Kind::kGone) continue;
                const std::string name = std::string(equipment.name) + ", " + nameOf(activity) + ", " +
                                         member.text() + ", " + nameOf(kind) + ", " + course.name;
                if (!options_.chooses(name)) continue;
                Fault fault{member, kind};
                if (course.late) fault.after = seen.uses / 2;
                if (course.once) fault.times = 1;
                judge(name, member, calm, Night(equipment).spend(activity, fault));
            }
        }
    }

    void judge(const std::string& name, const Member& member, const Outcome& calm, const Outcome& outcome) {
        ++cases_;
        const auto expected = comparable(calm.said);
        const auto said = comparable(outcome.said);
        std::vector<std::string> missing, added;
        std::set_difference(expected.begin(), expected.end(), said.begin(), said.end(),
                            std::back_inserter(missing));
        std::set_difference(said.begin(), said.end(), expected.begin(), expected.end(),
                            std::back_inserter(added));
        for (const std::string& defect : outcome.defects) complain(name, defect);
        if (outcome.struck > 0 && !missing.empty() && added.empty() && !maySayLess(missing))
            complain(name, "says nothing, though it leaves out \"" + missing.front() + "\"");
        if (outcome.hung && !mayWaitForEver(member)) complain(name, "hangs, even after Stop");
        tell(outcome.said);
    }
};

}  // namespace

int main(int argc, char** argv) {
    Table table(TableOptions(argc, argv));
    table.run();
    return table.report();
}
