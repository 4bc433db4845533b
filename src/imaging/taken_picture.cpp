#include "imaging/taken_picture.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <string_view>
#include <utility>

#include "fits/fits_image.h"

namespace vantrel::imaging {
namespace {

using platform::ImageArray;

/// What describes the array in the file, and what the writing of the picture says anew.
bool describesTheArray(std::string_view keyword) {
    constexpr std::array kOwn = {"SIMPLE", "BITPIX", "BZERO",    "BSCALE",   "BLANK",   "EXTEND",  "END",
                                 "PCOUNT", "GCOUNT", "XTENSION", "CHECKSUM", "DATASUM", "ROWORDER"};
    return keyword.starts_with("NAXIS") || keyword.starts_with("Z") ||
           std::find(kOwn.begin(), kOwn.end(), keyword) != kOwn.end();
}

/// Cameras count in 16 bits; anything else stays a float.
ImageArray arrayOf(std::size_t width, std::size_t height, std::vector<float> pixels) {
    const bool counts = std::all_of(pixels.begin(), pixels.end(), [](float value) {
        return value >= 0 && value <= 65535 && value == std::floor(value);
    });
    if (!counts) return {width, height, std::move(pixels)};
    return {width, height, std::vector<std::uint16_t>(pixels.begin(), pixels.end())};
}

Picture of(platform::PlainPixels taken) {
    Picture picture{std::make_shared<const ImageArray>(std::move(taken.image)), {}};
    for (platform::PictureCard& card : taken.cards)
        picture.header.push_back({std::move(card.keyword), std::move(card.value), std::move(card.comment)});
    return picture;
}

Picture of(const platform::FitsBytes& taken) {
    const fits::FitsImage image = fits::FitsImage::read("The camera's picture", taken.bytes);
    std::vector<float> pixels(image.width() * image.height());
    image.readRows(0, pixels);
    Picture picture{
        std::make_shared<const ImageArray>(arrayOf(image.width(), image.height(), std::move(pixels))), {}};
    for (const fits::FitsCard& card : image.header().cards())
        if (!describesTheArray(card.keyword)) picture.header.push_back(card);
    return picture;
}

}  // namespace

Picture pictureOf(platform::TakenPicture taken) {
    return std::visit([](auto&& kind) { return of(std::forward<decltype(kind)>(kind)); }, std::move(taken));
}

std::vector<fits::FitsCard> cardsOf(const platform::CameraFacts& camera) {
    std::vector<fits::FitsCard> cards;
    const auto add = [&](const char* keyword, const std::optional<platform::CameraLevel>& level) {
        if (!level) return;
        const auto place = static_cast<std::size_t>(std::max(0.0, level->value));
        cards.push_back({keyword, level->value, place < level->names.size() ? level->names[place] : ""});
    };
    add("GAIN", camera.gain);
    add("OFFSET", camera.offset);
    if (camera.temperature) cards.push_back({"CCD-TEMP", *camera.temperature, "degrees Celsius"});
    if (camera.coolsTo) cards.push_back({"SET-TEMP", *camera.coolsTo, "degrees Celsius"});
    return cards;
}

}  // namespace vantrel::imaging
