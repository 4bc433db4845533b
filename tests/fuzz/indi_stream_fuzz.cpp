// What an INDI server sends, cut into elements, properties and pictures; in pieces of any size.
#include <stdexcept>

#include "fuzz/input.h"
#include "hosts/indi/blob.h"
#include "hosts/indi/property.h"
#include "platform/queued_event_loop.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace vantrel;
    using namespace hosts::indi;
    if (size == 0) return 0;
    const std::size_t piece = data[0] + std::size_t{1};
    const std::string_view stream = fuzz::textOf(data + 1, size - 1);
    constexpr std::size_t kLargest = 10'000;
    const platform::VirtualTime time{platform::Instant{}};
    BlobReceiver blobs(time, {.accept = [](const Blob&) { return kLargest; },
                              .finished =
                                  [](const Blob& blob) {
                                      if (blob.bytes.size() > kLargest)
                                          throw std::logic_error("a picture beyond its limit");
                                  },
                              .spoiled = [](const std::string&) {}});
    std::optional<Property> property;
    XmlStream xml(
        [&](const XmlElement& element) {
            if (property) update(*property, element, 1);
            if (auto defined = definedProperty(element)) property = std::move(defined);
        },
        &blobs);
    try {
        for (std::size_t i = 0; i < stream.size(); i += piece) xml.feed(stream.substr(i, piece));
    } catch (const StreamError&) {  // what a stream that makes no sense gets
    }
    return 0;
}
