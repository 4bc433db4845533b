// Which imaging program takes the pictures, and the objects that are held of them.
#pragma once

#include <string>

#include "platform/automation.h"

namespace vantrel::devices {

struct ImagingObjects {
    std::string
        ImagingSoftware;  // "MaxIm", "CCDSoft", "BuiltIn", or "NeedToSelect" (or empty) while undecided

    platform::ObjectRef maxImCamera;
    platform::ObjectRef ccdSoftCamera;
    platform::ObjectRef ccdSoftImage;
    platform::ObjectRef builtInCamera;

    bool usesMaxIm() const { return ImagingSoftware == "MaxIm"; }
    bool usesCCDSoft() const { return ImagingSoftware == "CCDSoft"; }
    bool usesBuiltIn() const { return ImagingSoftware == "BuiltIn"; }
    void releaseObjects() { maxImCamera = ccdSoftCamera = ccdSoftImage = builtInCamera = nullptr; }
};

}  // namespace vantrel::devices
