#include "hosts/indi/client.h"

#include <gmock/gmock.h>

#include "hosts/indi/directory.h"
#include "hosts/indi/indi_world.h"

namespace vantrel::hosts::indi {
namespace {

using namespace std::chrono_literals;
using platform::Milliseconds;
using Lines = std::vector<std::string>;
using test::FakeNetwork;
using enum test::Treatment::Kind;

class ClientTest : public test::IndiWorld {
  protected:
    void open() {
        kept = client->keepOpen();
        loop.sleep(100ms);
    }

    std::shared_ptr<Client> client = servers.client(address);
    std::shared_ptr<void> kept;
};

TEST_F(ClientTest, IsOpenAsLongAsSomebodyKeepsItAndForgetsWhatItHad) {
    EXPECT_FALSE(client->open());
    auto first = client->keepOpen();
    kept = client->keepOpen();
    loop.sleep(100ms);
    EXPECT_THAT(client->devices(), testing::ElementsAre("Camera", "Mount"));
    first.reset();
    EXPECT_TRUE(client->open());
    kept.reset();
    EXPECT_FALSE(client->open());
    EXPECT_THAT(client->devices(), testing::IsEmpty());
    loop.sleep(1h);
    EXPECT_EQ(server.network.attempts, 1);
    open();
    EXPECT_THAT(client->devices(), testing::ElementsAre("Camera", "Mount"));
    EXPECT_THAT(told, testing::IsEmpty());
}

TEST_F(ClientTest, PropertiesAndDevicesComeAndGo) {
    open();
    server.sayAll("<defTextVector device=\"New\" name=\"T\"><defText name=\"A\">1</defText></defTextVector>");
    loop.sleep(10ms);
    EXPECT_EQ(client->find("New", "T")->text("A"), "1");
    server.sayAll(
        "<setTextVector device=\"New\" name=\"T\"><oneText name=\"A\">2</oneText></setTextVector>"
        "<setTextVector device=\"New\" name=\"U\"/><setTextVector device=\"Newer\" name=\"T\"/>");
    loop.sleep(10ms);
    EXPECT_EQ(client->find("New", "T")->text("A"), "2");
    server.sayAll("<delProperty device=\"New\" name=\"T\"/>");
    loop.sleep(10ms);
    EXPECT_EQ(client->find("New", "T"), nullptr);
    EXPECT_TRUE(client->has("New"));
    server.sayAll("<delProperty device=\"New\"/><delProperty device=\"Unknown\"/><delProperty/>");
    loop.sleep(10ms);
    EXPECT_FALSE(client->has("New"));
    EXPECT_TRUE(client->open());
}

TEST_F(ClientTest, TheReasonIsTheLatestComplaintOrElseTheLatestMessage) {
    open();
    const long before = client->serial();
    const auto say = [&](const std::string& text) {
        server.sayAll("<message device=\"Mount\" message=\"" + text + "\"/>");
        loop.sleep(10ms);
    };
    EXPECT_EQ(client->messageSince("Mount", before), "");
    say("[INFO] Slewing");
    EXPECT_EQ(client->messageSince("Mount", before), "Slewing");
    say("[WARNING] Please unpark");
    say("[INFO] Still here");
    EXPECT_EQ(client->messageSince("Mount", before), "Please unpark");
    say("Error: out of range");
    EXPECT_EQ(client->messageSince("Mount", before), "Error: out of range");
    EXPECT_EQ(client->messageSince("Mount", client->serial()), "");
    say(std::string(5000, 'x'));
    EXPECT_EQ(client->messageSince("Mount", client->serial() - 1).size(), 300U);
    for (const char* odd : {"[", "[]", "[ERROR]", ""}) say(odd);
}

TEST_F(ClientTest, AServerThatSendsWithoutEndIsLeft) {
    const struct {
        const char* why;
        std::function<std::string(int)> element;
        std::size_t devices;
    } cases[] = {
        {"devices", [](int i) { return "<defTextVector device=\"D" + std::to_string(i) + "\" name=\"T\"/>"; },
         200},
        {"properties",
         [](int i) { return "<defTextVector device=\"D\" name=\"T" + std::to_string(i) + "\"/>"; }, 3},
        {"bytes",
         [](int i) {
             return "<defTextVector device=\"D\" name=\"T" + std::to_string(i % 1000) +
                    "\"><defText name=\"a\">" + std::string(200'000, 'x') + "</defText></defTextVector>";
         },
         2},
    };
    for (const auto& [why, element, devices] : cases) {
        open();
        std::string all;
        for (int i = 0; i < 1500; ++i) all += element(i);
        server.sayAll(all);
        loop.sleep(20s);  // a server that was left is tried again
        EXPECT_EQ(client->devices().size(), devices) << why;
        server.sayAll("<delProperty device=\"D\"/>");
        kept.reset();
        loop.sleep(1s);
    }
    EXPECT_THAT(told, testing::ElementsAre("The connection to the INDI server at localhost:7624 was lost: it "
                                           "sends more than this program can keep",
                                           "The INDI server at localhost:7624 is back"));
}

TEST_F(ClientTest, AnswersTheServersPings) {
    open();
    std::string said;
    server.network.onConnection = [&](const std::shared_ptr<test::FakeConnection>& connection) {
        connection->onReceive = [&](const std::string& bytes) { said += bytes; };
        connection->send("<pingRequest uid=\"a&quot;b\"/>");
    };
    server.stop();
    loop.sleep(3s);
    EXPECT_THAT(said, testing::HasSubstr("<pingReply uid=\"a&quot;b\"/>"));
}

TEST_F(ClientTest, WhatIsSentIsEscaped) {
    open();
    server.sayAll("<defTextVector device=\"Mount\" name=\"T\"><defText name=\"A&amp;B\"/></defTextVector>");
    loop.sleep(10ms);
    client->setTexts("Mount", "T", {{"A&B", "<it's> \"&\""}});
    EXPECT_EQ(server.commands.back(), "T A&B=<it's> \"&\"");
}

// ---- searching

TEST_F(ClientTest, SearchingTellsMountsAndCamerasOfAllServers) {
    const Search search = searchServers(servers, {address, {"otherhost", 7625}});
    ASSERT_EQ(search.devices.size(), 4U);
    EXPECT_THAT(search.problems, testing::IsEmpty());
    EXPECT_TRUE(search.devices[0].isCamera);
    EXPECT_FALSE(search.devices[0].isMount);
    EXPECT_EQ(search.devices[3].id.progId(), "Indi:otherhost:7625/Mount");
    EXPECT_TRUE(search.devices[3].isMount);
    EXPECT_LE(now(), 500ms);
    loop.sleep(1h);
    EXPECT_EQ(server.network.attempts, 2) << "nothing is left behind";
}

TEST_F(ClientTest, SearchingEndsSoonWhateverTheServersDo) {
    const std::string where = "The INDI server at localhost:7624 ";
    const struct {
        const char* why;
        std::function<void()> spoil;
        Lines problems;
        Milliseconds latest;
    } cases[] = {
        {"not running", [&] { server.network.answer = FakeNetwork::Answer::kRefuse; },
         Lines{where + "doesn't answer: is it running?"}, 20ms},
        {"switched off", [&] { server.network.answer = FakeNetwork::Answer::kNothing; },
         Lines{where + "doesn't answer: is it running?"}, 2500ms},
        {"silent", treated("getProperties", {kObey, 1h}), Lines{where + "has neither mount nor camera"},
         1100ms},
        {"slow", treated("getProperties", {kObey, 900ms}), Lines{}, 1300ms},
    };
    for (const auto& [why, spoil, problems, latest] : cases) {
        server.network.answer = FakeNetwork::Answer::kAccept;
        spoil();
        const Milliseconds begin = now();
        EXPECT_EQ(searchServers(servers, {address}).problems, problems) << why;
        EXPECT_LE(now() - begin, latest) << why;
        loop.sleep(1min);
    }
    EXPECT_THAT(searchServers(servers, {}).devices, testing::IsEmpty());
}

}  // namespace
}  // namespace vantrel::hosts::indi
