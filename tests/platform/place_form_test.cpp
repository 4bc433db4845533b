#include "platform/place_form.h"

#include <cmath>

#include <gtest/gtest.h>

namespace vantrel::platform {
namespace {

TEST(PlaceForm, BringsBackAWindowWhoseMiddleIsOutside) {
    const Rectangle area{100, 50, 1000, 600};
    struct Case {
        const char* why;
        double top, left;
        int newTop, newLeft;
    };
    for (const Case& c : {
             Case{"inside", 60, 200, 60, 200},
             Case{"less than half outside stays", 10, 5, 10, 5},
             Case{"beyond the upper left corner", -300, -900, 50, 100},
             Case{"more than half beyond the right and lower edge", 601, 1001, 550, 900},
             Case{"exactly half outside stays", 600, 1000, 600, 1000},
             Case{"fractions are rounded", 60.6, 200.4, 61, 200},
             Case{"stored nonsense", 1e300, -1e300, 550, 100},
             Case{"no number at all", std::nan(""), std::nan(""), 0, 0},
         }) {
        Screen screen(area);
        Form form(screen, "frm", "", {0, 0, 200, 100});
        PlaceFormOnScreen(form, c.top, c.left);
        EXPECT_EQ(form.place().top, c.newTop) << c.why;
        EXPECT_EQ(form.place().left, c.newLeft) << c.why;
        EXPECT_EQ(form.place().width, 200) << c.why;
    }
}

TEST(PlaceForm, ShowsTheUpperLeftCornerOfAWindowThatIsTooLarge) {
    const Rectangle placed = keptOnScreen({500, 400, 900, 900}, {0, 0, 640, 480});
    EXPECT_EQ(placed, (Rectangle{0, 0, 900, 900}));
}

}  // namespace
}  // namespace vantrel::platform
