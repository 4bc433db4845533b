#include "app/handler_barrier.h"

#include <stdexcept>
#include <vector>

#include <gtest/gtest.h>

#include "platform/errors.h"
#include "platform/queued_event_loop.h"

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

TEST_F(HandlerBarrierTest, PutsClicksOffWhileAnOutsideMemberWaits) {
    platform::VirtualTime time({});
    platform::QueuedEventLoop loop(time);
    platform::OutsideCalls calls;
    bool ending = false;
    std::vector<std::string> story;
    platform::Button stop{form, "cmdStop", ""};
    button.onClick = [&] { story.emplace_back("click"); };
    stop.onClick = [&] { story.emplace_back("stop"); };
    barrier.putOffWhile(calls, loop, {&stop}, [&] { return ending; });
    barrier.guard(form);
    form.show();
    const auto clickDuringAMember = [&] {
        const platform::OutsideCall outer(calls), inner(calls);
        button.click();
        button.click();
        stop.click();
        loop.yield();
        story.emplace_back("answer");
    };
    clickDuringAMember();
    loop.yield();
    button.click();
    EXPECT_EQ(story, (std::vector<std::string>{"stop", "answer", "click", "click"}));
    story.clear();
    clickDuringAMember();
    ending = true;
    loop.yield();
    EXPECT_EQ(story, (std::vector<std::string>{"stop", "answer"}));
}

}  // namespace
}  // namespace vantrel::app
