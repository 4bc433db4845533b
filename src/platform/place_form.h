// Where windows may stand.
#pragma once

#include "platform/form.h"

namespace vantrel::platform {

/// The window where it is, unless its middle lies beyond an edge of the work area: then moved back inside,
/// along that edge. A window larger than the work area keeps its upper left corner in view.
Rectangle keptOnScreen(Rectangle window, const Rectangle& workArea);

/// Moves a window to a stored position (pixels; any number, it may have been stored on another screen), kept
/// inside the work area.
void PlaceFormOnScreen(Form& form, double top, double left);

}  // namespace vantrel::platform
