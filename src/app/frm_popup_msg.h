// The borderless window of a message that closes by itself.
#pragma once

#include "platform/form.h"

namespace vantrel::app {

class frmPopupMsg : public platform::Form {
  public:
    explicit frmPopupMsg(platform::Screen& screen)
        : Form(screen, "frmPopupMsg", "", {0, 0, 0, 0}),
          txtMsg(*this, "txtMsg"),
          txtDummy(*this, "txtDummy") {
        txtMsg.setReadOnly(true);
        txtDummy.setVisible(false);
    }

    /// Makes the window as large as its text needs and puts it into the middle of the screen.
    void SizeForm_TextBox();

    platform::TextBox txtMsg, txtDummy;
};

}  // namespace vantrel::app
