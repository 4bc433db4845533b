// Pages for the browsers of the local network, behind an address that can't be guessed.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "page/http_server.h"
#include "page/own_address.h"
#include "page/secret.h"
#include "platform/live_page.h"

namespace vantrel::page {

/// What the camera sees.
struct ShownPicture {
    std::function<std::uint64_t()> number;  // another one for another picture; 0: none
    std::function<std::string()> png;
};

struct NetworkSeams {
    std::function<Secret()> secret = systemSecret;
    std::function<std::vector<OwnAddress>()> addresses = ownAddresses;
    ShownPicture picture = {};
    PageLimits limits = {};
};

/// A page that is closed and opened again is found where it was, as far as its port is still free.
class NetworkPages : public platform::LivePages {
  public:
    explicit NetworkPages(platform::EventLoop& loop, NetworkSeams seams = {});

    std::unique_ptr<platform::LivePage> open(const std::string& host, int port,
                                             platform::LivePageListener listener) override;

  private:
    std::unique_ptr<platform::LivePage> openAt(const std::string& host, int port,
                                               const platform::LivePageListener& listener);

    platform::EventLoop& loop_;
    NetworkSeams seams_;
    std::string token_;
    int lastPort_ = 0;
};

/// Takes as long wherever they differ.
bool sameSecret(const std::string& one, const std::string& other);

}  // namespace vantrel::page
