#include "app/camera_readings.h"

#include <optional>
#include <string>
#include <utility>

#include "platform/text.h"

namespace vantrel::app {
namespace {

using platform::CameraFacts;
using platform::CameraLevel;
using platform::Words;

std::string valueOf(const CameraLevel& level) {
    const auto place = static_cast<std::size_t>(level.value < 0 ? 0 : level.value);
    return place < level.names.size() ? level.names[place] : platform::toText(level.value);
}

Words reading(const std::optional<CameraLevel>& level) {
    if (!level) return Words::tr("This camera has none");
    const std::string value = valueOf(*level);
    if (!level->canSet) return Words::tr("%1, can't be set", {value});
    if (!level->range) return value;
    return Words::tr("%1, takes %2 to %3", {value, platform::toText(level->range->least),
                                            platform::toText(level->range->greatest)});
}

std::string namesOf(const std::optional<CameraLevel>& level) {
    std::string names;
    if (level)
        for (const std::string& name : level->names) names += (names.empty() ? "" : ", ") + name;
    return names;
}

bool canCool(const CameraFacts& camera) { return camera.canCool || camera.cooling; }

Words coolingOf(const CameraFacts& camera) {
    if (!canCool(camera)) return Words::tr("no cooler");
    if (camera.cooling == false) return Words::tr("cooler off");
    if (camera.coolerPower)
        return Words::tr("cooler at %1 %", {platform::formatNumber(*camera.coolerPower, "0")});
    return camera.cooling ? Words::tr("cooler on") : "";
}

Words temperatureReading(const CameraFacts& camera) {
    if (!camera.temperature)
        return canCool(camera) ? coolingOf(camera) : Words::tr("This camera has no cooler");
    const std::string celsius = platform::formatNumber(*camera.temperature, "0.0") + " °C";
    const Words cooling = coolingOf(camera);
    return cooling.empty() ? celsius : Words::tr("%1, %2", {celsius, cooling});
}

}  // namespace

CameraReadings::CameraReadings(frmDevices& window, std::function<const platform::CameraHardware&()> camera)
    : window_(window), camera_(std::move(camera)), opening_(window.changed.subscribe([this] {
          if (std::exchange(opened_, window_.shown()) != window_.shown()) show();
      })) {}

void CameraReadings::show() {
    if (!window_.shown()) return;
    const platform::CameraHardware* const camera = camera_ ? &camera_() : nullptr;
    const bool known = camera != nullptr && camera->connected();
    const CameraFacts facts = known ? camera->facts() : CameraFacts();

    const auto showLevel = [&](platform::TextBox& box, platform::Label& label,
                               const std::optional<CameraLevel>& level) {
        box.setEnabled(!known || (level && level->canSet));
        label.setCaption(known ? reading(level) : "");
        label.setToolTip(namesOf(level));
    };
    showLevel(window_.txtCameraGain, window_.lblCameraGain, facts.gain);
    showLevel(window_.txtCameraOffset, window_.lblCameraOffset, facts.offset);
    window_.chkCameraCooling.setEnabled(!known || canCool(facts));
    window_.txtCameraTemperature.setEnabled(!known || facts.canCool);
    window_.lblCameraCooling.setCaption(known ? temperatureReading(facts)
                                              : Words::tr("The camera is not connected"));
}

}  // namespace vantrel::app
