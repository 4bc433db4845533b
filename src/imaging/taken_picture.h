// What a camera handed out, as a picture with its header.
#pragma once

#include "imaging/picture.h"
#include "platform/camera_hardware.h"

namespace vantrel::imaging {

/// Reads the file that it came as, if it came as one. Throws FitsError when that isn't a sound image.
Picture pictureOf(platform::TakenPicture taken);

/// What a header has of the state that the camera is in: gain, offset, temperatures. What isn't known has no
/// card.
std::vector<fits::FitsCard> cardsOf(const platform::CameraFacts& camera);

}  // namespace vantrel::imaging
