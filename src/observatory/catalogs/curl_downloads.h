// Downloads by HTTP, through libcurl.
#pragma once

#include "observatory/catalogs/downloads.h"

namespace vantrel::observatory {

/// One download at a time, as a polite guest: a second one that is asked for meanwhile is refused.
class CurlDownloads : public Downloads {
  public:
    std::string fetch(const std::string& url, const KeepGoing& keepGoing) override;

  private:
    bool busy_ = false;
};

}  // namespace vantrel::observatory
