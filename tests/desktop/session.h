// The whole program on the desk, from one start to its end.
#pragma once

#include <QWidget>
#include <sstream>

#include "desktop/desk.h"
#include "qt/program.h"
#include "qt/temporary_home.h"
#include "qt/unattended_run.h"

namespace vantrel::desktop {

struct Session {
    Desk desk;
    platform::UserMachine user;
    std::ostringstream boxes;
    qt::UnattendedDialogs dialogs{boxes};
    qt::Program program;

    explicit Session(const qt::TemporaryHome& home)
        : user(home.paths()), program(desk.front, user, dialogs, 1) {
        program.openWindows();
        desk.loop.post([this] { program.application().start(); });
    }

    qt::FormWindow& window(const char* form) const { return program.window(form); }

    bool isStarted() {
        return comesTrue([&] { return window("frmMain").isVisible() && !program.application().busy(); });
    }
    bool ends() {
        program.application().close();
        return comesTrue([&] { return program.application().ended(); });
    }
};

}  // namespace vantrel::desktop
