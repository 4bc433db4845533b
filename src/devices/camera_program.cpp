#include "devices/camera_program.h"

#include "platform/text.h"

namespace vantrel::devices {

using namespace platform;

void CameraTools::report(const OperationError& error, const char* label) const {
    const std::string text = sourcedErrorReport(error, label);
    services.messages.ShowPopupMessage(text, kMessageSeconds);
    services.log.AddToLog(text);
}

std::int16_t CameraTools::binning() const {
    return toInt16(toNumber(services.settings.GetSetting("Solve", "CamBin", "3")));
}

double CameraTools::graceDelay() const {
    const std::string& text = fields.txtPostExpDelay.text();
    return text > "0" ? leadingNumber(text) : 0;
}

void CameraTools::bringProgramForward() const {
    if (leadingNumber(services.settings.GetSetting("PolarAlign", "EnableRestoreImagingSW", "0")) == 1)
        windows.BringImagingSWToFront();
}

ObjectRef held(const ObjectRef& object) {
    required(object);
    return object;
}

}  // namespace vantrel::devices
