#include "fits/fits_header.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>

namespace vantrel::fits {

namespace {

std::string_view trimmed(std::string_view text) {
    while (!text.empty() && (text.back() == ' ' || text.back() == '\0')) text.remove_suffix(1);
    while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
    return text;
}

/// The whole text as a number; Fortran's exponent letter D is understood.
std::optional<double> parsedNumber(std::string_view text) {
    std::string plain(trimmed(text));
    std::replace(plain.begin(), plain.end(), 'D', 'E');
    std::replace(plain.begin(), plain.end(), 'd', 'e');
    const char* first = plain.c_str();
    const char* last = first + plain.size();
    if (first != last && *first == '+') ++first;
    double value = 0;
    const auto [end, error] = std::from_chars(first, last, value);
    if (error != std::errc() || end != last || !std::isfinite(value)) return std::nullopt;
    return value;
}

/// The text between the quotes at the start; a doubled quote is one quote.
std::string quotedText(std::string_view field) {
    std::string text;
    for (std::size_t i = 1; i < field.size(); ++i) {
        if (field[i] == '\'') {
            if (i + 1 >= field.size() || field[i + 1] != '\'') break;
            ++i;
        }
        text += field[i];
    }
    while (!text.empty() && text.back() == ' ') text.pop_back();
    return text;
}

bool sameKeyword(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) {
        return std::toupper(static_cast<unsigned char>(x)) == std::toupper(static_cast<unsigned char>(y));
    });
}

}  // namespace

void FitsHeader::addCardImage(std::string_view image) {
    if (image.size() < 10 || image.substr(8, 2) != "= ") return;
    const std::string keyword(trimmed(image.substr(0, 8)));
    std::string_view field = trimmed(image.substr(10));
    if (keyword.empty() || field.empty()) return;
    if (field.front() == '\'') {
        cards_.push_back({keyword, quotedText(field)});
        return;
    }
    field = trimmed(field.substr(0, field.find('/')));
    if (field == "T" || field == "F") {
        cards_.push_back({keyword, field == "T"});
        return;
    }
    std::int64_t whole = 0;
    const char* first = field.data() + (!field.empty() && field.front() == '+' ? 1 : 0);
    const char* last = field.data() + field.size();
    const auto [end, error] = std::from_chars(first, last, whole);
    if (first != last && error == std::errc() && end == last) {
        cards_.push_back({keyword, whole});
    } else if (const auto value = parsedNumber(field)) {
        cards_.push_back({keyword, *value});
    }
}

void FitsHeader::append(const FitsHeader& other) {
    cards_.insert(cards_.end(), other.cards_.begin(), other.cards_.end());
}

const FitsCard* FitsHeader::find(std::string_view keyword) const {
    const auto found = std::find_if(cards_.begin(), cards_.end(),
                                    [&](const FitsCard& card) { return sameKeyword(card.keyword, keyword); });
    return found == cards_.end() ? nullptr : &*found;
}

std::optional<double> FitsHeader::number(std::string_view keyword) const {
    const FitsCard* card = find(keyword);
    if (card == nullptr) return std::nullopt;
    if (const auto* whole = std::get_if<std::int64_t>(&card->value)) return static_cast<double>(*whole);
    if (const auto* real = std::get_if<double>(&card->value)) return *real;
    if (const auto* text = std::get_if<std::string>(&card->value)) return parsedNumber(*text);
    return std::nullopt;
}

std::optional<std::int64_t> FitsHeader::integer(std::string_view keyword) const {
    const FitsCard* card = find(keyword);
    const auto* whole = card == nullptr ? nullptr : std::get_if<std::int64_t>(&card->value);
    if (whole != nullptr) return *whole;
    const auto value = number(keyword);
    if (!value || std::abs(*value) > 9e15 || *value != std::floor(*value)) return std::nullopt;
    return static_cast<std::int64_t>(*value);
}

std::optional<std::string> FitsHeader::text(std::string_view keyword) const {
    const FitsCard* card = find(keyword);
    const auto* text = card == nullptr ? nullptr : std::get_if<std::string>(&card->value);
    return text == nullptr ? std::nullopt : std::optional(*text);
}

std::optional<bool> FitsHeader::logical(std::string_view keyword) const {
    const FitsCard* card = find(keyword);
    const auto* flag = card == nullptr ? nullptr : std::get_if<bool>(&card->value);
    return flag == nullptr ? std::nullopt : std::optional(*flag);
}

bool FitsHeader::isBottomUp() const {
    const auto order = text("ROWORDER");
    return order && order->size() >= 6 && (order->at(0) == 'B' || order->at(0) == 'b');
}

}  // namespace vantrel::fits
