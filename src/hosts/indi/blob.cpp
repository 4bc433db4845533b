#include "hosts/indi/blob.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>

#include <zlib.h>

namespace vantrel::hosts::indi {
namespace {

constexpr const char* kTooLarge = "the picture is larger than the camera's sensor allows";
constexpr std::size_t kSlack = 1U << 20U;  // bytes that the decoder needs beyond the end for a moment

std::optional<std::size_t> readSize(const std::string& text) {
    std::size_t value = 0;
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (failure != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return value;
}

}  // namespace

/// Unpacks a zlib stream piece by piece.
class BlobReceiver::Inflater {
  public:
    Inflater() { ready_ = ::inflateInit(&stream_) == Z_OK; }
    ~Inflater() { ::inflateEnd(&stream_); }
    Inflater(const Inflater&) = delete;
    Inflater& operator=(const Inflater&) = delete;

    /// False when it is no zlib stream, or more than `limit` bytes come out.
    bool unpack(std::vector<std::byte>& packed, std::vector<std::byte>& bytes, std::size_t limit) {
        std::array<std::byte, 65536> piece;
        stream_.next_in = reinterpret_cast<Bytef*>(packed.data());
        stream_.avail_in = static_cast<uInt>(packed.size());
        while (ready_ && !ended_ && (stream_.avail_in > 0 || stream_.avail_out == 0)) {
            stream_.next_out = reinterpret_cast<Bytef*>(piece.data());
            stream_.avail_out = piece.size();
            const int result = ::inflate(&stream_, Z_NO_FLUSH);
            const std::size_t got = piece.size() - stream_.avail_out;
            if (bytes.size() + got > limit) return false;
            bytes.insert(bytes.end(), piece.begin(), piece.begin() + static_cast<std::ptrdiff_t>(got));
            ended_ = result == Z_STREAM_END;
            if (result == Z_BUF_ERROR && got == 0) break;  // it needs more
            if (result != Z_OK && result != Z_BUF_ERROR && !ended_) return false;
        }
        packed.clear();
        return ready_;
    }
    bool ended() const { return ended_; }

  private:
    z_stream stream_{};
    bool ready_ = false;
    bool ended_ = false;
};

BlobReceiver::BlobReceiver(const platform::Clock& clock, Listener listener)
    : clock_(clock), listener_(std::move(listener)) {}

BlobReceiver::~BlobReceiver() = default;

void BlobReceiver::begin(const XmlElement& vector, const XmlElement& blob) {
    blob_ = {.device = vector.attribute("device"),
             .property = vector.attribute("name"),
             .element = blob.attribute("name"),
             .format = blob.attribute("format"),
             .timestamp = vector.attribute("timestamp"),
             .begun = clock_.sinceStart(),
             .bytes = {}};
    decoder_ = {};
    packed_.clear();
    inflater_.reset();
    sentLength_ = readSize(blob.attribute("len"));
    if (blob_.format.ends_with(".z")) {
        blob_.format.erase(blob_.format.size() - 2);
        inflater_ = std::make_unique<Inflater>();
    }
    const auto limit = listener_.accept(blob_);
    wanted_ = limit.has_value();
    if (!wanted_) return;
    limit_ = std::min(*limit, kLargest);
    if (const auto size = readSize(blob.attribute("size"))) {
        if (*size > limit_) return spoil(kTooLarge);
        blob_.bytes.reserve(*size + kSlack);
    }
}

void BlobReceiver::text(std::string_view base64) {
    if (!wanted_) return;
    if (!decoder_.decode(base64, inflater_ ? packed_ : blob_.bytes)) return spoil("the picture isn't base64");
    if (inflater_ && !inflater_->unpack(packed_, blob_.bytes, limit_))
        return spoil("the picture can't be unpacked");
    if (blob_.bytes.size() > limit_) spoil(kTooLarge);
}

void BlobReceiver::end() {
    if (!wanted_) return;
    if (!decoder_.complete() || (inflater_ && !inflater_->ended())) return spoil("the picture is incomplete");
    if (!inflater_ && sentLength_) {
        if (blob_.bytes.size() < *sentLength_) return spoil("the picture is incomplete");
        blob_.bytes.resize(*sentLength_);  // what follows is filling
    }
    wanted_ = false;
    listener_.finished(std::exchange(blob_, {}));
}

void BlobReceiver::drop() {
    wanted_ = false;
    blob_ = {};
    packed_ = {};
    inflater_.reset();
}

void BlobReceiver::spoil(const std::string& why) {
    drop();
    listener_.spoiled(why);
}

}  // namespace vantrel::hosts::indi
