#include "hosts/indi/base64.h"

#include <array>
namespace vantrel::hosts::indi {
namespace {

constexpr std::uint8_t kNone = 0xFF, kBlank = 0xFE, kPadding = 0xFD;

constexpr std::array<std::uint8_t, 256> kValues = [] {
    constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::array<std::uint8_t, 256> values{};
    values.fill(kNone);
    for (std::size_t i = 0; i < kAlphabet.size(); ++i)
        values[static_cast<unsigned char>(kAlphabet[i])] = static_cast<std::uint8_t>(i);
    for (const char blank : {' ', '\t', '\r', '\n'}) values[static_cast<unsigned char>(blank)] = kBlank;
    values['='] = kPadding;
    return values;
}();

std::uint32_t valueOf(char c) { return kValues[static_cast<unsigned char>(c)]; }

}  // namespace

bool Base64Decoder::decode(std::string_view text, std::vector<std::byte>& bytes) {
    std::size_t i = 0;
    while (i < text.size()) {
        // Whole groups, as long as nothing unusual comes.
        if (count_ == 0 && !ended_) {
            const std::size_t before = bytes.size();
            bytes.resize(before + (text.size() - i) / 4 * 3);
            std::byte* out = bytes.data() + before;
            for (; i + 4 <= text.size(); i += 4, out += 3) {
                const std::uint32_t a = valueOf(text[i]), b = valueOf(text[i + 1]), c = valueOf(text[i + 2]),
                                    d = valueOf(text[i + 3]);
                if ((a | b | c | d) >= 64) break;
                const std::uint32_t group = a << 18U | b << 12U | c << 6U | d;
                out[0] = static_cast<std::byte>(group >> 16U);
                out[1] = static_cast<std::byte>(group >> 8U);
                out[2] = static_cast<std::byte>(group);
            }
            bytes.resize(static_cast<std::size_t>(out - bytes.data()));
        }
        if (i < text.size() && !take(text[i++], bytes)) return false;
    }
    return true;
}

bool Base64Decoder::take(char c, std::vector<std::byte>& bytes) {
    const std::uint32_t value = valueOf(c);
    if (value == kBlank) return true;
    const bool padding = value == kPadding;
    if (value == kNone || ended_ || (padding && count_ < 2) || (!padding && padding_ > 0)) return false;
    group_ = group_ << 6U | (padding ? 0U : value);
    padding_ += padding ? 1 : 0;
    if (++count_ < 4) return true;
    for (int i = 0; i < 3 - padding_; ++i) bytes.push_back(static_cast<std::byte>(group_ >> (16 - 8 * i)));
    ended_ = padding_ > 0;
    group_ = 0;
    count_ = padding_ = 0;
    return true;
}

}  // namespace vantrel::hosts::indi
