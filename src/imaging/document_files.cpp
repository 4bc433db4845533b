#include "imaging/document_files.h"

#include <algorithm>
#include <stdexcept>

#include "fits/fits_image.h"
#include "fits/fits_writing.h"
#include "platform/text.h"

namespace vantrel::imaging {

using fits::FitsCard;
using platform::Value;

namespace {

std::string withEnding(const std::string& path) {
    const std::string name = path.substr(path.find_last_of("\\/") + 1);
    return name.find('.') == std::string::npos ? path + ".fit" : path;
}

bool isKeyword(const std::string& text) {
    constexpr std::size_t kLongest = 8;
    const auto allowed = [](char c) {
        return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' || c == '_';
    };
    return !text.empty() && text.size() <= kLongest && std::all_of(text.begin(), text.end(), allowed);
}

FitsCard::Value cardValue(const std::string& keyword, const Value& value) {
    return std::visit(
        [&](const auto& held) -> FitsCard::Value {
            if constexpr (std::is_constructible_v<FitsCard::Value, decltype(held)>)
                return held;
            else
                throw std::runtime_error("This is no value for the keyword " + keyword);
        },
        value.held());
}

void write(const ImageDocument& document, const platform::FolderMap& folders, const std::string& path) {
    try {
        fits::writeFits(folders.real(withEnding(path)), *document.pixels, document.header);
    } catch (const fits::FitsError& error) {
        throw std::runtime_error("The image could not be saved as " + path + ": " + error.what());
    }
}

}  // namespace

void saveDocument(ImageDocument& document, const platform::FolderMap& folders, const std::string& path) {
    write(document, folders, path);
    document.modified = false;
}

void saveInBackground(const OpenDocuments::Ref& document, const ImagingBench& bench,
                      const std::string& path) {
    const ImageDocument asked = *document;
    bench.background.await([&] { write(asked, bench.folders, path); });
    if (document->pixels == asked.pixels) document->modified = false;
}

Value headerValue(const ImageDocument& document, const std::string& keyword) {
    for (const FitsCard& card : document.header)
        if (platform::equalIgnoringCase(card.keyword, keyword))
            return std::visit([](const auto& held) { return Value(held); }, card.value);
    return {};
}

void setHeaderCard(ImageDocument& document, FitsCard card) {
    const auto found = std::find_if(
        document.header.begin(), document.header.end(),
        [&](const FitsCard& there) { return platform::equalIgnoringCase(there.keyword, card.keyword); });
    if (found == document.header.end())
        document.header.push_back(std::move(card));
    else
        *found = std::move(card);
}

void setHeaderValue(ImageDocument& document, const std::string& keyword, const Value& value) {
    const std::string name = platform::toUpper(keyword);
    if (!isKeyword(name)) throw std::runtime_error("\"" + keyword + "\" is no FITS keyword");
    setHeaderCard(document, {name, cardValue(name, value), ""});
}

}  // namespace vantrel::imaging
