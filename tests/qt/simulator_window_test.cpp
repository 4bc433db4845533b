// The simulator's window in the whole program: its keys, and how it is opened.
#include <QLineEdit>
#include <QTest>

#include <gtest/gtest.h>

#include "qt/night.h"

namespace vantrel::qt {
namespace {

TEST(SimulatorWindow, KeysTurnTheAdjustersUnlessTheyAreTyped) {
    Night night;
    FormWindow& window = night.program.window("frmSimulator");
    const auto simulator = night.program.automation().create("AxisSimulator.Telescope");
    const struct {
        Qt::Key key;
        Qt::KeyboardModifiers with;
        double azimuth, elevation;  // turned by, arc-minutes
    } keys[] = {{Qt::Key_Right, Qt::NoModifier, 1, 0},        {Qt::Key_Left, Qt::ShiftModifier, -10, 0},
                {Qt::Key_Left, Qt::ControlModifier, -0.1, 0}, {Qt::Key_Up, Qt::NoModifier, 0, 1},
                {Qt::Key_Down, Qt::ShiftModifier, 0, -10},    {Qt::Key_Up, Qt::ControlModifier, 0, 0.1}};
    std::vector<Step> steps = {{[&] { return night.started(); },
                                [&] { night.main().findChild<QAction*>("mnuSimulator")->trigger(); }},
                               {[&] { return window.isVisible(); }, [&] { night.turnAxis(0, 0); }}};
    for (const auto& key : keys) {
        steps.push_back({[] { return true; }, [&] { QTest::keyClick(&window, key.key, key.with); }});
        steps.push_back(
            {[] { return true; },
             [&] {
                 EXPECT_NEAR(simulator->get("PolarAzimuthError").toDouble(), key.azimuth, 1e-9) << key.key;
                 EXPECT_NEAR(simulator->get("PolarElevationError").toDouble(), key.elevation, 1e-9)
                     << key.key;
                 night.turnAxis(0, 0);
             }});
    }
    auto& field = widgetOf<QLineEdit>(window, "txtAzimuthError");
    steps.push_back({[] { return true; },
                     [&] {
                         field.setFocus();
                         QTest::keyClick(&field, Qt::Key_Left);
                     }});
    steps.push_back(
        {[] { return true; }, [&] { EXPECT_EQ(simulator->get("PolarAzimuthError").toDouble(), 0); }});
    night.pass(std::move(steps));
    EXPECT_EQ(night.failures, "");
}

TEST(SimulatorWindow, IsTheDriversSetupDialog) {
    Night night;
    FormWindow& window = night.program.window("frmSimulator");
    bool before = true;
    night.pass({{[&] { return night.started(); },
                 [&] {
                     before = window.isVisible();
                     night.program.automation().create("AxisSimulator.Telescope")->call("SetupDialog");
                 }},
                {[&] { return window.isVisible(); }, [] {}}});
    EXPECT_FALSE(before);
}

}  // namespace
}  // namespace vantrel::qt
