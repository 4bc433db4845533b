#include "catalogs/fits_ascii_table.h"

#include <algorithm>

#include "platform/text.h"
#include "sky/field_number.h"

namespace vantrel::catalogs {

namespace {

using platform::withoutBlanks;

constexpr std::size_t kBlock = 2880;
constexpr std::size_t kCard = 80;
constexpr int kMostHeaderBlocks = 100;
constexpr int kMostUnits = 8;
constexpr std::uint64_t kLongestRow = 10'000;
constexpr std::uint64_t kMostRows = 100'000'000;
constexpr std::uint64_t kMostColumns = 999;

std::uint64_t wholeBlocks(std::uint64_t bytes) { return (bytes + kBlock - 1) / kBlock * kBlock; }

/// A card's value: quoted text without its quotes, else what stands before the comment.
std::string valueOf(std::string_view card) {
    std::string_view value = withoutBlanks(card.substr(10));
    if (!value.empty() && value.front() == '\'') {
        value.remove_prefix(1);
        return std::string(withoutBlanks(value.substr(0, value.find('\''))));
    }
    return std::string(withoutBlanks(value.substr(0, value.find('/'))));
}

}  // namespace

FitsAsciiTable::FitsAsciiTable(const std::filesystem::path& path) : file_(path) {
    std::uint64_t position = 0;
    for (int unit = 0; unit < kMostUnits; ++unit) {
        Cards cards = readHeader(position);
        const std::uint64_t axes = number(cards, "NAXIS", 3);
        std::uint64_t bytes = axes > 0 ? number(cards, "NAXIS1", kMostRows) : 0;
        if (axes > 1) bytes *= number(cards, "NAXIS2", kMostRows);
        if (axes > 2) file_.damaged("it holds a cube");
        if (cards["XTENSION"] == "TABLE") {
            rowBytes_ = number(cards, "NAXIS1", kLongestRow);
            rows_ = number(cards, "NAXIS2", kMostRows);
            dataStart_ = position;
            if (rowBytes_ == 0 || dataStart_ + rows_ * rowBytes_ > file_.size())
                file_.damaged("it is shorter than its header says");
            readColumns(cards);
            return;
        }
        position += wholeBlocks(bytes * (axes > 0 && cards["BITPIX"] != "8" ? 4 : 1));
    }
    file_.damaged("it has no table");
}

/// Leaves the position behind the header.
FitsAsciiTable::Cards FitsAsciiTable::readHeader(std::uint64_t& position) const {
    Cards cards;
    for (int block = 0; block < kMostHeaderBlocks; ++block) {
        const std::string text = file_.text(position, kBlock);
        position += kBlock;
        for (std::size_t at = 0; at < kBlock; at += kCard) {
            const std::string_view card = std::string_view(text).substr(at, kCard);
            const std::string_view name = withoutBlanks(card.substr(0, 8));
            if (name == "END") return cards;
            if (card[8] == '=') cards.try_emplace(std::string(name), valueOf(card));
        }
    }
    file_.damaged("its header doesn't end");
}

/// A count; one that is missing is 0.
std::uint64_t FitsAsciiTable::number(const Cards& cards, const std::string& name, std::uint64_t limit) const {
    const auto card = cards.find(name);
    const double value = card == cards.end() ? 0 : sky::fieldNumber(card->second).value_or(-1);
    if (!(value >= 0 && value <= static_cast<double>(limit)))
        file_.damaged("its header's " + name + " can't be right");
    return static_cast<std::uint64_t>(value);
}

void FitsAsciiTable::readColumns(const Cards& cards) {
    const std::uint64_t columns = number(cards, "TFIELDS", kMostColumns);
    for (std::uint64_t i = 1; i <= columns; ++i) {
        const std::string index = std::to_string(i);
        const auto name = cards.find("TTYPE" + index);
        const auto form = cards.find("TFORM" + index);
        const std::uint64_t start = number(cards, "TBCOL" + index, kLongestRow);
        if (name == cards.end() || form == cards.end() || start == 0 || form->second.size() < 2) continue;
        // "F9.5": the width stands between the letter and the point.
        const auto width = sky::fieldNumber(form->second.substr(1, form->second.find('.') - 1)).value_or(0);
        if (width >= 1 && width <= kLongestRow)
            columns_[name->second] = {start - 1, static_cast<std::size_t>(width)};
    }
}

TableColumn FitsAsciiTable::column(const std::string& name, TableColumn otherwise) const {
    const auto found = columns_.find(name);
    const TableColumn column = found == columns_.end() ? otherwise : found->second;
    if (column.start + column.width > rowBytes_) file_.damaged("its column " + name + " is missing");
    return column;
}

void FitsAsciiTable::eachRow(const std::function<void(std::string_view, std::uint64_t)>& visit) const {
    const std::uint64_t rowsAtATime = std::max<std::uint64_t>(1, kBytesAtATime / rowBytes_);
    for (std::uint64_t row = 0; row < rows_; row += rowsAtATime) {
        const std::uint64_t rows = std::min(rowsAtATime, rows_ - row);
        const std::string block = file_.text(dataStart_ + row * rowBytes_, rows * rowBytes_);
        for (std::uint64_t i = 0; i < rows; ++i)
            visit(std::string_view(block).substr(i * rowBytes_, rowBytes_), row + i + 1);
    }
}

}  // namespace vantrel::catalogs
