// The window to think in before the first slew: how good the measurement will be, what its arc looks like,
// and where on the sky it would be better.
#pragma once

#include "platform/form.h"

namespace vantrel::engine {

class frmPreflight : public platform::Form {
  public:
    explicit frmPreflight(platform::Screen& screen);

    platform::PictureBox picSky;    // coloured by the expected uncertainty
    platform::TextBox txtForecast;  // several lines
    platform::TextBox txtLowest;    // degrees: lower than this nothing is looked at
    platform::TextBox txtHorizon;   // file of the horizon, may be empty
    platform::Button cmdLook;       // reads the mount, and looks ahead again
    platform::TextBox txtProposal;  // a better place
    platform::Button cmdSlewThere;
    platform::Button cmdOK;
};

}  // namespace vantrel::engine
