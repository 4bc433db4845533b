#include "engine/simulator_exposure.h"

namespace vantrel::engine {

void exposeWithSimulator(const Services& services) { services.telescope.simulatorExpose(); }

void saveSimulatorImage(const Services& services, RunState& state, const std::string& name) {
    state.LastSavedImage = name;
    services.telescope.simulatorSaveImage(services.settings.GetSetting("PolarAlign", "ImagePath", "C:") +
                                          "\\" + state.LastSavedImage + ".fit");
}

}  // namespace vantrel::engine
