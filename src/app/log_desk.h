// What the Log window does.
#pragma once

#include "app/frm_log.h"
#include "app/frm_main.h"
#include "engine/ports.h"

namespace vantrel::app {

class LogDesk {
  public:
    LogDesk(frmLog& window, frmMain& main, engine::SettingsPort& settings, engine::LogPort& log);

  private:
    void Form_Load();
    void mnuOnTop_Click();
    bool outOfSight() const;
    void savePlace();
    void saveSize();

    frmLog& window_;
    frmMain& main_;
    engine::SettingsPort& settings_;
};

}  // namespace vantrel::app
