#include "engine/indicators.h"

#include "platform/text.h"

namespace vantrel::engine {

using namespace platform;

bool nightVision(SettingsPort& settings) {
    return leadingNumber(settings.GetSetting("PolarAlign", "GreenColors", "0")) != 0;
}

void Indicators::SetActiveColors(Label& label) const {
    const bool green = nightVision(settings_);
    label.setBackColor(green ? color::kDarkGreen : color::kRed);
    label.setForeColor(green ? color::kIndicatorOffBack : color::kBlack);
}

void Indicators::SetActiveColors(Button& button) const {
    button.setBackColor(nightVision(settings_) ? color::kDarkGreen : color::kRed);
}

void Indicators::switchOff(Label& label) {
    label.setBackColor(color::kIndicatorOffBack);
    label.setForeColor(color::kIndicatorOffFore);
}

void Indicators::switchOff(Button& button) { button.setBackColor(color::kButtonFace); }

bool Indicators::isLit(const Button& button) {
    return button.backColor() == color::kRed || button.backColor() == color::kDarkGreen;
}

}  // namespace vantrel::engine
