// The host against COM servers of our own: one in a process of its own, one in ours.
#include "hosts/com/host.h"

#include <string>

#include <gtest/gtest.h>

#include "headless/system_time.h"
#include "hosts/com/registration.h"
#include "hosts/com/test_telescope.h"
#include "platform/errors.h"
#include "platform/image_array.h"
#include "platform/own_program.h"

namespace vantrel::hosts::com {
namespace {

using namespace std::chrono_literals;
using platform::ObjectRef;
using platform::Value;

void registerServers() {
    using test::ServerKind;
    const auto folder = platform::ownProgram().parent_path();
    test::registerClass(test::kProgramId, test::kProgramClass, ServerKind::kProgram, folder / COM_SERVER);
    test::registerClass(test::kLibraryId, test::kLibraryClass, ServerKind::kLibrary, folder / COM_LIBRARY);
    test::registerClass(test::kLibraryOf32BitsId, test::kLibraryOf32BitsClass, ServerKind::kLibraryOf32Bits,
                        folder / COM_LIBRARY32);
    test::registerDriver(test::kProgramId, "A telescope for tests");
}

struct ComHost {
    ComHost() { registerServers(); }

    headless::SystemTime time{headless::SystemTime::now(), [] { return -1; }};
    platform::QueuedEventLoop loop{time};
    platform::OutsideCalls calls;
    bool stopped = false;
    Host host{PumpedWait(loop, calls, [this] { return stopped; })};

    static platform::OperationError failureOf(const std::function<void()>& call) {
        try {
            call();
        } catch (const platform::OperationError& error) {
            return error;
        }
        return {0, "", ""};
    }
};

struct ComHostTest : ComHost, testing::TestWithParam<const char*> {};
struct ComRegistryTest : ComHost, testing::Test {};

TEST_P(ComHostTest, ValuesPassBothWays) {
    const ObjectRef telescope = host.create(GetParam());
    for (const Value& value : {Value(true), Value(false), Value(-7), Value(2.25), Value(""),
                               Value("T\xC3\xA9l \xE2\x84\x96"), Value()}) {
        telescope->put("Kept", value);
        EXPECT_EQ(telescope->get("Kept"), value);
    }
    telescope->put("Indexed", 5, {3});
    EXPECT_EQ(telescope->get("Indexed", {3}), Value(5));
    EXPECT_EQ(telescope->call("Missing", {Value()}), Value(1)) << "an argument that is left out";
    EXPECT_EQ(telescope->get("Nobody").toObject(), nullptr);
    const ObjectRef partner = telescope->get("Partner").toObject();
    partner->put("Kept", 8);
    EXPECT_EQ(partner->get("Kept"), Value(8));
}

TEST_P(ComHostTest, ImagesPassBothWays) {
    const ObjectRef telescope = host.create(GetParam());
    std::vector<std::int32_t> whole(40 * 30);
    for (std::size_t i = 0; i < whole.size(); ++i) whole[i] = static_cast<std::int32_t>(i * 7);
    const auto sent = std::make_shared<const platform::ImageArray>(40, 30, whole);
    telescope->put("Kept", Value(platform::ImageRef(sent)));
    const platform::ImageRef back = telescope->get("Kept").toImage();
    ASSERT_EQ(back->width(), 40U);
    ASSERT_EQ(back->height(), 30U);
    EXPECT_EQ(std::get<std::vector<std::int32_t>>(back->pixels()), whole);
    const auto floats = std::make_shared<const platform::ImageArray>(2, 1, std::vector<float>{0.5F, -3.F});
    telescope->put("Kept", Value(platform::ImageRef(floats)));
    EXPECT_EQ(telescope->get("Kept").toImage()->at(0, 0), 0.5);
}

TEST_P(ComHostTest, FailuresHaveTheirNumbers) {
    const ObjectRef telescope = host.create(GetParam());
    for (const int number : {5, 91, 1001, -2147220479}) {
        const auto failure = failureOf([&] { telescope->call("FailWith", {number}); });
        EXPECT_EQ(failure.number(), number);
        EXPECT_EQ(failure.source(), "Test driver");
        EXPECT_EQ(failure.description(), "it is \xC2\xBD broken");
    }
    EXPECT_EQ(failureOf([&] { telescope->get("NoSuchThing"); }).number(), 438);
}

TEST_P(ComHostTest, WhatTakesTimeLetsTheProgramGoOn) {
    const ObjectRef telescope = host.create(GetParam());
    int ticks = 0;
    bool told = false;
    const auto timer = loop.every(20ms, [&] {
        ++ticks;
        told = told || calls.underWay();
    });
    EXPECT_EQ(telescope->call("Rest", {600}), Value(true));
    EXPECT_GT(ticks, 5);
    EXPECT_TRUE(told);
    EXPECT_FALSE(calls.underWay());
}

TEST_P(ComHostTest, WhatHangsIsGivenUpAndOthersGoOn) {
    const ObjectRef telescope = host.create(GetParam());
    const auto timer = loop.every(100ms, [&] { stopped = true; });
    const auto failure = failureOf([&] { telescope->call("Rest", {4000}); });
    EXPECT_EQ(failure.number(), 462);
    EXPECT_EQ(failure.description(), std::string(GetParam()) + ".Rest doesn't answer");
    EXPECT_EQ(failureOf([&] { telescope->get("Kept"); }).number(), 462) << "its thread is still in there";
    const ObjectRef other =
        host.create(GetParam() == std::string(test::kLibraryId) ? test::kProgramId : test::kLibraryId);
    other->put("Kept", 3);
    EXPECT_EQ(other->get("Kept"), Value(3));
    for (int tries = 0; tries < 100 && failureOf([&] { telescope->get("Kept"); }).number() == 462; ++tries)
        loop.sleep(100ms);
    EXPECT_EQ(failureOf([&] { telescope->get("Kept"); }).number(), 0) << "what hung has returned";
}

INSTANTIATE_TEST_SUITE_P(Servers, ComHostTest, testing::Values(test::kProgramId, test::kLibraryId));
INSTANTIATE_TEST_SUITE_P(LibraryOf32Bits, ComHostTest, testing::Values(test::kLibraryOf32BitsId));

TEST_F(ComRegistryTest, ALibraryOf32BitsThatDiesDiesAloneAndIsMadeAnew) {
    const ObjectRef telescope = host.create(test::kLibraryOf32BitsId);
    const ObjectRef partner = telescope->get("Partner").toObject();
    EXPECT_NE(failureOf([&] { telescope->call("Die"); }).number(), 0);
    EXPECT_EQ(failureOf([&] { partner->get("Kept"); }).number(), platform::error_number::kServerIsGone);
    const ObjectRef anew = host.create(test::kLibraryOf32BitsId);
    anew->put("Kept", 5);
    EXPECT_EQ(anew->get("Kept"), Value(5));
}

TEST_F(ComRegistryTest, TheRegistryTellsOfServersAndDrivers) {
    EXPECT_TRUE(host.isInstalled(test::kProgramId));
    EXPECT_FALSE(host.isInstalled("Nobody.Telescope"));
    EXPECT_EQ(failureOf([&] { host.create("Nobody.Telescope"); }).number(), 429);
    EXPECT_TRUE(host.serverPath(test::kProgramId).ends_with(COM_SERVER)) << host.serverPath(test::kProgramId);
    EXPECT_TRUE(host.serverPath(test::kLibraryOf32BitsId).ends_with(COM_LIBRARY32));
    EXPECT_EQ(host.serverPath("Nobody.Telescope"), "");
    EXPECT_EQ(host.profileDescription("Telescope", test::kProgramId), "A telescope for tests");
    ASSERT_FALSE(host.drivers("Telescope").empty());
    EXPECT_EQ(host.drivers("Telescope")[0].progId, test::kProgramId);
}

// In a run of its own after all others: Wine goes on remembering a server that died; Windows would start
// another.
TEST_F(ComRegistryTest, AServerThatDiesIsAFailure) {
    const ObjectRef telescope = host.create(test::kProgramId);
    EXPECT_NE(failureOf([&] { telescope->call("Die"); }).number(), 0);
    EXPECT_NE(failureOf([&] { telescope->get("Kept"); }).number(), 0);
}

}  // namespace
}  // namespace vantrel::hosts::com
