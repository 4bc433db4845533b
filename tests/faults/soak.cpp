// soak: a night of continuous exposures in virtual time, and what it takes of the memory.
//
//   soak [--hours H]
//
// Prints the exposures and the bytes on the heap at every tenth of the time. Fails when the heap grows by
// more than a log line's worth for each exposure after the first tenth.

#include <cstdio>
#include <cstdlib>
#include <string>

#include <malloc.h>

#include "faults/network_night.h"

namespace {

using namespace vantrel::faults;

constexpr double kMostBytesAnExposure = 100;
constexpr int kSamples = 10;

struct Sample {
    long exposures = 0;
    std::size_t heap = 0;
};

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
        samples.push_back({exposures, ::mallinfo2().uordblks});
    });
    std::printf("%s\n%10s %12s\n", equipment.name, "exposures", "heap bytes");
    for (const Sample& s : samples) std::printf("%10ld %12zu\n", s.exposures, s.heap);
    for (const std::string& defect : outcome.defects) std::printf("%s\n", defect.c_str());
    const Sample &first = samples.front(), &last = samples.back();
    const auto exposures = static_cast<double>(last.exposures - first.exposures);
    const double growth = static_cast<double>(last.heap) - static_cast<double>(first.heap);
    std::printf("%.1f bytes an exposure\n", growth / exposures);
    return exposures > 0 && growth < kMostBytesAnExposure * exposures && outcome.defects.empty();
}

}  // namespace

int main(int argc, char** argv) {
    const double hours = argc == 3 ? std::atof(argv[2]) : 24;
    const NetworkEquipment all[] = {
        {kSetUps[0], {}}, {kSetUps[1], {}}, {kSetUps[2], {}}, indiEquipment(), alpacaEquipment()};
    bool good = true;
    for (const NetworkEquipment& devices : all) good = soak(devices, hours) && good;
    return good ? EXIT_SUCCESS : EXIT_FAILURE;
}
