#include "hosts/alpaca/client.h"

#include <gtest/gtest.h>

#include "hosts/alpaca/alpaca_world.h"
#include "hosts/alpaca/device_error.h"
#include "hosts/alpaca/reply.h"
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
    EXPECT_EQ(formText(true), "True");
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

TEST_F(ClientTest, WaitsNoLongerThanItsPatienceAndForNobodyWhoGaveUp) {
    server.faults[""] = Fault::kSilence;
    EXPECT_EQ(refusal(question("slewing")), "The Alpaca server at mount:11111 doesn't answer.");
    EXPECT_EQ(now(), 3s);
    const auto stop = loop.after(1s, [this] { stopped = true; });
    EXPECT_THROW(client.get(question("slewing")), GivenUp);
    EXPECT_LE(now(), 4020ms);
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

// ---- replies

using platform::HttpAnswer;
using platform::HttpError;

constexpr std::uint32_t kTransaction = 12;
const std::string kServer = "10.0.0.7:11111";

/// The value, or the kind of error and its words.
std::string outcomeOf(const HttpAnswer& answer, Expects expects) {
    try {
        return valueOf(answer, expects, kTransaction, kServer).dump();
    } catch (const DeviceError& error) {
        return "device " + std::to_string(error.number()) + ": " + error.what();
    } catch (const UnknownMember& error) {
        return std::string("unknown: ") + error.what();
    } catch (const ServerError& error) {
        return std::string("server: ") + error.what();
    } catch (const std::runtime_error& error) {
        return std::string("failed: ") + error.what();
    }
}

TEST(Reply, IsJudgedByStatusThenContentThenErrorThenValue) {
    const std::string ours = R"("ClientTransactionID":12)";
    const std::string json = "application/json";
    const std::string server = "The Alpaca server at 10.0.0.7:11111 ";
    const std::string noServer = "server: What answers at 10.0.0.7:11111 is no Alpaca server ";
    const struct {
        const char* why;
        HttpAnswer answer;
        std::string asQuestion;
        std::string asCommand = asQuestion;
    } cases[] = {
        {"all is well",
         HttpAnswer{200, json, R"({"Value":1.5,"ErrorNumber":0,"ErrorMessage":"",)" + ours + "}"}, "1.5"},
        {"without a value", HttpAnswer{200, json, R"({"ErrorNumber":0,)" + ours + "}"},
         "server: " + server + "sent an answer without a value.", "null"},
        {"the error comes before the value",
         HttpAnswer{200, json, R"({"Value":3,"ErrorNumber":1035,"ErrorMessage":"Busy"})"},
         "device 1035: Busy"},
        {"an error without words", HttpAnswer{200, json, R"({"ErrorNumber":1032,"ErrorMessage":""})"},
         "device 1032: The mount is parked: please unpark it."},
        {"no error fields at all", HttpAnswer{200, json, R"({"Value":[1]})"}, "[1]"},
        {"another content type", HttpAnswer{200, "text/plain", R"({"Value":true})"}, "true"},
        {"a web page", HttpAnswer{200, "text/html", "<html></html>"}, noServer + "(it sends a web page)."},
        {"a web page in disguise", HttpAnswer{200, json, " <!DOCTYPE html>"},
         noServer + "(it sends a web page)."},
        {"no JSON", HttpAnswer{200, json, "Hello"}, noServer + "(its answer can't be read: it is no JSON)."},
        {"nested without end", HttpAnswer{200, json, std::string(100'000, '[')},
         noServer + "(its answer can't be read: it is nested without end)."},
        {"no object", HttpAnswer{200, json, "[]"}, noServer + "(its answer is no object)."},
        {"404", HttpAnswer{404, json, R"({"detail":"Not Found"})"}, "unknown: Not Found"},
        {"404 as a web page", HttpAnswer{404, "text/html", "<h1>404</h1>"},
         "unknown: " + server + "doesn't know this device or member."},
        {"400 with an error number",
         HttpAnswer{400, json, R"({"ErrorNumber":1025,"ErrorMessage":"Unknown method"})"},
         "unknown: Unknown method"},
        {"500", HttpAnswer{500, "text/plain", "Oops\nat line 3"},
         "failed: " + server + "failed: Oops at line 3"},
        {"a redirect", HttpAnswer{302, "", ""}, noServer + "(it answers 302)."},
        {"an answer to an earlier request", HttpAnswer{200, json, R"({"Value":1,"ClientTransactionID":11})"},
         "server: " + server + "answers late and out of turn."},
        {"a transaction that we never began",
         HttpAnswer{200, json, R"({"Value":1,"ClientTransactionID":99})"}, "1"},
        {"an error number beyond all numbers", HttpAnswer{200, json, R"({"Value":1,"ErrorNumber":1e300})"},
         "device 2147483647: The device reports error 2147483647."},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(outcomeOf(c.answer, Expects::kValue), c.asQuestion) << c.why;
        EXPECT_EQ(outcomeOf(c.answer, Expects::kNothing), c.asCommand) << c.why;
    }
}

TEST(Reply, SaysWhatIsWrongWithTheServer) {
    using Kind = HttpError::Kind;
    const std::pair<Kind, const char*> cases[] = {
        {Kind::kUnreachable,
         "The Alpaca server at 10.0.0.7:11111 can't be reached: is it running, and in this network?"},
        {Kind::kTimedOut, "The Alpaca server at 10.0.0.7:11111 doesn't answer."},
        {Kind::kTooLarge, "The Alpaca server at 10.0.0.7:11111 sends more than it should."},
        {Kind::kBroken, "The Alpaca server at 10.0.0.7:11111 broke off in the middle of an answer."},
        {Kind::kRefused, "What answers at 10.0.0.7:11111 is no Alpaca server (detail)."}};
    for (const auto& [kind, says] : cases)
        EXPECT_STREQ(serverError(HttpError(kind, "detail"), kServer).what(), says);
}

}  // namespace
}  // namespace vantrel::hosts::alpaca
