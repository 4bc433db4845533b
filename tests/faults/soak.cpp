// soak: a night of continuous exposures in virtual time, and what it takes of the memory.
//
//   soak [--hours H] [--equipment 0..4]     (3 and 4: INDI and Alpaca)
//
// Prints the exposures, the bytes on the heap and the process's memory at every tenth of the time. Fails when
// the heap grows by more than a log line's worth for each exposure after the first tenth.

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include <malloc.h>
#include <unistd.h>

#include "faults/network_night.h"

namespace {

using namespace vantrel::faults;

constexpr double kMostBytesAnExposure = 100;
constexpr int kSamples = 10;

struct Sample {
    long exposures = 0;
    std::size_t heap = 0;
    long resident = 0;  // kilobytes
};

Sample sample(long exposures) {
    long total = 0, resident = 0;
    std::ifstream("/proc/self/statm") >> total >> resident;
    return {exposures, ::mallinfo2().uordblks, resident * (::sysconf(_SC_PAGESIZE) / 1024)};
}

/// True when the heap stayed as it was after the first tenth of the night.
bool soak(const NetworkEquipment& devices, double hours) {
    const Equipment& equipment = devices.equipment;
    std::shared_ptr<NetworkDevices> servers;
    Night night(equipment, devices.bring
                               ? [&](const Workshop& workshop) { return servers = devices.bring(workshop); }
                               : Night::Bring());
    std::vector<Sample> samples;
    const auto outcome = night.exposeFor(hours * 3600 / kSamples, kSamples, [&](long exposures) {
        // What the servers write down isn't the program's.
        if (servers) servers->takeRequests();
        samples.push_back(sample(exposures));
    });
    std::printf("%s\n%10s %12s %12s\n", equipment.name, "exposures", "heap bytes", "resident kB");
    for (const Sample& s : samples) std::printf("%10ld %12zu %12ld\n", s.exposures, s.heap, s.resident);
    for (const std::string& defect : outcome.defects) std::printf("%s\n", defect.c_str());
    const Sample &first = samples.front(), &last = samples.back();
    const auto exposures = static_cast<double>(last.exposures - first.exposures);
    const double growth = static_cast<double>(last.heap) - static_cast<double>(first.heap);
    std::printf("%.1f bytes an exposure\n", growth / exposures);
    return exposures > 0 && growth < kMostBytesAnExposure * exposures && outcome.defects.empty();
}

}  // namespace

int main(int argc, char** argv) {
    double hours = 24;
    int only = -1;
    for (int i = 1; i + 1 < argc; i += 2) {
        if (std::string(argv[i]) == "--hours") hours = std::atof(argv[i + 1]);
        if (std::string(argv[i]) == "--equipment") only = std::atoi(argv[i + 1]);
    }
    const NetworkEquipment all[] = {
        {kSetUps[0], {}}, {kSetUps[1], {}}, {kSetUps[2], {}}, indiEquipment(), alpacaEquipment()};
    bool good = true;
    for (int i = 0; i < 5; ++i)
        if (only < 0 || only == i) good = soak(all[i], hours) && good;
    return good ? EXIT_SUCCESS : EXIT_FAILURE;
}
