#include "hosts/alpaca/reply.h"

#include <gtest/gtest.h>

#include "hosts/alpaca/device_error.h"

namespace vantrel::hosts::alpaca {
namespace {

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
    const std::string noServer = "server: What answers at 10.0.0.7:11111 is no Alpaca server ";
    const struct {
        const char* why;
        HttpAnswer answer;
        std::string asQuestion;
        std::string asCommand;
    } cases[] = {
        {"all is well",
         {200, json, R"({"Value":1.5,"ErrorNumber":0,"ErrorMessage":"",)" + ours + "}"},
         "1.5",
         "1.5"},
        {"without a value",
         {200, json, R"({"ErrorNumber":0,)" + ours + "}"},
         "server: The Alpaca server at 10.0.0.7:11111 sent an answer without a value.",
         "null"},
        {"null",
         {200, json, R"({"Value":null,"ErrorNumber":0})"},
         "server: The Alpaca server at 10.0.0.7:11111 sent an answer without a value.",
         "null"},
        {"the error comes before the value",
         {200, json, R"({"Value":3,"ErrorNumber":1035,"ErrorMessage":"Busy"})"},
         "device 1035: Busy",
         "device 1035: Busy"},
        {"an error without words",
         {200, json, R"({"ErrorNumber":1032,"ErrorMessage":""})"},
         "device 1032: The mount is parked: please unpark it.",
         "device 1032: The mount is parked: please unpark it."},
        {"an unknown number without words",
         {200, json, R"({"ErrorNumber":1300})"},
         "device 1300: The device reports error 1300.",
         "device 1300: The device reports error 1300."},
        {"words that aren't fit to be shown",
         {200, json, "{\"ErrorNumber\":1,\"ErrorMessage\":\"a\\r\\nb\\u0000c\"}"},
         "device 1: a  b c",
         "device 1: a  b c"},
        {"no error fields at all", {200, json, R"({"Value":[1]})"}, "[1]", "[1]"},
        {"another content type", {200, "text/plain", R"({"Value":true})"}, "true", "true"},
        {"no content type", {200, "", R"({"Value":true})"}, "true", "true"},
        {"a web page",
         {200, "text/html", "<html></html>"},
         noServer + "(it sends a web page).",
         noServer + "(it sends a web page)."},
        {"a web page in disguise",
         {200, json, " <!DOCTYPE html>"},
         noServer + "(it sends a web page).",
         noServer + "(it sends a web page)."},
        {"no JSON",
         {200, json, "Hello"},
         noServer + "(its answer can't be read: it is no JSON).",
         noServer + "(its answer can't be read: it is no JSON)."},
        {"cut off",
         {200, json, R"({"Value":tr)"},
         noServer + "(its answer can't be read: it is no JSON).",
         noServer + "(its answer can't be read: it is no JSON)."},
        {"nested without end",
         {200, json, std::string(100'000, '[')},
         noServer + "(its answer can't be read: it is nested without end).",
         noServer + "(its answer can't be read: it is nested without end)."},
        {"no object",
         {200, json, "[]"},
         noServer + "(its answer is no object).",
         noServer + "(its answer is no object)."},
        {"404", {404, json, R"({"detail":"Not Found"})"}, "unknown: Not Found", "unknown: Not Found"},
        {"404 as a web page",
         {404, "text/html", "<h1>404</h1>"},
         "unknown: The Alpaca server at 10.0.0.7:11111 doesn't know this device or member.",
         "unknown: The Alpaca server at 10.0.0.7:11111 doesn't know this device or member."},
        {"400 in plain text",
         {400, "text/plain", "Declination: no number"},
         "unknown: Declination: no number",
         "unknown: Declination: no number"},
        {"400 with an error number",
         {400, json, R"({"ErrorNumber":1025,"ErrorMessage":"Unknown method"})"},
         "unknown: Unknown method",
         "unknown: Unknown method"},
        {"500",
         {500, "text/plain", "Oops\nat line 3"},
         "failed: The Alpaca server at 10.0.0.7:11111 failed: Oops at line 3",
         "failed: The Alpaca server at 10.0.0.7:11111 failed: Oops at line 3"},
        {"a redirect", {302, "", ""}, noServer + "(it answers 302).", noServer + "(it answers 302)."},
        {"a password is wanted",
         {401, "", ""},
         noServer + "(it answers 401).",
         noServer + "(it answers 401)."},
        {"an answer to an earlier request",
         {200, json, R"({"Value":1,"ClientTransactionID":11})"},
         "server: The Alpaca server at 10.0.0.7:11111 answers late and out of turn.",
         "server: The Alpaca server at 10.0.0.7:11111 answers late and out of turn."},
        {"a transaction that we never began",
         {200, json, R"({"Value":1,"ClientTransactionID":99})"},
         "1",
         "1"},
        {"no transaction", {200, json, R"({"Value":1,"ClientTransactionID":0})"}, "1", "1"},
        {"a transaction that is no number",
         {200, json, R"({"Value":1,"ClientTransactionID":"x"})"},
         "1",
         "1"},
        {"an error number beyond all numbers",
         {200, json, R"({"Value":1,"ErrorNumber":1e300})"},
         "device 2147483647: The device reports error 2147483647.",
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

TEST(DeviceError, KeepsServersWordsFit) {
    EXPECT_STREQ(DeviceError(1, "caf\xc3\xa9").what(), "caf\xc3\xa9");
    EXPECT_STREQ(DeviceError(1, "caf\xe9 \xf0\x9f\x94\xad \xed\xa0\x80").what(), "caf? \xf0\x9f\x94\xad ???");
    EXPECT_EQ(std::string(DeviceError(1, std::string(10'000, 'x')).what()).size(), 300U);
    EXPECT_EQ(std::string(DeviceError(1, std::string(999, 'x') + "\xc3\xa9").what()).size(), 300U);
}

}  // namespace
}  // namespace vantrel::hosts::alpaca
