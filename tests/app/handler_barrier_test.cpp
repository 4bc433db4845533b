#include "app/handler_barrier.h"

#include <stdexcept>
#include <vector>

#include <gtest/gtest.h>

#include "platform/errors.h"

namespace vantrel::app {
namespace {

struct HandlerBarrierTest : testing::Test {
    platform::Screen screen{{0, 0, 100, 100}};
    platform::Form form{screen, "frmTest", "", {}};
    platform::Button button{form, "cmdTest", ""};
    platform::TextBox box{form, "txtTest"};
    BusyCount busy;
    std::vector<std::string> reports;
    HandlerBarrier barrier{busy, [this](const std::string& handler) {
                               reports.push_back(platform::errorReport(platform::currentError(), handler));
                           }};
};

TEST_F(HandlerBarrierTest, ReportsWhatAHandlerThrows) {
    button.onClick = [] { throw platform::runTimeError(11); };
    box.onChange = [] { throw std::logic_error("oops"); };
    form.onUnload = [] { throw 7; };
    barrier.guard(form);
    form.show();
    button.click();
    box.type("x");
    form.unload();
    EXPECT_EQ(reports,
              (std::vector<std::string>{"Error 11: Division by zero\r\nfrmTest Sub cmdTest_Click",
                                        "Error 51: oops\r\nfrmTest Sub txtTest_Change", reports.back()}));
    EXPECT_NE(reports.back().find("frmTest Sub Form_Unload"), std::string::npos);
    EXPECT_FALSE(busy.busy());
}

TEST_F(HandlerBarrierTest, KnowsWhenTheLastHandlerHasReturned) {
    std::vector<std::string> story;
    busy.onIdle = [&] { story.emplace_back("idle"); };
    button.onClick = [&] {
        box.setText("inner");
        story.emplace_back(busy.busy() ? "busy" : "not busy");
    };
    box.onChange = [&] { story.emplace_back("change"); };
    barrier.guard(form);
    form.show();
    button.click();
    EXPECT_EQ(story, (std::vector<std::string>{"change", "busy", "idle"}));
}

}  // namespace
}  // namespace vantrel::app
