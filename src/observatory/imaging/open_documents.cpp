#include "observatory/imaging/open_documents.h"

#include <algorithm>

namespace vantrel::observatory {

OpenDocuments::Ref OpenDocuments::open(ImageDocument document) {
    documents_.push_back(std::make_shared<ImageDocument>(std::move(document)));
    const Ref opened = documents_.back();
    changed_.emit();
    return opened;
}

OpenDocuments::Ref OpenDocuments::replaceCurrent(ImageDocument document) {
    if (documents_.empty()) return open(std::move(document));
    const Ref shown = documents_.back();
    *shown = std::move(document);
    changed_.emit();
    return shown;
}

void OpenDocuments::setPixels(const Ref& document, platform::ImageRef pixels) {
    document->pixels = std::move(pixels);
    if (document == current()) changed_.emit();
}

void OpenDocuments::close(const Ref& document) {
    const bool wasShown = document == current();
    std::erase(documents_, document);
    if (wasShown) changed_.emit();
}

}  // namespace vantrel::observatory
