#include "imaging/open_documents.h"

#include <algorithm>

namespace vantrel::imaging {

const Stretch& ImageDocument::shownStretch() const {
    if (stretch) return *stretch;
    if (!measured) measured = automaticStretch(*pixels);
    return *measured;
}

OpenDocuments::Ref OpenDocuments::open(ImageDocument document) {
    documents_.push_back(std::make_shared<ImageDocument>(std::move(document)));
    Ref opened = documents_.back();
    changed_.emit();
    return opened;
}

OpenDocuments::Ref OpenDocuments::replaceCurrent(ImageDocument document) {
    if (documents_.empty()) return open(std::move(document));
    Ref shown = documents_.back();
    if (!document.stretch) document.stretch = shown->stretch;
    *shown = std::move(document);
    changed_.emit();
    return shown;
}

void OpenDocuments::setPixels(const Ref& document, platform::ImageRef pixels) {
    const bool sameFormat =
        pixels->width() == document->pixels->width() && pixels->height() == document->pixels->height();
    if (!sameFormat) document->measured.reset();
    document->pixels = std::move(pixels);
    document->modified = true;
    tellIfShown(document);
}

void OpenDocuments::setStretch(const Ref& document, std::optional<Stretch> stretch) {
    document->stretch = stretch;
    if (!stretch) document->measured.reset();
    tellIfShown(document);
}

void OpenDocuments::activate(const Ref& document) {
    const auto found = std::find(documents_.begin(), documents_.end(), document);
    if (found == documents_.end() || document == current()) return;
    std::rotate(found, found + 1, documents_.end());
    changed_.emit();
}

void OpenDocuments::close(const Ref& document) {
    const bool wasShown = document == current();
    std::erase(documents_, document);
    if (wasShown) changed_.emit();
}

bool OpenDocuments::isOpen(const Ref& document) const {
    return std::find(documents_.begin(), documents_.end(), document) != documents_.end();
}

void OpenDocuments::tellIfShown(const Ref& document) {
    if (document == current()) changed_.emit();
}

}  // namespace vantrel::imaging
