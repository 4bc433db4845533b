#include "platform/site_angle.h"

#include <array>
#include <cctype>
#include <string_view>
#include <vector>

#include "platform/text.h"

namespace vantrel::platform {
namespace {

using Marks = std::vector<std::string_view>;

constexpr std::string_view kMinus = "\u2212";

/// The text, taken from its beginning piece by piece.
class Rest {
  public:
    explicit Rest(std::string_view text) : text_(text) {}

    bool empty() const { return text_.empty(); }

    bool take(const Marks& marks) {
        for (const std::string_view mark : marks) {
            if (!equalIgnoringCase(text_.substr(0, mark.size()), mark)) continue;
            text_.remove_prefix(mark.size());
            return true;
        }
        return false;
    }

    void skipBlanks() {
        while (take({" ", "\t", "\u00A0"})) {
        }
    }

    /// A number without a sign; `whole` is set when it has no decimals.
    std::optional<double> takeNumber(bool& whole) {
        std::size_t length = 0;
        const auto digits = [&] {
            while (length < text_.size() && isDigit(text_[length])) ++length;
        };
        digits();
        const std::size_t places = length;
        whole = length == text_.size() || (text_[length] != '.' && text_[length] != ',');
        if (!whole) {
            ++length;
            digits();
        }
        if (places == 0 && length < 2) return std::nullopt;
        const auto number = parseNumber(text_.substr(0, length));
        text_.remove_prefix(length);
        return number;
    }

  private:
    std::string_view text_;
};

/// What stands behind degrees, minutes and seconds.
const std::array<Marks, 3>& marks() {
    static const std::array<Marks, 3> kMarks{{{"deg", "d", "\u00B0", "\u00BA", ":", "-"},
                                              {"min", "m", "'", "\u2032", "\u2019", ":", "-"},
                                              {"sec", "s", "\"", "''", "\u2033", "\u201D"}}};
    return kMarks;
}

/// Degrees, minutes and seconds as far as they are there; nothing when it isn't all that there is.
std::optional<double> takeParts(std::string_view text) {
    Rest rest(text);
    double degrees = 0;
    double unit = 1;
    bool whole = true;
    for (const Marks& marksBehind : marks()) {
        if (!whole) return std::nullopt;
        const auto number = rest.takeNumber(whole);
        if (!number || (unit > 1 && *number >= 60)) return std::nullopt;
        degrees += *number / unit;
        unit *= 60;
        rest.skipBlanks();
        rest.take(marksBehind);
        rest.skipBlanks();
        if (rest.empty()) return degrees;
    }
    return std::nullopt;
}

/// Whether the "s" at the end stands for seconds.
bool marksSeconds(std::string_view text) {
    const std::string_view before = text.substr(0, text.size() - 1);
    if (before.empty() || !isDigit(before.back())) return false;
    int numbers = 0;
    bool minutesMarked = false;
    for (std::size_t i = 0; i < before.size(); ++i) {
        const bool inside = i > 0 && (isDigit(before[i - 1]) || before[i - 1] == '.' || before[i - 1] == ',');
        if (isDigit(before[i]) && !inside) ++numbers;
        minutesMarked = minutesMarked || before[i] == 'm' || before[i] == 'M';
    }
    return numbers == 3 && (minutesMarked || text.back() == 's');
}

/// Takes the letter away, if there is one: 1 of the positive hemisphere, -1 of the other, 0 none.
int takeHemisphere(std::string& text, SiteAxis axis) {
    const std::string_view letters = axis == SiteAxis::kLatitude ? "ns" : "ew";
    const auto signOf = [&](char c) {
        const auto found = letters.find(static_cast<char>(std::tolower(static_cast<unsigned char>(c))));
        return found == std::string_view::npos ? 0 : found == 0 ? 1 : -1;
    };
    if (text.empty()) return 0;
    if (const int sign = signOf(text.front())) {
        text = trimmed(text.substr(1));
        return sign;
    }
    const int sign = signOf(text.back());
    const bool isSeconds =
        sign != 0 && std::tolower(static_cast<unsigned char>(text.back())) == 's' && marksSeconds(text);
    if (sign == 0 || isSeconds) return 0;
    text.pop_back();
    text = trimmed(text);
    return sign;
}

/// 1, -1, or 0 for none.
int takeSign(std::string& text) {
    for (const std::string_view minus : {std::string_view("-"), kMinus})
        if (text.starts_with(minus)) {
            text = trimmed(text.substr(minus.size()));
            return -1;
        }
    if (!text.starts_with('+')) return 0;
    text = trimmed(text.substr(1));
    return 1;
}

}  // namespace

std::optional<SiteAngle> readSiteAngle(const std::string& text, SiteAxis axis) {
    std::string rest = trimmed(text);
    const int hemisphere = takeHemisphere(rest, axis);
    const int sign = takeSign(rest);
    if (hemisphere * sign < 0 || (hemisphere < 0 && sign < 0)) return std::nullopt;
    const auto size = takeParts(rest);
    const double greatest = axis == SiteAxis::kLatitude ? 90 : 360;
    if (!size || *size > greatest) return std::nullopt;
    const bool negative = hemisphere < 0 || sign < 0;
    constexpr const char* kSigns[] = {"-", "", "+"};
    return SiteAngle{negative ? -*size : *size, kSigns[sign + 1] + rest, hemisphere < 0};
}

Words noSiteAngle(const std::string& text, SiteAxis axis) {
    return axis == SiteAxis::kLatitude ? Words::tr("\"%1\" is no latitude", {text})
                                       : Words::tr("\"%1\" is no longitude", {text});
}

Words howToWriteSiteAngle(SiteAxis axis) {
    return axis == SiteAxis::kLatitude
               ? Words::tr("Write it like 48d 30m 15.0s, south with S or a minus sign")
               : Words::tr("Write it like 48d 30m 15.0s, west with W or a minus sign");
}

}  // namespace vantrel::platform
