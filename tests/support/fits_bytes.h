// FITS files made card by card, sound ones and hostile ones.
#pragma once

#include <string>
#include <vector>

namespace vantrel::test {

inline std::string fitsHeader(const std::vector<std::string>& cards) {
    std::string text;
    for (std::string card : cards) {
        card.resize(80, ' ');
        text += card;
    }
    text += "END";
    text.resize((text.size() + 2879) / 2880 * 2880, ' ');
    return text;
}

template <typename Bits>
std::string bigEndian(Bits value) {
    std::string bytes;
    for (int shift = static_cast<int>(sizeof value) * 8 - 8; shift >= 0; shift -= 8) {
        bytes += static_cast<char>((value >> shift) & 0xFF);
    }
    return bytes;
}

inline std::string padded(std::string data) {
    data.resize((data.size() + 2879) / 2880 * 2880, '\0');
    return data;
}

}  // namespace vantrel::test
