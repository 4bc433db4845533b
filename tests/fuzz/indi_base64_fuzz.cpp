// Base64, which decodes to the same in pieces as in one.
#include <stdexcept>

#include "fuzz/input.h"
#include "hosts/indi/base64.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using vantrel::hosts::indi::Base64Decoder;
    const std::string_view text = vantrel::fuzz::textOf(data, size);
    Base64Decoder whole, pieces;
    std::vector<std::byte> all, joined;
    const bool good = whole.decode(text, all);
    bool goodInPieces = true;
    for (std::size_t i = 0, piece = 1; i < text.size() && goodInPieces; i += piece, piece = piece % 7 + 1)
        goodInPieces = pieces.decode(text.substr(i, piece), joined);
    if (good != goodInPieces || (good && (all != joined || whole.complete() != pieces.complete())))
        throw std::logic_error("pieces decode to something else");
    return 0;
}
