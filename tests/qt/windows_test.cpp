#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QGuiApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QTest>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "qt/forms.h"
#include "qt/night.h"

namespace vantrel::qt {
namespace {

namespace color = platform::color;

class MainWindowTest : public testing::Test, protected Forms {
  protected:
    MainWindowTest() : window(main, front) {
        main.show();
        settle();
    }
    ~MainWindowTest() override { EXPECT_EQ(failures, ""); }

    template <typename Widget>
    Widget& widget(const char* name) {
        return widgetOf<Widget>(window, name);
    }

    MainWindow window;
};

TEST(Windows, EveryControlOfEveryFormHasItsWidget) {
    Forms forms;
    EXPECT_EQ(windowsFor(forms.screen, forms.front).size(), forms.screen.forms().size());
}

TEST(Windows, MismatchedNamesFailAtOnce) {
    Forms forms;
    QWidget window;
    auto* const widget = new QLineEdit(&window);
    platform::Form form(forms.screen, "frmOdd", "Odd", {});

    widget->setObjectName("txtNobody");
    EXPECT_THROW(Binding(form, window, forms.front), std::logic_error) << "a widget without a control";
    widget->setObjectName("");
    const platform::TextBox box(form, "txtLonely");
    EXPECT_THROW(Binding(form, window, forms.front), std::logic_error) << "a control without a widget";
    widget->setObjectName("txtLonely");
    EXPECT_NO_THROW(Binding(form, window, forms.front));
    const platform::Button button(form, "cmdOdd", "");
    auto* const wrongKind = new QLineEdit(&window);
    wrongKind->setObjectName("cmdOdd");
    EXPECT_THROW(Binding(form, window, forms.front), std::logic_error) << "a widget of the wrong kind";
}

TEST(Windows, AWindowOfNoSpecialKindHoldsTheFormsControlsToo) {
    Forms forms;
    platform::Form form(forms.screen, "frmNew", "New", {});
    platform::Frame frame(form, "fraInner", "Inner");
    platform::TextBox inner(form, "txtInner");
    inner.placeIn(frame);
    const platform::Button button(form, "cmdOK", "OK");
    const platform::MenuItem item(form, "mnuExit", "Exit");
    PlainWindow window(form, forms.front);
    EXPECT_EQ(widgetOf<QLineEdit>(window, "txtInner").parentWidget()->objectName(), "fraInner");
    EXPECT_EQ(widgetOf<QPushButton>(window, "cmdOK").text(), "&OK");
}

TEST_F(MainWindowTest, AClickRunsFromTheEventLoopAndOnlyWhenTheControlIsReachable) {
    int clicks = 0;
    main.run.cmdRun.onClick = [&] {
        ++clicks;
        main.run.cmdRun.setEnabled(false);
    };
    auto& run = widget<QPushButton>("cmdRun");
    QTest::mouseClick(&run, Qt::LeftButton);
    EXPECT_EQ(clicks, 0) << "inside the toolkit's mouse handling";
    QTest::mouseClick(&run, Qt::LeftButton);  // a double-click
    settle();
    EXPECT_EQ(clicks, 1);
    EXPECT_FALSE(run.isEnabled());
}

TEST_F(MainWindowTest, ADisabledButtonGivesItsKeysToNobodyAndTakesThemBack) {
    auto& run = widget<QPushButton>("cmdRun");
    window.activateWindow();
    run.setFocus();
    settle();
    main.run.cmdRun.setEnabled(false);
    EXPECT_EQ(window.focusWidget(), nullptr);
    main.run.cmdRun.setEnabled(true);
    EXPECT_EQ(window.focusWidget(), &run);

    main.run.cmdRun.setEnabled(false);
    widget<QLineEdit>("txtDeltaRA").setFocus();
    main.run.cmdRun.setEnabled(true);
    EXPECT_EQ(window.focusWidget(), &widget<QLineEdit>("txtDeltaRA")) << "the operator went elsewhere";
}

TEST_F(MainWindowTest, APromptGivesTheKeysToNextButTakesThemFromNoField) {
    struct Case {
        const char* had;
        bool enabled;  // whether it can be used when the prompt comes
        bool taken;
    };
    window.activateWindow();
    auto& next = widget<QPushButton>("cmdNext");
    for (const Case& c : {Case{"cmdRun", false, true}, Case{"cmdStop", true, true},
                          Case{"txtInstructions", true, true}, Case{"txtDeltaRA", true, false},
                          Case{"cmbCrossHairWidth", true, false}, Case{"txtRARange", true, true}}) {
        main.find("cmdRun")->setEnabled(true);
        main.run.cmdNext.setEnabled(false);
        main.find(c.had)->setEnabled(true);
        widget<QWidget>(c.had).setFocus();
        main.find(c.had)->setEnabled(c.enabled);
        main.run.cmdNext.setEnabled(true);
        EXPECT_EQ(window.focusWidget() == &next, c.taken) << c.had;
    }
    int answers = 0;
    main.run.cmdNext.onClick = [&] { ++answers; };
    QTest::keyClick(window.focusWidget(), Qt::Key_Space);
    settle();
    EXPECT_EQ(answers, 1);

    // What the prompt says otherwise doesn't bring the keys back that went elsewhere since.
    widget<QPushButton>("cmdStop").setFocus();
    main.run.cmdNext.setBackColor(color::kRed);
    EXPECT_NE(window.focusWidget(), &next);
}

TEST_F(MainWindowTest, KeysPassTheFilter) {
    auto& slew = widget<QLineEdit>("txtDeltaRA");
    main.run.txtDeltaRA.keyFilter = [](int code) { return code >= '0' && code <= '9' ? code : 0; };
    slew.selectAll();
    QTest::keyClicks(&slew, "1x5.");
    EXPECT_EQ(main.run.txtDeltaRA.text(), "15");
    QTest::keyClick(&slew, Qt::Key_Backspace);
    EXPECT_EQ(main.run.txtDeltaRA.text(), "1");

    main.run.txtDeltaRA.keyFilter = [](int code) { return code == ',' ? '.' : code; };
    QTest::keyClicks(&slew, ",5");
    EXPECT_EQ(main.run.txtDeltaRA.text(), "1.5") << "the filter may change a character";
    EXPECT_EQ(slew.text(), "1.5");
}

TEST_F(MainWindowTest, WhatTheProgramPutsInPlaceOfTypedTextIsReplacedByTheNextKey) {
    main.run.txtDeltaRA.onChange = [this] {
        if (main.run.txtDeltaRA.text().empty()) main.run.txtDeltaRA.setText("0");
    };
    auto& slew = widget<QLineEdit>("txtDeltaRA");
    slew.selectAll();
    QTest::keyClick(&slew, Qt::Key_Delete);
    EXPECT_EQ(slew.text(), "0");
    QTest::keyClick(&slew, '7');
    EXPECT_EQ(main.run.txtDeltaRA.text(), "7");
}

TEST_F(MainWindowTest, AFailingHandlerStaysOutOfTheToolkit) {
    main.run.txtDeltaRA.onChange = [] { throw std::runtime_error("no store"); };
    auto& slew = widget<QLineEdit>("txtDeltaRA");
    slew.selectAll();
    QTest::keyClick(&slew, '7');
    EXPECT_EQ(failures, "no store");
    failures.clear();
}

TEST_F(MainWindowTest, LeavingAFieldReachesItsHandler) {
    int left = 0;
    main.run.txtDelayAfterSlew.onLeave = [&] { ++left; };
    auto& delay = widget<QLineEdit>("txtDelayAfterSlew");
    delay.setFocus();
    settle();
    QTest::keyClick(&delay, Qt::Key_Tab);
    settle();
    EXPECT_EQ(left, 1);
}

TEST_F(MainWindowTest, OptionsBoxesAndListsFollowTheFormWhicheverSideChanges) {
    auto& east = widget<QRadioButton>("optSlewEast");
    auto& west = widget<QRadioButton>("optSlewWest");
    EXPECT_FALSE(east.isChecked() || west.isChecked());
    east.click();
    settle();
    EXPECT_TRUE(main.run.optSlewEast.selected());
    main.run.optSlewWest.select();
    EXPECT_FALSE(east.isChecked());
    EXPECT_TRUE(west.isChecked());
    west.click();  // again: stays
    settle();
    EXPECT_TRUE(west.isChecked());

    auto& spiral = widget<QCheckBox>("chkExposeContinuousEnable");
    main.exposures.chkExposeContinuousEnable.onClick = [this] {
        main.exposures.chkExposeContinuousEnable.setValue(0);  // refused
    };
    spiral.click();
    settle();
    EXPECT_FALSE(spiral.isChecked());

    auto& width = widget<QComboBox>("cmbCrossHairWidth");
    width.setCurrentIndex(3);
    Q_EMIT width.activated(3);
    settle();
    EXPECT_EQ(main.exposures.cmbCrossHairWidth.text(), "4");
    main.exposures.cmbCrossHairWidth.setText("11");
    EXPECT_EQ(width.placeholderText(), "11") << "a text that isn't in the list";
}

TEST_F(MainWindowTest, CaptionsShowOneAmpersand) {
    EXPECT_TRUE(widget<QPushButton>("cmdExposeSolve").text().contains("&& "))
        << "in the toolkit's own notation";
    struct Case {
        const char* caption;
        const char* shown;
    };
    for (const auto& [caption, shown] : {Case{"A && B", "A & B"}, Case{"&File", "File"},
                                         Case{"Test passed\r\n(see log)", "Test passed\n(see log)"}})
        EXPECT_EQ(plainCaption(caption), shown);
}

TEST_F(MainWindowTest, TheInstructionBoxTakesTextAndAlignment) {
    main.run.txtInstructions.setText("Measuring\r\nPlease Wait");
    main.run.txtInstructions.setAlignment(platform::Alignment::kCentre);
    auto& box = widget<QPlainTextEdit>("txtInstructions");
    EXPECT_EQ(box.toPlainText(), "Measuring\nPlease Wait");
    EXPECT_TRUE(box.document()->defaultTextOption().alignment() & Qt::AlignHCenter);
}

TEST_F(MainWindowTest, IndicatorsTakeTheFormsColours) {
    auto& light = widget<QLabel>("lblExpose");
    const auto face = [&] { return light.palette().color(QPalette::Window); };
    EXPECT_EQ(face(), theme.colors().unlit);
    main.run.lblExpose.setBackColor(color::kRed);
    EXPECT_EQ(face(), theme.colors().lit);
    theme.setNight(true);
    EXPECT_EQ(face(), colorsOf(true).lit) << "follows the look at once";
}

TEST_F(MainWindowTest, LightsAndCaptionsMoveNothing) {
    const auto places = [this] {
        settle();
        std::vector<QRect> all;
        for (const char* name : {"cmdRun", "cmdExposeSolve", "lblSolve", "picErrorPlot", "txtRARange"})
            all.push_back(widget<QWidget>(name).geometry());
        return all;
    };
    const auto before = places();
    for (platform::Label* plate : {&main.run.lblFrame1, &main.run.lblFrame2, &main.run.lblFrame3})
        plate->setVisible(false);
    for (platform::Label* adjuster : {&main.run.lblAlt, &main.run.lblAz}) adjuster->setVisible(true);
    main.run.lblMeasure.setCaption("Correct");
    main.exposures.cmdExposeSolve.setEnabled(false);
    main.run.cmdExpose.setCaption("Stoping Exp.");
    main.run.txtInstructions.setText("1\r\n2\r\n3\r\n4\r\n5\r\n6\r\n7\r\n8\r\n9");
    EXPECT_EQ(places(), before);
}

TEST_F(MainWindowTest, ClosingAsksTheForm) {
    bool asked = false;
    main.onClose = [&] { asked = true; };
    window.close();
    EXPECT_FALSE(asked) << "inside the toolkit's event";
    settle();
    EXPECT_TRUE(asked);
    EXPECT_TRUE(window.isVisible()) << "the form decided to stay";
    main.onClose = nullptr;
    window.close();
    settle();
    EXPECT_FALSE(window.isVisible());
}

TEST_F(MainWindowTest, PlaceGoesBothWays) {
    main.setPlace({200, 150, 900, 700});
    EXPECT_EQ(window.pos(), QPoint(200, 150));
    EXPECT_EQ(window.size(), QSize(900, 700));
    int resized = 0;
    main.onResize = [&] { ++resized; };
    rest();
    window.move(220, 160);
    rest();
    EXPECT_EQ(main.place(), (platform::Rectangle{220, 160, 900, 700}));
    EXPECT_EQ(resized, 0);
    window.resize(950, 720);
    rest();
    EXPECT_EQ(main.place().width, 950);
    EXPECT_EQ(resized, 1);
}

TEST_F(MainWindowTest, ALongMovingIsToldWhenItEnds) {
    rest();
    int told = 0;
    main.onResize = [&] { ++told; };
    for (int width = 800; width < 850; ++width) {
        window.resize(width, 700);
        settle();
        loop.sleep(std::chrono::milliseconds{20});
    }
    EXPECT_EQ(told, 0);
    rest();
    EXPECT_EQ(told, 1);
    EXPECT_EQ(main.place().width, 849);
    window.resize(900, 700);
    window.close();  // at once
    EXPECT_EQ(main.place().width, 900);
}

TEST_F(MainWindowTest, WhatAWindowDoesWhileItOpensOrIsLargeIsNoPlaceOfItsOwn) {
    const platform::Rectangle place = main.place();
    window.move(70, 90);  // by a window manager
    rest();
    EXPECT_EQ(main.place(), place);
    for (const Qt::WindowState large : {Qt::WindowMaximized, Qt::WindowFullScreen}) {
        window.setWindowState(large);
        rest();
        EXPECT_EQ(main.place(), place);
        window.setWindowState(Qt::WindowNoState);
        rest();
        EXPECT_EQ(main.place(), place);
    }
}

TEST_F(MainWindowTest, OnTopKeepsTheWindowOpenAndWhereItIs) {
    const QRect before = window.geometry();
    main.setOnTop(true);
    EXPECT_TRUE(window.windowFlags() & Qt::WindowStaysOnTopHint);
    EXPECT_TRUE(window.isVisible());
    EXPECT_EQ(window.geometry(), before);
    main.setOnTop(false);
    EXPECT_FALSE(window.windowFlags() & Qt::WindowStaysOnTopHint);
}

TEST_F(MainWindowTest, MenuItemsClickAndShowTheFormsCheckMark) {
    int clicks = 0;
    main.setup.mnuSetOnTop.onClick = [&] { ++clicks; };
    auto& onTop = widgetOf<QAction>(window, "mnuSetOnTop");
    onTop.trigger();
    settle();
    EXPECT_EQ(clicks, 1);
    EXPECT_FALSE(onTop.isChecked()) << "the form has not set it";
    main.setup.mnuSetOnTop.setChecked(true);
    EXPECT_TRUE(onTop.isChecked());
}

TEST(LogWindow, KeepsTheNewestLineInView) {
    Forms forms;
    LogWindow window(forms.log, forms.front);
    forms.log.show();
    std::string text;
    for (int i = 0; i < 200; ++i) text += "\r\nline " + std::to_string(i);
    forms.log.txtLog.setText(text);
    forms.settle();
    auto& box = widgetOf<QPlainTextEdit>(window, "txtLog");
    const QRect last = box.cursorRect();
    EXPECT_TRUE(box.textCursor().atEnd());
    EXPECT_TRUE(box.viewport()->rect().contains(last)) << last.top();
}

TEST(PopupWindow, AClickTellsTheFormAndDraggingMovesIt) {
    Forms forms;
    PopupWindow window(forms.popup, forms.front);
    EXPECT_TRUE(window.testAttribute(Qt::WA_ShowWithoutActivating));
    int clicks = 0;
    forms.popup.onClick = [&] {
        ++clicks;
        forms.popup.setTitle("Move popup (click again)");
    };
    forms.popup.setPlace({300, 300, 200, 100});
    forms.popup.txtMsg.setText("Loading ASCOM Telescope\r\nPlease Wait");
    forms.popup.show();
    forms.settle();
    QTest::mouseClick(&window, Qt::LeftButton);
    forms.settle();
    EXPECT_EQ(clicks, 1);

    const QPoint start = window.pos();
    const QPoint held(20, 20);
    QTest::mousePress(&window, Qt::LeftButton, {}, held);
    moveMouse(window, held + QPoint(60, 40), Qt::LeftButton);
    QTest::mouseRelease(&window, Qt::LeftButton, {}, held);
    forms.settle();
    EXPECT_EQ(clicks, 1) << "a drag is no click";
    EXPECT_EQ(window.pos(), start + QPoint(60, 40));
    EXPECT_EQ(forms.popup.place().left, start.x() + 60);
}

TEST(Tips, StandOnEveryField) {
    Forms forms;
    const auto windows = windowsFor(forms.screen, forms.front);
    for (const auto& window : windows)
        for (const platform::Control* control : window->form().controls()) {
            const auto* const widget = window->findChild<QWidget*>(QString::fromStdString(control->name()));
            const bool field = dynamic_cast<const QLineEdit*>(widget) != nullptr ||
                               dynamic_cast<const QComboBox*>(widget) != nullptr ||
                               dynamic_cast<const QCheckBox*>(widget) != nullptr;
            if (!field || window->form().name() == "frmPopupMsg") continue;
            EXPECT_NE(widget->toolTip(), "") << window->form().name() << "." << control->name();
        }
}

// ---- simulator window

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

// ---- program

TEST(NightVision, SwitchesWhenTheOptionsAreClosed) {
    Night night;
    FormWindow& options = night.program.window("frmOptions");
    bool before = true, after = false;
    night.pass({
        {[&] { return night.started(); },
         [&] { widgetOf<QAction>(night.main(), "mnuSetOptions").trigger(); }},
        {[&] { return options.isVisible(); },
         [&] { widgetOf<QCheckBox>(options, "chkGreenColors").click(); }},
        {[] { return true; },
         [&] {
             before = night.theme.night();
             options.close();
         }},
        {[&] { return !options.isVisible(); }, [&] { after = night.theme.night(); }},
    });
    EXPECT_FALSE(before);
    EXPECT_TRUE(after);
}

TEST(PlacesOfWindows, LeaveRoomForTheirTitleBars) {
    constexpr int kTitleBar = 20;
    Night night;
    const QRect room = QGuiApplication::primaryScreen()->availableGeometry();
    QRect telescope;
    night.pass({{[&] { return night.started(); },
                 [&] { telescope = night.program.window("frmTelescope").geometry(); }}});
    EXPECT_LE(telescope.bottom(), room.bottom() - kTitleBar);
    EXPECT_LE(telescope.right(), room.right());
    EXPECT_GT(telescope.bottom(), room.bottom() - 3 * kTitleBar) << "in the corner all the same";
}

}  // namespace
}  // namespace vantrel::qt
