#include "observatory/imaging/taken_picture.h"

#include <memory>
#include <utility>

#include "observatory/sky/fits_image.h"

namespace vantrel::observatory {
namespace {

Picture of(platform::PlainPixels taken) {
    Picture picture{std::make_shared<const platform::ImageArray>(std::move(taken.image)), {}};
    for (platform::PictureCard& card : taken.cards)
        picture.header.push_back({std::move(card.keyword), std::move(card.value), std::move(card.comment)});
    return picture;
}

}  // namespace

Picture pictureOf(platform::TakenPicture taken) {
    return of(std::get<platform::PlainPixels>(std::move(taken)));
}

}  // namespace vantrel::observatory
