#include <gtest/gtest.h>

#include "catalogs/http_downloads.h"
#include "support/refusal.h"
#include "support/scripted_server.h"

namespace vantrel::catalogs {
namespace {

using namespace std::chrono_literals;
using test::httpAnswer;

/// The server answers in the pauses in which a download asks whether to go on.
class HttpDownloadsTest : public testing::Test {
  protected:
    std::string fetch() {
        return downloads_.fetch(server_.url(), [this] {
            server_.serve();
            return goOn_;
        });
    }
    std::string failure() {
        return test::refusalOf<DownloadError>([this] { fetch(); });
    }

    test::ScriptedServer server_;
    HttpDownloads downloads_{{.body = 100'000, .connecting = 5s, .whole = 20s, .drip = {}}};
    bool goOn_ = true;
};

TEST_F(HttpDownloadsTest, BringsADocumentThatHasMoved) {
    server_.scripts = {{{httpAnswer("", "302 Found", "Location: /there\r\n")}}, {{httpAnswer("stars")}}};
    EXPECT_EQ(fetch(), "stars");
}

TEST_F(HttpDownloadsTest, SaysWhatIsWrongInOneLine) {
    const struct {
        const char* why;
        test::Script script;
    } cases[] = {
        {"a refusal", {{httpAnswer("no such table", "404 Not Found")}}},
        {"a body without end", {{"HTTP/1.1 200 OK\r\n\r\n"}, std::string(10'000, 'x')}},
        {"an end in the middle", {{"HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nstar"}}},
        {"a file in place of a page", {{httpAnswer("", "302 Found", "Location: file:///etc/passwd\r\n")}}},
        {"packed rubbish", {{httpAnswer("stars", "200 OK", "Content-Encoding: gzip\r\n")}}},
    };
    for (const auto& c : cases) {
        server_.scripts = {c.script};
        const std::string says = failure();
        EXPECT_NE(says, "") << c.why;
        EXPECT_EQ(says.find('\n'), std::string::npos) << says;
    }
}

TEST_F(HttpDownloadsTest, IsGivenUpWhenNobodyWaits) {
    server_.scripts = {{{}, "", false}};
    goOn_ = false;
    EXPECT_THROW(fetch(), DownloadGivenUp);
}

TEST_F(HttpDownloadsTest, RefusesASecondDownloadMeanwhile) {
    server_.scripts = {{{httpAnswer("stars")}}};
    std::string second;
    const std::string first = downloads_.fetch(server_.url(), [&] {
        if (second.empty()) second = failure();
        server_.serve();
        return true;
    });
    EXPECT_EQ(second, "another download is running");
    EXPECT_EQ(first, "stars");
}

}  // namespace
}  // namespace vantrel::catalogs
