#include "engine/interlock.h"

namespace vantrel::engine {

void Interlock::change(int by) {
    engaged_ += by;
    for (platform::Control* control : controls_) control->setHeld(engaged_ > 0);
}

}  // namespace vantrel::engine
