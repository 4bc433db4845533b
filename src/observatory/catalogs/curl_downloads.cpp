#include "observatory/catalogs/curl_downloads.h"

#include <memory>

#include <curl/curl.h>

namespace vantrel::observatory {

namespace {

constexpr long kConnectSeconds = 15;
constexpr long kWholeSeconds = 120;
constexpr int kPollMilliseconds = 50;
constexpr std::size_t kLargestDocument = 64U << 20U;

struct Easy {
    void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
};
struct Multi {
    void operator()(CURLM* handle) const { curl_multi_cleanup(handle); }
};

/// The library's one-time preparation.
void prepareLibrary() {
    static const CURLcode ready = curl_global_init(CURL_GLOBAL_DEFAULT);
    if (ready != CURLE_OK) throw DownloadError(curl_easy_strerror(ready));
}

std::size_t append(char* data, std::size_t size, std::size_t count, void* document) {
    auto& text = *static_cast<std::string*>(document);
    if (text.size() + size * count > kLargestDocument) return 0;  // ends the transfer
    text.append(data, size * count);
    return size * count;
}

/// Takes the transfer out of the bundle when it goes.
class Transfer {
  public:
    Transfer(CURLM* bundle, CURL* handle) : bundle_(bundle), handle_(handle) {
        curl_multi_add_handle(bundle_, handle_);
    }
    ~Transfer() { curl_multi_remove_handle(bundle_, handle_); }
    Transfer(const Transfer&) = delete;
    Transfer& operator=(const Transfer&) = delete;

    /// Runs it to its end.
    CURLcode run(const KeepGoing& keepGoing) {
        for (int running = 1; running > 0;) {
            if (curl_multi_perform(bundle_, &running) != CURLM_OK) return CURLE_FAILED_INIT;
            if (running > 0) curl_multi_poll(bundle_, nullptr, 0, kPollMilliseconds, nullptr);
            if (running > 0 && keepGoing && !keepGoing()) throw DownloadGivenUp("the download was given up");
        }
        int left = 0;
        const CURLMsg* message = curl_multi_info_read(bundle_, &left);
        return message == nullptr ? CURLE_RECV_ERROR : message->data.result;
    }

  private:
    CURLM* bundle_;
    CURL* handle_;
};

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

std::string CurlDownloads::fetch(const std::string& url, const KeepGoing& keepGoing) {
    const BusyMark mark(busy_);
    prepareLibrary();
    const std::unique_ptr<CURLM, Multi> bundle(curl_multi_init());
    const std::unique_ptr<CURL, Easy> handle(curl_easy_init());
    if (bundle == nullptr || handle == nullptr) throw DownloadError("downloads aren't possible");
    std::string document;
    char problem[CURL_ERROR_SIZE] = "";
    curl_easy_setopt(handle.get(), CURLOPT_URL, url.c_str());
    curl_easy_setopt(handle.get(), CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(handle.get(), CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(handle.get(), CURLOPT_FOLLOWLOCATION, 1L);
    curl_easy_setopt(handle.get(), CURLOPT_MAXREDIRS, 5L);
    curl_easy_setopt(handle.get(), CURLOPT_USERAGENT, "Vantrel");
    curl_easy_setopt(handle.get(), CURLOPT_ACCEPT_ENCODING, "");  // whatever the library can unpack
    curl_easy_setopt(handle.get(), CURLOPT_CONNECTTIMEOUT, kConnectSeconds);
    curl_easy_setopt(handle.get(), CURLOPT_TIMEOUT, kWholeSeconds);
    curl_easy_setopt(handle.get(), CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(handle.get(), CURLOPT_QUICK_EXIT, 1L);  // don't wait for a name server when given up
    curl_easy_setopt(handle.get(), CURLOPT_FAILONERROR, 1L);
    curl_easy_setopt(handle.get(), CURLOPT_ERRORBUFFER, problem);
    curl_easy_setopt(handle.get(), CURLOPT_WRITEFUNCTION, append);
    curl_easy_setopt(handle.get(), CURLOPT_WRITEDATA, &document);
    const CURLcode result = Transfer(bundle.get(), handle.get()).run(keepGoing);
    if (result != CURLE_OK) throw DownloadError(*problem != '\0' ? problem : curl_easy_strerror(result));
    return document;
}

}  // namespace vantrel::observatory
