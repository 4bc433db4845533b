#include "catalogs/http_downloads.h"

namespace vantrel::catalogs {

namespace {

using platform::HttpAnswer;
using platform::HttpError;

constexpr platform::Milliseconds kBetweenQuestions{50};
constexpr int kGood = 200;
constexpr int kMostRedirects = 5;

class BusyMark {
  public:
    explicit BusyMark(bool& busy) : busy_(busy) {
        if (busy_) throw DownloadError("another download is running");
        busy_ = true;
    }
    ~BusyMark() { busy_ = false; }
    BusyMark(const BusyMark&) = delete;
    BusyMark& operator=(const BusyMark&) = delete;

  private:
    bool& busy_;
};

}  // namespace

std::string HttpDownloads::fetch(const std::string& url, const KeepGoing& keepGoing) {
    const BusyMark mark(busy_);
    try {
        const auto transfer = transfers_.start({.url = url,
                                                .limits = limits_,
                                                .redirects = kMostRedirects,
                                                .mayBePacked = true,
                                                .throughProxy = true});
        while (!transfer->isOver()) {
            if (!transfers_.move()) transfers_.waitForMovement(kBetweenQuestions);
            if (!transfer->isOver() && keepGoing && !keepGoing())
                throw DownloadGivenUp("the download was given up");
        }
        HttpAnswer answer = transfer->take();
        if (answer.status != kGood)
            throw DownloadError("the server refused with " + std::to_string(answer.status));
        return std::move(answer.body);
    } catch (const HttpError& error) {
        throw DownloadError(error.what());
    }
}

}  // namespace vantrel::catalogs
