// From a first start to a corrected mount, as operators do it who have only a keyboard, or only a mouse.
#include <QAction>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <cmath>

#include <gtest/gtest.h>

#include "desktop/desk.h"
#include "qt/image_window.h"
#include "qt/night.h"

namespace vantrel::desktop {
namespace {

using qt::Step;

// Symbols of keys
constexpr unsigned kEnter = 0xff0d, kTab = 0xff09, kEscape = 0xff1b, kSpace = 0x20, kF5 = 0xffc2;
constexpr unsigned kLeft = 0xff51, kUp = 0xff52, kShift = 0xffe1, kControl = 0xffe3, kM = 0x6d;

/// Counts what hands and X server have brought to the program's windows.
class Arrivals : public QObject {
  public:
    Arrivals() { qApp->installEventFilter(this); }
    int count() const { return count_; }

  protected:
    bool eventFilter(QObject* object, QEvent* event) override {
        const bool letGo = event->type() == QEvent::MouseButtonRelease || event->type() == QEvent::KeyRelease;
        if (letGo && object->isWindowType()) ++count_;
        return false;
    }

  private:
    int count_ = 0;
};

/// Told to both kinds of hands.
struct Walk : qt::Night {
    Walk() { firstStart = true; }

    /// Virtual time stands still until it holds: what goes through the X server takes its own.
    bool comes(const std::function<bool()>& condition) {
        return comesTrue([&] {
            loop.yield();
            return condition();
        });
    }
    void untilArrived(const std::function<void()>& deed) {
        const int before = arrivals.count();
        deed();
        EXPECT_TRUE(comesTrue([&] { return arrivals.count() > before; }));
    }
    bool becomesActive(const char* form) {
        return comes([this, form] { return isActive(form); });
    }

    bool isActive(const char* form) const { return program.window(form).isActiveWindow(); }
    bool told(const char* words) const { return instructions().find(words) != std::string::npos; }
    bool standsStill() {
        const auto mount = program.automation().create("AxisSimulator.Telescope");
        return mount->get("Connected").toBool() && !mount->get("Slewing").toBool();
    }
    double error(const char* which) {
        return program.automation().create("AxisSimulator.Telescope")->get(which).toDouble();
    }
    template <typename Widget = QPushButton>
    Widget& inSimulator(const char* name) const {
        return qt::widgetOf<Widget>(program.window("frmSimulator"), name);
    }
    bool isCentred() const {
        return inSimulator<QLabel>("lblStatus").text().contains(QStringLiteral("middle")) ||
               inSimulator<QLabel>("lblStarHint").text().contains(QStringLiteral("middle"));
    }

    using Deed = std::function<void()>;
    std::vector<Step> measure(Deed welcome, Deed run, Deed goOn) {
        return {{[this] { return program.window("frmWelcome").isVisible(); }, std::move(welcome)},
                {[this] { return standsStill() && enabled("cmdRun"); }, std::move(run)},
                {[this] { return told("Completed Successfully") && enabled("cmdNext"); }, std::move(goOn)}};
    }
    /// A measurement of these deeds, and both corrections.
    void passAll(std::vector<Step> steps) {
        for (const auto& part :
             {place("Azimuth Correction"), turnBack("Azimuth Correction", "cmdAzimuth", 1, 8),
              place("Elevation Correction"), turnBack("Elevation Correction", "cmdElevation", 1, 1)})
            steps.insert(steps.end(), part.begin(), part.end());
        steps.push_back({[this] { return told("was Successful"); }, [] {}});
        pass(steps);
        EXPECT_LT(std::abs(error("PolarAzimuthError")), 2);
        EXPECT_LT(std::abs(error("PolarElevationError")), 2);
        EXPECT_EQ(failures, "");
        EXPECT_EQ(boxes.str(), "");
    }

    virtual void openSimulator() = 0;
    virtual void press(const char* nameInSimulator) = 0;
    /// By tens and single arc-minutes towards the pole.
    virtual void turn(const char* adjuster, int tens, int ones) = 0;
    virtual void goOn() = 0;

    std::vector<Step> place(const char* task) {
        return {
            {[this, task] { return told(task) && enabled("cmdNext"); },
             [this] {
                 openSimulator();
                 press("cmdGoToStar");
             }},
            {[this] { return hasSlewed(); }, [this] { press("cmdCenterStar"); }},
            {[this] { return isCentred() && standsStill(); },
             [this] {
                 press("cmdSync");
                 slewed_ = false;
             }},
            {[this] { return inSimulator<QLabel>("lblStatus").text().startsWith("Synced"); },
             [this] { goOn(); }},
        };
    }
    std::vector<Step> turnBack(const char* task, const char* adjuster, int tens, int ones) {
        const auto both = [this] { return error("PolarAzimuthError") + error("PolarElevationError"); };
        return {
            {[this, task] { return told(task) && told("Center Star") && enabled("cmdNext"); },
             [=, this] {
                 before_ = both();
                 openSimulator();
                 turn(adjuster, tens, ones);
             }},
            {[=, this] { return std::abs(both() - before_) > 10 * tens + ones - 0.5; }, [this] { goOn(); }},
        };
    }

    /// The simulator's mount went somewhere and has arrived. To be asked all the while.
    bool hasSlewed() {
        const bool still = standsStill();
        slewed_ = slewed_ || (still && !wasStill_);
        wasStill_ = still;
        return slewed_;
    }

    XOperator hands;
    Arrivals arrivals;

  private:
    bool wasStill_ = true, slewed_ = false;
    double before_ = 0;
};

struct KeyboardWalk : Walk {
    void strike(unsigned key, std::initializer_list<unsigned> held = {}) {
        untilArrived([&] { hands.strike(key, held); });
    }

    /// Through the window by Tab; fails where the way round misses it.
    void tabTo(const char* name) {
        const auto focus = [] { return QApplication::focusWidget(); };
        constexpr int kMostFields = 80;
        for (int i = 0; i < kMostFields; ++i) {
            if (focus() != nullptr && focus()->objectName() == QLatin1String(name)) return;
            const QWidget* const before = focus();
            strike(kTab);
            ASSERT_TRUE(comesTrue([&] { return focus() != before; })) << name;
        }
        FAIL() << name << " can't be reached";
    }
    void openSimulator() override {
        ASSERT_TRUE(becomesActive("frmMain"));
        strike(kM, {kControl});
        ASSERT_TRUE(becomesActive("frmSimulator"));
    }
    /// Out of the simulator's window, and Next.
    void goOn() override {
        strike(kEscape);
        ASSERT_TRUE(becomesActive("frmMain"));
        strike(kEnter);
    }
    void press(const char* name) override {
        tabTo(name);
        strike(kSpace);
    }
    void turn(const char* adjuster, int tens, int ones) override {
        const unsigned arrow = std::string(adjuster) == "cmdAzimuth" ? kLeft : kUp;
        for (int i = 0; i < tens; ++i) strike(arrow, {kShift});
        for (int i = 0; i < ones; ++i) strike(arrow);
    }
};

TEST(FirstNight, IsSpentWithTheKeyboardAlone) {
    KeyboardWalk walk;
    walk.passAll(walk.measure(
        [&] {
            ASSERT_TRUE(walk.becomesActive("frmWelcome"));
            walk.strike(kEnter);
        },
        [&] {
            ASSERT_TRUE(walk.becomesActive("frmMain"));
            walk.strike(kF5);
        },
        [&] { walk.strike(kEnter); }));
}

struct MouseWalk : Walk {
    /// Where the window is too small for all that is in it, by the wheel.
    void bringIntoView(const QWidget& widget) {
        constexpr int kMostNotches = 60;
        const QRect window = onScreen(*widget.window());
        for (int i = 0; i < kMostNotches; ++i) {
            if (widget.visibleRegion().boundingRect() == widget.rect()) return;
            const int before = onScreen(widget).y();
            hands.moveTo(window.center());
            hands.turnWheel(before < window.center().y());
            ASSERT_TRUE(comesTrue([&] { return onScreen(widget).y() != before; }));
        }
        FAIL() << widget.objectName().toStdString() << " can't be reached";
    }
    void click(const QWidget& widget, int times = 1) {
        bringIntoView(widget);
        for (int i = 0; i < times; ++i) untilArrived([&] { hands.click(onScreen(widget).center()); });
    }
    void click(const char* button) { click(qt::widgetOf<QPushButton>(main(), button)); }
    /// From the main window's menus.
    void choose(const char* title, const char* item) {
        auto& bar = *main().findChild<QMenuBar*>();
        for (QAction* action : bar.actions()) {
            if (action->text().remove('&') != QLatin1String(title)) continue;
            hands.click(bar.mapToGlobal(bar.actionGeometry(action).center()));
            QMenu& menu = *action->menu();
            ASSERT_TRUE(comesTrue([&] { return menu.isVisible() && isPainted(hands, menu); }));
            auto* const wanted = main().findChild<QAction*>(item);
            hands.click(menu.mapToGlobal(menu.actionGeometry(wanted).center()));
            return;
        }
        FAIL() << title;
    }

    void openSimulator() override {
        choose("Instruments", "mnuSimulator");
        ASSERT_TRUE(becomesActive("frmSimulator"));
    }
    void press(const char* name) override { click(inSimulator(name)); }
    void turn(const char* adjuster, int tens, int ones) override {
        const bool azimuth = std::string(adjuster) == "cmdAzimuth";  // back westwards, and up
        click(inSimulator((std::string(adjuster) + (azimuth ? "(0)" : "(5)")).c_str()), tens);
        click(inSimulator((std::string(adjuster) + (azimuth ? "(1)" : "(4)")).c_str()), ones);
    }
    void goOn() override { click("cmdNext"); }
};

TEST(FirstNight, IsSpentWithTheMouseAlone) {
    MouseWalk walk;
    const auto inWelcome = [&](const char* name) -> QPushButton& {
        return qt::widgetOf<QPushButton>(walk.program.window("frmWelcome"), name);
    };
    const auto run = [&] {
        // Both may have one place only.
        const QWidget &log = walk.program.window("frmLog"), &telescope = walk.program.window("frmTelescope");
        EXPECT_TRUE(walk.comes([&] { return telescope.isVisible() && walk.hands.isAbove(log, telescope); }));
        walk.click("cmdRun");
    };
    walk.passAll(walk.measure(
        [&] {
            ASSERT_TRUE(walk.becomesActive("frmWelcome"));
            walk.click(inWelcome("cmdTrySimulator"));
        },
        run, [&] { walk.click("cmdNext"); }));
}

}  // namespace
}  // namespace vantrel::desktop
