#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDesktopServices>
#include <QDialog>
#include <QFileDialog>
#include <QGuiApplication>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QTest>
#include <QTextBrowser>
#include <QTimer>
#include <filesystem>
#include <fstream>
#include <functional>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "qt/arrangement.h"
#include "qt/forms.h"
#include "qt/night.h"
#include "qt/qt_desktop.h"
#include "qt/qt_dialogs.h"
#include "qt/theme.h"
#include "support/temp_folder.h"

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

TEST_F(MainWindowTest, PlaceGoesBothWaysAndALongMovingIsToldWhenItEnds) {
    main.setPlace({200, 150, 900, 700});
    EXPECT_EQ(window.pos(), QPoint(200, 150));
    EXPECT_EQ(window.size(), QSize(900, 700));
    int resized = 0;
    main.onResize = [&] { ++resized; };
    rest();
    window.move(220, 160);
    rest();
    EXPECT_EQ(main.place(), (platform::Rectangle{220, 160, 900, 700}));
    for (int width = 900; width <= 950; ++width) {
        window.resize(width, 720);
        settle();
        loop.sleep(std::chrono::milliseconds{20});
    }
    EXPECT_EQ(resized, 0);
    rest();
    EXPECT_EQ(main.place().width, 950);
    EXPECT_EQ(resized, 1);
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

// ---- program

TEST(WindowsOfTheProgram, StandWhereTheyCanBeSeenAndFollowDriverAndOptions) {
    constexpr int kTitleBar = 20;
    Night night;
    FormWindow &options = night.program.window("frmOptions"),
               &simulator = night.program.window("frmSimulator");
    const QRect room = QGuiApplication::primaryScreen()->availableGeometry();
    const auto now = [] { return true; };
    night.pass({
        {[&] { return night.started(); },
         [&] {
             const QRect telescope = night.program.window("frmTelescope").geometry();
             EXPECT_LE(telescope.bottom(), room.bottom() - kTitleBar);
             EXPECT_LE(telescope.right(), room.right());
             EXPECT_GT(telescope.bottom(), room.bottom() - 3 * kTitleBar) << "in the corner all the same";
             EXPECT_FALSE(simulator.isVisible());
             night.program.automation().create("AxisSimulator.Telescope")->call("SetupDialog");
         }},
        {[&] { return simulator.isVisible(); }, [&] { simulator.close(); }},
        {[&] { return !simulator.isVisible(); }, [&] { night.main().activateWindow(); }},
        {[&] { return night.main().isActiveWindow(); },
         [&] { QTest::keyClick(&night.main(), Qt::Key_M, Qt::ControlModifier); }},
        {[&] { return simulator.isVisible(); },
         [&] { widgetOf<QAction>(night.main(), "mnuSetOptions").trigger(); }},
        {[&] { return options.isVisible(); },
         [&] { widgetOf<QCheckBox>(options, "chkGreenColors").click(); }},
        {now, [&] { EXPECT_FALSE(night.theme.night()) << "not before the window is closed"; }},
        {now, [&] { options.close(); }},
        {[&] { return !options.isVisible(); }, [&] { EXPECT_TRUE(night.theme.night()); }},
    });
    EXPECT_EQ(night.failures, "");
}

// ---- arrangement

constexpr WindowSizes kSizes{.main = {782, 690},
                             .mainLeast = {700, 320},
                             .imageLeast = {310, 280},
                             .log = {640, 420},
                             .logLeast = {220, 140},
                             .simulator = {830, 700},
                             .simulatorLeast = {240, 160}};

struct Desk {
    const char* name;
    QVector<QRect> screens;
    bool logApart;  // not below the simulator
};

TEST(Arrangement, CoversNothingThatHasToBeWatched) {
    const Desk desks[] = {{"netbook", {{0, 0, 1024, 600}}, false},
                          {"netbook with a panel", {{0, 28, 1024, 572}}, false},
                          {"small laptop", {{0, 0, 1366, 768}}, false},
                          {"old monitor", {{0, 0, 1280, 1024}}, true},
                          {"monitor", {{0, 0, 1920, 1080}}, true},
                          {"large monitor", {{0, 0, 2560, 1440}}, true},
                          {"two screens", {{0, 0, 1920, 1080}, {1920, 0, 1920, 1080}}, true},
                          {"laptop and monitor", {{0, 0, 1366, 768}, {-1920, 0, 1920, 1080}}, true}};
    for (const Desk& desk : desks) {
        SCOPED_TRACE(desk.name);
        const Arrangement places = arranged(desk.screens, kSizes);
        for (const QRect& place : {places.main, places.image, places.log, places.simulator}) {
            bool onOneScreen = false;
            for (const QRect& screen : desk.screens) onOneScreen = onOneScreen || screen.contains(place);
            EXPECT_TRUE(onOneScreen);
        }
        EXPECT_FALSE(places.main.intersects(places.image));
        for (const QRect& other : {places.log, places.simulator}) {
            EXPECT_FALSE(other.intersects(places.main));
            EXPECT_FALSE(other.intersects(places.image));
        }
        EXPECT_EQ(places.log.intersects(places.simulator), !desk.logApart);
        const auto holds = [](const QRect& place, const QSize& least) {
            return place.width() >= least.width() && place.height() >= least.height();
        };
        EXPECT_TRUE(holds(places.main, kSizes.mainLeast));
        EXPECT_TRUE(holds(places.image, kSizes.imageLeast));
        EXPECT_TRUE(holds(places.log, kSizes.logLeast));
        EXPECT_TRUE(holds(places.simulator, kSizes.simulatorLeast));
    }
}

TEST(Arrangement, GivesTheImageTheSecondScreen) {
    const QRect second(1920, 0, 2560, 1440);
    EXPECT_EQ(arranged({{0, 0, 1920, 1080}, second}, kSizes).image, second);
}

// ---- dialogs and desktop

/// Does something to the dialog that the next call opens, which waits for it.
void inTheDialog(const std::function<void(QDialog&)>& act) {
    QTimer::singleShot(0, [act] {
        auto* const dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
        ASSERT_NE(dialog, nullptr);
        act(*dialog);
    });
}

class DialogsTest : public testing::Test {
  protected:
    DialogsTest() {
        std::filesystem::create_directories(platform::pathsBelow(home.path()).drives / "C" / "Images" /
                                            "Tonight");
        user.folders.map("C:\\Images", platform::pathsBelow(home.path()).drives / "C" / "Images");
    }

    test::TempFolder home;
    platform::UserMachine user{platform::pathsBelow(home.path())};
    Theme theme;
    QtDialogs dialogs{user.folders, "C:\\Images"};
    const std::vector<platform::Dialogs::Choice> drivers{{"A.Telescope", "First mount"},
                                                         {"B.Telescope", "Second mount"}};
};

TEST_F(DialogsTest, AChosenFolderComesBackAsAFolderText) {
    inTheDialog([&](QDialog& dialog) {
        auto& chooser = dynamic_cast<QFileDialog&>(dialog);
        chooser.selectFile(QString::fromStdString((user.folders.real("C:\\Images") / "Tonight").string()));
        dialog.accept();
    });
    EXPECT_EQ(dialogs.chooseFolder("Set Image Path"), "C:\\Images\\Tonight");
    inTheDialog([](QDialog& dialog) { dialog.reject(); });
    EXPECT_EQ(dialogs.chooseFolder("Set Image Path"), "");
}

TEST_F(DialogsTest, AFileComesBackAsItsPathAndTheNextBeginsThere) {
    const auto folder = user.folders.real("C:\\Images") / "Tonight";
    test::writeFile(folder / "M31.fits", "x");
    inTheDialog([&](QDialog& dialog) {
        dynamic_cast<QFileDialog&>(dialog).selectFile(QString::fromStdString((folder / "M31.fits").string()));
        dialog.accept();
    });
    EXPECT_EQ(dialogs.chooseFile("Choose a picture"), "C:\\Images\\Tonight\\M31.fits");
    inTheDialog([&](QDialog& dialog) {
        EXPECT_EQ(dynamic_cast<QFileDialog&>(dialog).directory().absolutePath().toStdString(),
                  folder.string());
        dialog.reject();
    });
    EXPECT_EQ(dialogs.chooseFile("Choose a picture"), "");
}

TEST_F(DialogsTest, AChoiceBeginsWithTheCurrentOneAndComesBackById) {
    std::string first;
    inTheDialog([&](QDialog& dialog) {
        auto& list = *dialog.findChild<QListWidget*>();
        first = list.currentItem()->text().toStdString();
        list.setCurrentRow(0);
        dialog.accept();
    });
    EXPECT_EQ(dialogs.choose("Telescope Chooser", drivers, "B.Telescope"), "A.Telescope");
    EXPECT_EQ(first, "Second mount");
    inTheDialog([](QDialog& dialog) {
        auto& list = *dialog.findChild<QListWidget*>();
        list.setCurrentRow(0);
        Q_EMIT list.itemActivated(list.item(0));  // a double click
    });
    EXPECT_EQ(dialogs.choose("Telescope Chooser", drivers, "B.Telescope"), "A.Telescope");
    inTheDialog([](QDialog& dialog) { dialog.reject(); });
    EXPECT_EQ(dialogs.choose("Telescope Chooser", drivers, "B.Telescope"), "");
    inTheDialog([](QDialog& dialog) { dialog.accept(); });
    EXPECT_EQ(dialogs.choose("Telescope Chooser", drivers, "C.Telescope"), "") << "nothing was chosen";
}

TEST_F(DialogsTest, GiveNothingButRedLightByNight) {
    theme.setNight(true);
    const auto check = [](QDialog& dialog) {
        QApplication::processEvents();
        EXPECT_LE(foreignLight(dialog.grab().toImage()), 0) << dialog.windowTitle().toStdString();
        dialog.reject();
    };
    inTheDialog(check);
    dialogs.chooseFolder("Set Image Path");
    test::writeFile(user.folders.real("C:\\Images") / "M31.fits", "");
    inTheDialog(check);
    dialogs.chooseFile("Choose a picture");
    inTheDialog(check);
    dialogs.choose("Telescope Chooser", drivers, "A.Telescope");
    for (const auto icon : {platform::Dialogs::Icon::kInformation, platform::Dialogs::Icon::kExclamation,
                            platform::Dialogs::Icon::kCritical}) {
        inTheDialog(check);
        dialogs.messageBox("Vantrel", "Vantrel is already running", icon,
                           platform::Dialogs::Buttons::kOkCancel);
    }
}

struct QtDesktopTest : testing::Test {
    QtDesktopTest() {
        for (const char* scheme : {"file", "https"})
            QDesktopServices::setUrlHandler(scheme, &browser, "setSource");
        qputenv("PATH", "/nowhere");  // no program to ask which files the desktop shows
    }
    ~QtDesktopTest() override {
        qputenv("PATH", path);
        for (const char* scheme : {"file", "https"}) QDesktopServices::unsetUrlHandler(scheme);
    }
    void put(const char* file) const {
        const std::filesystem::path whole = home.path() / file;
        std::filesystem::create_directories(whole.parent_path());
        std::ofstream(whole) << "text";
    }

    QTextBrowser browser;  // has a slot for addresses
    const QByteArray path = qgetenv("PATH");
    const test::TempFolder home;
    platform::UserMachine user{platform::pathsBelow(home.path())};
};

TEST_F(QtDesktopTest, OpensFilesAndPages) {
    QtDesktop desktop(user.folders, {});
    const std::string file = (home.path() / "Log.txt").string();
    for (const std::string& address : {std::string("https://example.org/help"), "file://" + file}) {
        desktop.open(address.starts_with("file") ? file : address);
        EXPECT_EQ(browser.source().toString().toStdString(), address);
    }
}

TEST_F(QtDesktopTest, ShowsTheManualsPagesInPlaceOfHelpThatIsMissingOrThatNothingShows) {
    platform::FolderMap folders(home.path());
    folders.map("C:\\Program Files\\Vantrel", home.path());
    const QtDesktop desktop(folders, {});
    const std::string help = desktop.programFolder() + "\\Vantrel Help.chm";
    EXPECT_EQ(desktop.shownFor(help), home.path() / "Vantrel Help.chm") << "neither is there";
    put("manual/index.html");
    EXPECT_EQ(desktop.shownFor(help), home.path() / "manual/index.html");
    put("Vantrel Help.chm");
    EXPECT_EQ(desktop.shownFor(help), home.path() / "manual/index.html");
    EXPECT_EQ(desktop.shownFor("C:\\Other\\Vantrel.chm"), home.path() / "c/Other/Vantrel.chm");
}

/// From the folder that the programs are built into, where there is something to build it with.
TEST_F(QtDesktopTest, TheManualIsBuiltWithTheProgram) {
    const QtDesktop desktop(user.folders, {});
    EXPECT_EQ(std::filesystem::exists(desktop.shownFor(desktop.programFolder() + "\\Vantrel Help.chm")),
              VANTREL_MANUAL != 0);
}

}  // namespace
}  // namespace vantrel::qt
