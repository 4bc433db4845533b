#include <QPlainTextEdit>
#include <QPushButton>

#include <gtest/gtest.h>

#include "app/frm_main.h"
#include "desktop/desk.h"
#include "qt/windows.h"

namespace vantrel::desktop {
namespace {

// Nothing but the procedure itself is there to wake the toolkit: no timer, no hand on the mouse.
TEST(Repaint, ComesWhileAProcedureWaits) {
    Desk desk;
    platform::Screen screen({0, 0, 1000, 800});
    app::frmMain main(screen);
    qt::MainWindow window(main, desk.front);
    main.show();
    auto& instructions = *window.findChild<QPlainTextEdit*>("txtInstructions");
    ASSERT_TRUE(comesTrue([&] { return isPainted(desk.hands, instructions); }));

    bool over = false, seen = false;
    main.run.cmdRun.onClick = [&] {
        main.run.cmdRun.setEnabled(false);
        main.run.txtInstructions.setText(main.run.txtInstructions.text() + "Please Wait ");
        const auto limit = desk.loop.clock().sinceStart() + std::chrono::seconds{10};
        while (!seen && desk.loop.clock().sinceStart() < limit) {
            desk.loop.yield();
            desk.loop.sleep(std::chrono::milliseconds{10});
            seen = isPainted(desk.hands, instructions);
        }
        main.run.cmdRun.setEnabled(true);
        over = true;
    };
    // What lies behind a click in the toolkit's queue differs from one to the next.
    for (int click = 1; click <= 10; ++click) {
        over = seen = false;
        desk.hands.click(onScreen(*window.findChild<QPushButton*>("cmdRun")).center());
        desk.loop.runUntil([&] { return over; });
        ASSERT_TRUE(seen) << "after click " << click;
    }
}

}  // namespace
}  // namespace vantrel::desktop
