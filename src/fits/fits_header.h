// The cards of a FITS header: "KEYWORD = value / comment".
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace vantrel::fits {

struct FitsCard {
    using Value = std::variant<bool, std::int64_t, double, std::string>;

    std::string keyword;  ///< up to eight capitals, digits, "-" and "_"
    Value value;
    std::string comment = {};
};

/// Keywords are compared without regard to case. When a keyword stands twice, the first counts.
class FitsHeader {
  public:
    /// One card image of up to 80 characters. Cards without a value (COMMENT, HISTORY, blanks) are left out.
    void addCardImage(std::string_view image);
    void add(FitsCard card) { cards_.push_back(std::move(card)); }
    /// Adds the other header's cards behind the own ones.
    void append(const FitsHeader& other);

    /// Empty when the keyword is missing or of another kind; numbers as texts are read as numbers.
    std::optional<double> number(std::string_view keyword) const;
    std::optional<std::int64_t> integer(std::string_view keyword) const;
    std::optional<std::string> text(std::string_view keyword) const;
    std::optional<bool> logical(std::string_view keyword) const;

    /// Whether the file's first row is the image's lowest.
    bool isBottomUp() const;

    const std::vector<FitsCard>& cards() const { return cards_; }

  private:
    const FitsCard* find(std::string_view keyword) const;

    std::vector<FitsCard> cards_;
};

}  // namespace vantrel::fits
