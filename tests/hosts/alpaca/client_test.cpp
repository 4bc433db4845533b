#include "hosts/alpaca/client.h"

#include <gtest/gtest.h>

#include "hosts/alpaca/alpaca_world.h"
#include "support/refusal.h"

namespace vantrel::hosts::alpaca {
namespace {

using namespace std::chrono_literals;
using platform::HttpRequest;
using test::Fault;

const ServerAddress kMount{"mount", 11111};

struct ClientTest : testing::Test, test::AlpacaWorld {
    ClientTest() {
        server.values["telescope/0/slewing"] = false;
        server.commands["telescope/0/unpark"] = [](const auto&) {};
        const auto answer = http.answer;
        http.answer = [this, answer](const HttpRequest& request) {
            sent.push_back(request);
            return answer(request);
        };
    }

    Question question(const std::string& member, Question::Kind kind = Question::Kind::kGet) {
        return {.server = kMount, .path = "/api/v1/telescope/0/" + member, .kind = kind};
    }
    std::string refusal(const Question& question) {
        return test::refusalOf<std::runtime_error>([&] { client.get(question); });
    }

    test::FakeServer& server = servers["mount:11111"];
    std::vector<HttpRequest> sent;
};

TEST_F(ClientTest, CountsTransactionsAndNamesItself) {
    EXPECT_EQ(client.get(question("slewing")), Json(false));
    Question command = question("unpark", Question::Kind::kPut);
    command.parameters = {{"RightAscension", formText(5.5)}, {"Text", "a b&c=d+é"}};
    client.get(command);
    ASSERT_EQ(sent.size(), 2U);
    EXPECT_EQ(sent[0].url, "http://mount:11111/api/v1/telescope/0/slewing?ClientID=17&ClientTransactionID=1");
    EXPECT_EQ(sent[0].form, "");
    EXPECT_EQ(sent[1].url, "http://mount:11111/api/v1/telescope/0/unpark");
    EXPECT_EQ(sent[1].form,
              "RightAscension=5.5&Text=a%20b%26c%3Dd%2B%C3%A9&ClientID=17&ClientTransactionID=2");
}

TEST(Client, WritesValuesAsTheProtocolDoes) {
    EXPECT_EQ(formText(5.0), "5");
    EXPECT_EQ(formText(0.1), "0.1");
    EXPECT_EQ(formText(-1e-7), "-0.0000001");
    EXPECT_EQ(formText(1.0 / 3), "0.3333333333333333");
    EXPECT_EQ(formText(true), "True");
    EXPECT_EQ(formText(-3), "-3");
    EXPECT_GT(formText(1e300).size(), 300U);
}

TEST(Client, WritesAddresses) {
    EXPECT_EQ(baseUrl({"192.168.1.5", 11111}), "http://192.168.1.5:11111");
    EXPECT_EQ(baseUrl({"::1", 80}), "http://[::1]:80");
    EXPECT_EQ(baseUrl({"fe80::2%eth0", 80}), "http://[fe80::2%25eth0]:80");
}

TEST_F(ClientTest, AsksOnceMoreWhenAnAnswerWasCut) {
    int trials = 0;
    http.answer = [&](const HttpRequest& request) {
        if (++trials == 1)
            return test::FakeReply{platform::HttpError(platform::HttpError::Kind::kBroken, "cut")};
        return server.answer(request);
    };
    EXPECT_EQ(client.get(question("slewing")), Json(false));
    trials = 0;
    EXPECT_EQ(refusal(question("unpark", Question::Kind::kPut)),
              "The Alpaca server at mount:11111 broke off in the middle of an answer.")
        << "a command isn't given twice";
    EXPECT_EQ(trials, 1);
}

TEST_F(ClientTest, WaitsNoLongerThanItsPatience) {
    server.faults[""] = Fault::kSilence;
    EXPECT_EQ(refusal(question("slewing")), "The Alpaca server at mount:11111 doesn't answer.");
    EXPECT_EQ(now(), 3s);
}

TEST_F(ClientTest, IsGivenUpAtOnceWhenNobodyWants) {
    server.faults[""] = Fault::kSilence;
    const auto stop = loop.after(1s, [this] { stopped = true; });
    EXPECT_THROW(client.get(question("slewing")), GivenUp);
    EXPECT_LE(now(), 1020ms);
    EXPECT_EQ(http.underWay(), 0U);
    EXPECT_NO_THROW(client.pause(1s)) << "what follows a Stop is waited for";
}

TEST_F(ClientTest, HearsNothingOfWhatWasLetGo) {
    bool heard = false;
    {
        const HttpExchange exchange = client.ask(question("slewing"), [&](const auto&) { heard = true; });
    }
    loop.sleep(10s);
    EXPECT_FALSE(heard);
    EXPECT_EQ(http.underWay(), 0U);
}

}  // namespace
}  // namespace vantrel::hosts::alpaca
