#include "hosts/udp_search.h"

#include <string>

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace vantrel::hosts {
namespace {

/// Somebody on the loopback address who answers whatever is asked.
class Answerer {
  public:
    Answerer() : socket_(::socket(AF_INET, SOCK_DGRAM, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        ::bind(socket_, reinterpret_cast<sockaddr*>(&address), sizeof address);
        socklen_t size = sizeof address;
        ::getsockname(socket_, reinterpret_cast<sockaddr*>(&address), &size);
        port = ntohs(address.sin_port);
    }
    ~Answerer() { ::close(socket_); }

    std::string answer(const std::string& words, int times = 1) {
        char question[2000] = "";
        sockaddr_storage from{};
        socklen_t size = sizeof from;
        pollfd waiting{socket_, POLLIN, 0};
        if (::poll(&waiting, 1, 5000) != 1) return "";
        const ssize_t got =
            ::recvfrom(socket_, question, sizeof question, 0, reinterpret_cast<sockaddr*>(&from), &size);
        for (int i = 0; i < times; ++i)
            ::sendto(socket_, words.data(), words.size(), 0, reinterpret_cast<sockaddr*>(&from), size);
        return {question, static_cast<std::size_t>(std::max<ssize_t>(got, 0))};
    }

    int port = 0;

  private:
    int socket_;
};

TEST(UdpSearch, AsksThisMachine) {
    Answerer answerer;
    const auto search = searchNetwork({answerer.port, "ff12::a1:9aca", "who is there"});
    EXPECT_TRUE(search->answers().empty());
    EXPECT_EQ(answerer.answer("I am"), "who is there");
    const auto answers = search->answers();
    ASSERT_EQ(answers.size(), 1U);
    EXPECT_EQ(answers[0].host, "127.0.0.1");
    EXPECT_EQ(answers[0].words, "I am");
    EXPECT_TRUE(search->answers().empty());
}

TEST(UdpSearch, CutsLongAnswersAndTakesSomeAtATime) {
    Answerer answerer;
    const auto search = searchNetwork({answerer.port, "ff12::a1:9aca", "who is there"});
    answerer.answer(std::string(5000, 'x'), 120);
    const auto answers = search->answers();
    EXPECT_GT(answers.size(), 0U);
    EXPECT_LE(answers.size(), 100U);
    EXPECT_EQ(answers[0].words.size(), 1024U);
}

TEST(UdpSearch, AsksNobodyAtAnImpossibleAddress) {
    EXPECT_TRUE(searchNetwork({1, "no group", "who is there"})->answers().empty());
}

}  // namespace
}  // namespace vantrel::hosts
