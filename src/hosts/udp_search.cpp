#include "hosts/udp_search.h"

#include "platform/sockets.h"

namespace vantrel::hosts {

namespace {

using platform::DatagramSocket;

constexpr std::size_t kLongestAnswer = 1024;  // bytes; nobody who means it needs more
constexpr int kMostAnswersAtOnce = 100;

class NetworkSearch : public UdpSearch {
  public:
    explicit NetworkSearch(const UdpQuestion& question) {
        four_.send(question.words, platform::loopbackAddress(), question.port);
        for (const platform::NetworkInterface& way : platform::networkInterfaces()) {
            if (way.broadcast) four_.send(question.words, *way.broadcast, question.port);
            if (way.group) six_.sendToGroup(question.words, question.group, question.port, *way.group);
        }
    }

    std::vector<UdpAnswer> answers() override {
        std::vector<UdpAnswer> all;
        for (const DatagramSocket* socket : {&four_, &six_})
            for (int i = 0; i < kMostAnswersAtOnce; ++i) {
                auto answer = socket->receive(kLongestAnswer);
                if (!answer) break;
                all.push_back({std::move(answer->from), std::move(answer->words)});
            }
        return all;
    }

  private:
    DatagramSocket four_{DatagramSocket::Family::kFour};
    DatagramSocket six_{DatagramSocket::Family::kSix};
};

}  // namespace

std::unique_ptr<UdpSearch> searchNetwork(const UdpQuestion& question) {
    return std::make_unique<NetworkSearch>(question);
}

}  // namespace vantrel::hosts
