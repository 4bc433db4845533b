// network_table: everything that servers, drivers and cables do wrong, while the program with a real mount
// and camera is at each of its activities: it reports, its window answers, it can be used afterwards, and no
// line of its log is lost. Which requests there are is seen in a night in which nothing goes wrong.
//
//   network_table [--part N/M] [--only TEXT]
//
// --part takes one share of the table, --only the cases whose name contains the text, with what the program
// said.

#include "faults/network_night.h"
#include "faults/table_options.h"

namespace {

using namespace vantrel::faults;

constexpr Activity kActivities[] = {Activity::kStart,   Activity::kMeasurement, Activity::kSeries,
                                    Activity::kStop,    Activity::kSolve,       Activity::kReconnect,
                                    Activity::kShutdown};

/// As long as the program may take to notice that all is well again.
constexpr double kLongestAbsence = 60;  // seconds

class Table : public TableReport {
  public:
    using TableReport::TableReport;

    void run(const NetworkEquipment& equipment) {
        for (const Activity activity : kActivities) {
            const Calm calm = calmNight(equipment, activity);
            const std::string name = std::string(equipment.equipment.name) + ", " + nameOf(activity) + ", ";
            for (const std::string& defect : calm.defects) complain(name + "nothing wrong", defect);
            for (std::size_t i = 0; i < calm.faults.size(); ++i)
                runCase(name + calm.faults[i], equipment, activity,
                        [&](NetworkDevices& devices) { return allFaults(devices, calm.requests)[i]; });
            for (std::size_t i = 0; i < calm.accidents.size(); ++i)
                for (long turn = 0; turn <= calm.turns; ++turn)
                    runCase(name + calm.accidents[i] + " in turn " + std::to_string(turn), equipment,
                            activity, [&](NetworkDevices& devices) {
                                NetworkFault fault = devices.accidents()[i];
                                fault.turn = turn;
                                return fault;
                            });
        }
    }

  private:
    /// What a night without a fault shows.
    struct Calm {
        std::vector<std::string> requests, faults, accidents, defects;
        long turns = 0;
    };

    static std::vector<NetworkFault> allFaults(NetworkDevices& devices,
                                               const std::vector<std::string>& requests) {
        std::vector<NetworkFault> all;
        for (const std::string& request : requests)
            for (NetworkFault& fault : devices.faultsOf(request)) all.push_back(std::move(fault));
        return all;
    }

    static Calm calmNight(const NetworkEquipment& equipment, Activity activity) {
        Calm calm;
        std::shared_ptr<NetworkDevices> devices;
        Night night(equipment.equipment,
                    [&](const Workshop& workshop) { return devices = equipment.bring(workshop); });
        night.mountSlews = [&] { return devices->mountSlews(); };
        night.onBegin = [&] { devices->takeRequests(); };
        night.onTurn = [&] { ++calm.turns; };
        night.onRepair = [&] {
            calm.requests = devices->takeRequests();
            night.onTurn = nullptr;
        };
        const Outcome outcome = night.spend(activity, std::nullopt);
        if (activity == Activity::kShutdown) calm.requests = devices->takeRequests();
        calm.defects = outcome.defects;
        if (outcome.slewsOn) calm.defects.push_back("the mount slews on after Stop");
        for (const NetworkFault& fault : allFaults(*devices, calm.requests))
            calm.faults.push_back(fault.name);
        for (const NetworkFault& fault : devices->accidents()) calm.accidents.push_back(fault.name);
        return calm;
    }

    void runCase(const std::string& name, const NetworkEquipment& equipment, Activity activity,
                 const std::function<NetworkFault(NetworkDevices&)>& choose) {
        if (!options_.chooses(name)) return;
        std::shared_ptr<NetworkDevices> devices;
        Night night(equipment.equipment,
                    [&](const Workshop& workshop) { return devices = equipment.bring(workshop); });
        night.mountSlews = [&] { return devices->mountSlews(); };
        const NetworkFault fault = choose(*devices);
        long turn = 0;
        night.onBegin = [&] {
            if (fault.turn == 0) fault.strike();
        };
        night.onTurn = [&] {
            if (++turn == fault.turn) fault.strike();
        };
        night.onRepair = [&] {
            night.onTurn = nullptr;
            devices->repair();
            night.rest(kLongestAbsence);
        };
        const Outcome outcome = night.spend(activity, std::nullopt);
        ++cases_;
        for (const std::string& defect : outcome.defects) complain(name, defect);
        if (outcome.hung) complain(name, "hangs, even after Stop");
        tell(outcome.said);
    }
};

}  // namespace

int main(int argc, char** argv) {
    Table table(TableOptions(argc, argv));
    table.run(indiEquipment());
    table.run(alpacaEquipment());
    return table.report();
}
