#include "platform/http/http_transfers.h"

#include <algorithm>

#include <curl/curl.h>

namespace vantrel::platform {

namespace {

constexpr std::size_t kMostHeaderBytes = 256U << 10U;  // of all answers of a transfer together
constexpr long kReceiveBuffer = 256L << 10U;
constexpr std::size_t kReservedAtOnce = 64U << 20U;  // however much a server promises

/// The library's one-time preparation.
void prepareLibrary() {
    static const CURLcode ready = curl_global_init(CURL_GLOBAL_DEFAULT);
    if (ready != CURLE_OK) throw HttpError(HttpError::Kind::kBroken, curl_easy_strerror(ready));
}

HttpError::Kind kindOf(CURLcode code) {
    switch (code) {
        case CURLE_COULDNT_RESOLVE_PROXY:
        case CURLE_COULDNT_RESOLVE_HOST:
        case CURLE_COULDNT_CONNECT:
            return HttpError::Kind::kUnreachable;
        case CURLE_OPERATION_TIMEDOUT:
            return HttpError::Kind::kTimedOut;
        case CURLE_UNSUPPORTED_PROTOCOL:
        case CURLE_URL_MALFORMAT:
        case CURLE_TOO_MANY_REDIRECTS:
            return HttpError::Kind::kRefused;
        case CURLE_OUT_OF_MEMORY:  // the library's own, for a line of the head without end
            return HttpError::Kind::kTooLarge;
        default:
            return HttpError::Kind::kBroken;
    }
}

struct Easy {
    void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
};
struct Multi {
    void operator()(CURLM* handle) const { curl_multi_cleanup(handle); }
};
struct List {
    void operator()(curl_slist* list) const { curl_slist_free_all(list); }
};

}  // namespace

class HttpTransfers::Connections {
  public:
    Connections() {
        prepareLibrary();
        bundle_.reset(curl_multi_init());
        if (bundle_ == nullptr)
            throw HttpError(HttpError::Kind::kBroken, "no network connections are possible");
    }

    CURLM* bundle() const { return bundle_.get(); }

    /// Something arrived or ended since the last look.
    bool moved = false;

  private:
    std::unique_ptr<CURLM, Multi> bundle_;
};

class HttpTransfers::CurlTransfer : public HttpTransfer {
  public:
    CurlTransfer(Connections& connections, const HttpRequest& request)
        : connections_(connections), limits_(request.limits), form_(request.form), handle_(curl_easy_init()) {
        if (handle_ == nullptr)
            throw HttpError(HttpError::Kind::kBroken, "no network connections are possible");
        setAddress(request);
        setMessage(request);
        setLimits();
        setReceivers();
        curl_multi_add_handle(connections_.bundle(), handle_.get());
    }

    ~CurlTransfer() override { curl_multi_remove_handle(connections_.bundle(), handle_.get()); }
    CurlTransfer(const CurlTransfer&) = delete;
    CurlTransfer& operator=(const CurlTransfer&) = delete;

    static CurlTransfer& of(CURL* handle) {
        void* transfer = nullptr;
        curl_easy_getinfo(handle, CURLINFO_PRIVATE, &transfer);
        return *static_cast<CurlTransfer*>(transfer);
    }

    void end(CURLcode result) {
        over_ = true;
        result_ = result;
    }

    bool isOver() const override { return over_; }

    HttpAnswer take() override {
        if (tooLarge_) throw HttpError(HttpError::Kind::kTooLarge, "more than the answer can hold was sent");
        if (result_ != CURLE_OK)
            throw HttpError(kindOf(result_), *problem_ != '\0' ? problem_ : curl_easy_strerror(result_));
        if (!headEnded_) throw HttpError(HttpError::Kind::kBroken, "the answer ended in its head");
        long status = 0;
        const char* type = nullptr;
        curl_easy_getinfo(handle_.get(), CURLINFO_RESPONSE_CODE, &status);
        curl_easy_getinfo(handle_.get(), CURLINFO_CONTENT_TYPE, &type);
        return {static_cast<int>(status), type == nullptr ? "" : type, std::move(body_)};
    }

  private:
    template <typename Option>
    void set(CURLoption option, Option value) {
        curl_easy_setopt(handle_.get(), option, value);
    }

    void setAddress(const HttpRequest& request) {
        set(CURLOPT_URL, request.url.c_str());
        set(CURLOPT_PROTOCOLS_STR, "http,https");
        set(CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
        set(CURLOPT_FOLLOWLOCATION, request.redirects > 0 ? 1L : 0L);
        set(CURLOPT_MAXREDIRS, static_cast<long>(request.redirects));
        if (!request.throughProxy) set(CURLOPT_PROXY, "");
    }

    void setMessage(const HttpRequest& request) {
        set(CURLOPT_USERAGENT, "Vantrel");
        if (request.mayBePacked) set(CURLOPT_ACCEPT_ENCODING, "");  // whatever the library can unpack
        if (!request.accept.empty()) addHeader("Accept: " + request.accept);
        if (request.method == HttpRequest::Method::kPut) {
            set(CURLOPT_POSTFIELDSIZE, static_cast<long>(form_.size()));
            set(CURLOPT_POSTFIELDS, form_.c_str());
            set(CURLOPT_CUSTOMREQUEST, "PUT");
        }
        set(CURLOPT_HTTPHEADER, headers_.get());
    }

    void addHeader(const std::string& line) {
        curl_slist* longer = curl_slist_append(headers_.get(), line.c_str());
        if (longer == nullptr) throw std::bad_alloc();
        static_cast<void>(headers_.release());  // the longer list holds it
        headers_.reset(longer);
    }

    void setLimits() {
        set(CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(limits_.connecting.count()));
        set(CURLOPT_TIMEOUT_MS, static_cast<long>(limits_.whole.count()));
        if (limits_.drip) {
            set(CURLOPT_LOW_SPEED_LIMIT, limits_.drip->bytesPerSecond);
            set(CURLOPT_LOW_SPEED_TIME, static_cast<long>(limits_.drip->patience.count()));
        }
        set(CURLOPT_NOSIGNAL, 1L);
        set(CURLOPT_QUICK_EXIT, 1L);  // don't wait for a name server when given up
        set(CURLOPT_BUFFERSIZE, kReceiveBuffer);
    }

    void setReceivers() {
        set(CURLOPT_PRIVATE, static_cast<void*>(this));
        set(CURLOPT_ERRORBUFFER, problem_);
        set(CURLOPT_HEADERFUNCTION, &CurlTransfer::onHeader);
        set(CURLOPT_HEADERDATA, static_cast<void*>(this));
        set(CURLOPT_WRITEFUNCTION, &CurlTransfer::onBody);
        set(CURLOPT_WRITEDATA, static_cast<void*>(this));
    }

    static std::size_t onHeader(char* data, std::size_t size, std::size_t count, void* transfer) {
        return static_cast<CurlTransfer*>(transfer)->takeHeader({data, size * count});
    }

    static std::size_t onBody(char* data, std::size_t size, std::size_t count, void* transfer) {
        return static_cast<CurlTransfer*>(transfer)->append({data, size * count});
    }

    // Both end the transfer by another number than the one that came.

    std::size_t takeHeader(std::string_view line) {
        connections_.moved = true;
        headEnded_ = line == "\r\n" || line == "\n";
        headerBytes_ += line.size();
        if (headerBytes_ <= kMostHeaderBytes) return line.size();
        tooLarge_ = true;
        return 0;
    }

    std::size_t append(std::string_view part) noexcept try {
        connections_.moved = true;
        if (part.size() > limits_.body - body_.size()) {
            tooLarge_ = true;
            return part.empty() ? 1 : 0;
        }
        if (body_.empty()) reserve();
        body_.append(part);
        return part.size();
    } catch (...) {  // no memory
        tooLarge_ = true;
        return part.empty() ? 1 : 0;
    }

    void reserve() {
        curl_off_t promised = 0;
        curl_easy_getinfo(handle_.get(), CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &promised);
        if (promised > 0)
            body_.reserve(std::min({static_cast<std::size_t>(promised), limits_.body, kReservedAtOnce}));
    }

    Connections& connections_;
    HttpLimits limits_;
    std::string form_;
    std::unique_ptr<curl_slist, List> headers_;
    std::unique_ptr<CURL, Easy> handle_;
    char problem_[CURL_ERROR_SIZE] = "";
    std::string body_;
    std::size_t headerBytes_ = 0;
    bool headEnded_ = false;
    bool tooLarge_ = false;
    bool over_ = false;
    CURLcode result_ = CURLE_OK;
};

HttpTransfers::HttpTransfers() : connections_(std::make_unique<Connections>()) {}

HttpTransfers::~HttpTransfers() = default;

std::unique_ptr<HttpTransfer> HttpTransfers::start(const HttpRequest& request) {
    return std::make_unique<CurlTransfer>(*connections_, request);
}

bool HttpTransfers::move() {
    connections_->moved = false;
    int running = 0;
    curl_multi_perform(connections_->bundle(), &running);
    int left = 0;
    while (const CURLMsg* message = curl_multi_info_read(connections_->bundle(), &left)) {
        CurlTransfer::of(message->easy_handle).end(message->data.result);
        connections_->moved = true;
    }
    return connections_->moved;
}

void HttpTransfers::waitForMovement(Milliseconds atMost) {
    curl_multi_poll(connections_->bundle(), nullptr, 0, static_cast<int>(atMost.count()), nullptr);
}

}  // namespace vantrel::platform
