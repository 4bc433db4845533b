#include "headless/lookup.h"

namespace vantrel::headless {

using namespace platform;

Form& requiredForm(const Screen& screen, const std::string& name) {
    if (Form* form = screen.find(name)) return *form;
    throw CommandError("No such window: " + name);
}

Control& requiredControl(const Screen& screen, const std::string& path) {
    if (Control* control = screen.findControl(path)) return *control;
    throw CommandError("No such control: " + path);
}

}  // namespace vantrel::headless
