// Pictures on their way: base64 text turned into bytes as it comes, and unpacked where it is packed.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "hosts/indi/base64.h"
#include "hosts/indi/xml_stream.h"
#include "platform/clock.h"

namespace vantrel::hosts::indi {

struct Blob {
    std::string device, property, element;
    std::string format;               // ".fits", ".fits.fz"; without a ".z", which is unpacked
    std::string timestamp;            // by the driver's clock
    platform::Milliseconds begun{0};  // when its first byte came, by ours
    std::vector<std::byte> bytes;
};

/// Holds the bytes of one BLOB, never its text.
class BlobReceiver : public BlobText {
  public:
    /// A gigabyte is more than any camera has.
    static constexpr std::size_t kLargest = std::size_t{1} << 30U;

    struct Listener {
        /// Decides about a BLOB that begins: the most bytes it may have, or nothing when it isn't wanted.
        std::function<std::optional<std::size_t>(const Blob& blob)> accept;
        std::function<void(Blob)> finished;
        /// It came, but can't be used; why.
        std::function<void(const std::string& why)> spoiled;
    };

    BlobReceiver(const platform::Clock& clock, Listener listener);
    ~BlobReceiver() override;

    void begin(const XmlElement& vector, const XmlElement& blob) override;
    void text(std::string_view base64) override;
    void end() override;

    /// One that is wanted is on its way.
    bool underWay() const { return wanted_; }
    /// It isn't wanted any more.
    void drop();

  private:
    class Inflater;

    void spoil(const std::string& why);

    const platform::Clock& clock_;
    Listener listener_;
    Blob blob_;
    bool wanted_ = false;
    std::size_t limit_ = 0;                  // of the bytes, unpacked
    std::optional<std::size_t> sentLength_;  // of the bytes as they were sent
    Base64Decoder decoder_;
    std::unique_ptr<Inflater> inflater_;
    std::vector<std::byte> packed_;  // decoded and still to be unpacked
};

}  // namespace vantrel::hosts::indi
