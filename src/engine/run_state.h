// What the procedures of one program share: flags that buttons set and waits read, and the last solve's
// outcome.
#pragma once

#include <string>

#include "platform/words.h"

namespace vantrel::engine {

/// One for the life of the program, owned by the composition of the main form. Every flag has one setter
/// named here; everybody may read.
struct RunState {
    bool StopRequested = false;        // the Stop button; forgotten by whatever starts something new
    bool AppUnloading = false;         // shutdown: every procedure returns at its next check, silently
    bool NextClicked = false;          // the Next button
    bool SkipClicked = false;          // the Skip button
    bool UsingAxisSimulator = false;   // telescope link: the driver is the simulator that exposes by itself
    double ExposureRA = 0;             // hours in [0, 24): mount position of the exposure about to be solved
    double ExposureDec = 0;            // degrees
    bool SpiralSearchAllowed = false;  // the caller of a solve: it may search around the start position
    bool WholeSkyAllowed = false;      // and anywhere, where nobody knows the start position
    bool PlateSolved = false;          // the last solve succeeded
    platform::Words WhyUnsolved;       // what the plate lacks that wasn't, where the solver tells
    double PlateRAError = 0;           // hours in [0, 24): solved less exposure position, of the last success
    double PlateDecError = 0;          // degrees
    bool CameraFailed = false;         // camera link: the last exposure failed or was aborted
    bool SlewEast = true;              // direction of the run's slews
    std::string PlateSolveMethod;      // "PP", "TheSky", or empty while none was chosen
    std::string LastMessage;           // text of the last report
    std::string LastSavedImage;        // file name of the image saved last, without its folder

    /// Something new begins. Only the stop that the end of the program asks for stays.
    void forgetStop() {
        if (!AppUnloading) StopRequested = false;
        WhyUnsolved = {};
    }
};

}  // namespace vantrel::engine
