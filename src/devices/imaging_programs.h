// Which of the two imaging programs takes the pictures, and the objects that the program holds of them.
#pragma once

#include <string>

#include "platform/automation.h"

namespace vantrel::devices {

struct ImagingPrograms {
    std::string ImagingSoftware;  // "MaxIm", "CCDSoft", or "NeedToSelect" (or empty) while undecided

    platform::ObjectRef maxImCamera;
    platform::ObjectRef ccdSoftCamera;
    platform::ObjectRef ccdSoftImage;

    bool usesMaxIm() const { return ImagingSoftware == "MaxIm"; }
    bool usesCCDSoft() const { return ImagingSoftware == "CCDSoft"; }
    void releaseObjects() { maxImCamera = ccdSoftCamera = ccdSoftImage = nullptr; }
};

}  // namespace vantrel::devices
