#include "hosts/alpaca/image_bytes.h"

#include <cstdint>
#include <stdexcept>

#include "hosts/alpaca/device_error.h"

namespace vantrel::hosts::alpaca {

namespace {

/// 32-bit numbers at the beginning of a message, in this order.
enum Field {
    kMetadataVersion,
    kErrorNumber,
    kClientTransaction,
    kServerTransaction,
    kDataStart,
    kImageElement,
    kTransmissionElement,
    kRank,
    kWidth,
    kHeight,
    kPlanes,
    kFields
};

constexpr std::size_t kHeadBytes = 4 * kFields;

std::int32_t fieldOf(std::string_view message, Field field) {
    std::uint32_t value = 0;
    for (std::size_t byte = 4; byte > 0; --byte)
        value =
            value << 8U | static_cast<unsigned char>(message[4 * static_cast<std::size_t>(field) + byte - 1]);
    return static_cast<std::int32_t>(value);
}

/// A length of the picture, from 1 to the limit.
std::size_t lengthOf(std::string_view message, Field field, std::size_t most) {
    const std::int32_t value = fieldOf(message, field);
    if (value < 1) refusePicture("it has no pixels");
    if (static_cast<std::size_t>(value) > most) refusePicture("it is larger than the sensor");
    return static_cast<std::size_t>(value);
}

}  // namespace

platform::ImageArray parseImageBytes(std::string_view message, const ImageLimits& limits) {
    if (message.size() < kHeadBytes) refusePicture("it is cut short");
    if (fieldOf(message, kMetadataVersion) != 1) refusePicture("its layout is unknown");
    const std::int32_t start = fieldOf(message, kDataStart);
    if (start < static_cast<std::int32_t>(kHeadBytes) || static_cast<std::size_t>(start) > message.size())
        refusePicture("it is cut short");
    const std::string_view data = message.substr(static_cast<std::size_t>(start));
    if (const std::int32_t number = fieldOf(message, kErrorNumber); number != 0)
        throw DeviceError(number, std::string(data));

    ColumnImage image;
    image.element = static_cast<Element>(fieldOf(message, kTransmissionElement));
    if (sizeOf(image.element) == 0) refusePicture("its pixels are of an unknown type");
    const std::int32_t rank = fieldOf(message, kRank);
    if (rank != 2 && rank != 3) refusePicture("it isn't flat");
    image.width = lengthOf(message, kWidth, limits.width);
    image.height = lengthOf(message, kHeight, limits.height);
    image.planes = rank == 3 ? lengthOf(message, kPlanes, ImageLimits::kPlanes) : 1;
    const std::size_t column = image.height * image.planes * sizeOf(image.element);
    if (image.width > data.size() / column) refusePicture("it is cut short");
    image.data = data.substr(0, image.width * column);
    return inRows(image);
}

}  // namespace vantrel::hosts::alpaca
