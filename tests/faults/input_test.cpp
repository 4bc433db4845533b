// Whatever the operator writes into any box of any window: the program goes on, and so does the next start.

#include <limits>

#include <gtest/gtest.h>

#include "faults/night.h"

namespace vantrel::faults {
namespace {

constexpr Equipment kEquipment{"first program", "ScopeSim.Telescope", "MaxIm", "0"};

TEST(Input, EveryTextInEveryBoxIsSurvived) {
    const std::vector<std::string> texts = {"",
                                            std::string(1'000'000, '7'),
                                            "abc",
                                            "\xce\xb1\xc2\xb5\xe2\x82\xac\xf0\x9f\x94\xad",
                                            "1,5",
                                            "NaN",
                                            "inf",
                                            "-0",
                                            "1e308",
                                            "-1e308",
                                            "1e-320",
                                            "  12  ",
                                            "\xff\xfe",
                                            std::string("1\0"
                                                        "2",
                                                        3),
                                            "99999999999",
                                            "C:\\",
                                            "../../x\r\ny\tz"};
    const std::vector<std::string> boxes = Night(kEquipment).boxes();
    ASSERT_GT(boxes.size(), 30U);
    for (const std::string& box : boxes)
        for (const std::string& text : texts) {
            const Outcome outcome = Night(kEquipment).spendWith(box, text);
            for (const std::string& defect : outcome.defects)
                ADD_FAILURE() << box << " with \"" << text.substr(0, 20) << "\": " << defect;
            // A delay is as long as it was written; closing the program ends it.
            EXPECT_TRUE(!outcome.hung || box.find("Delay") != std::string::npos)
                << box << " with \"" << text.substr(0, 20) << "\"";
        }
}

}  // namespace
}  // namespace vantrel::faults
