// Downloads by HTTP.
#pragma once

#include "catalogs/downloads.h"
#include "platform/http/http_transfers.h"

namespace vantrel::catalogs {

/// What a catalogue service may take: its search and the transfer together.
inline constexpr platform::HttpLimits kDownloadLimits{
    .body = std::size_t{32} << 20U,
    .connecting = std::chrono::seconds{15},
    .whole = std::chrono::seconds{120},
    .drip = platform::HttpLimits::Drip{.bytesPerSecond = 100, .patience = std::chrono::seconds{60}}};

/// One download at a time, as a polite guest: a second one that is asked for meanwhile is refused.
class HttpDownloads : public Downloads {
  public:
    explicit HttpDownloads(const platform::HttpLimits& limits = kDownloadLimits) : limits_(limits) {}

    std::string fetch(const std::string& url, const KeepGoing& keepGoing) override;

  private:
    platform::HttpLimits limits_;
    platform::HttpTransfers transfers_;
    bool busy_ = false;
};

}  // namespace vantrel::catalogs
