#include "catalogs/vizier_table.h"

#include <algorithm>
#include <cmath>

#include "platform/text.h"
#include "sky/field_number.h"
#include "sky/star_catalog.h"

namespace vantrel::catalogs {

namespace {

using platform::withoutBlanks;
using sky::CatalogError;

constexpr std::size_t kMostWords = 300;  // of the service's own that a message passes on
// What is beyond these is no answer to a question of ours, which names some ten columns and limits the rows.
constexpr std::size_t kMostFields = 100;
constexpr std::size_t kMostRowsTaken = 250'000;

/// Takes the first line off the text.
std::string_view nextLine(std::string_view& text) {
    const auto end = text.find('\n');
    std::string_view line = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    return line;
}

bool isBeside(std::string_view line) { return line.starts_with('#') || withoutBlanks(line).empty(); }

std::vector<std::string_view> fieldsOf(std::string_view line) {
    std::vector<std::string_view> fields;
    for (;;) {
        const auto tab = line.find('\t');
        if (fields.size() == kMostFields)
            throw CatalogError("the answer of the catalogue service has a line without end");
        fields.push_back(withoutBlanks(line.substr(0, tab)));
        if (tab == std::string_view::npos) return fields;
        line.remove_prefix(tab + 1);
    }
}

[[noreturn]] void refuse(std::string_view words) {
    std::string text(words.substr(0, kMostWords));
    std::replace_if(
        text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < ' '; }, ' ');
    throw CatalogError("the answer of the catalogue service holds no table" +
                       (text.empty() ? "" : ": " + text));
}

}  // namespace

bool isRule(std::string_view line) {
    return line.find('-') != std::string_view::npos &&
           line.find_first_not_of("-\t;, ") == std::string_view::npos;
}

VizierTable::VizierTable(std::string_view answer) {
    std::string_view last;  // of the comments that say something
    std::string_view names;
    while (!answer.empty() && names.empty()) {
        const std::string_view line = nextLine(answer);
        if (!isBeside(line))
            names = line;
        else if (line.size() > 1)
            last = line.substr(1);
    }
    if (names.empty()) refuse(withoutBlanks(last));
    nextLine(answer);  // units
    if (!isRule(nextLine(answer))) refuse(withoutBlanks(names));
    names_ = fieldsOf(names);
    rows_ = answer;
}

std::optional<std::size_t> VizierTable::column(std::string_view name) const {
    const auto found = std::find(names_.begin(), names_.end(), name);
    if (found == names_.end()) return std::nullopt;
    return static_cast<std::size_t>(found - names_.begin());
}

void VizierTable::eachRow(const std::function<void(const Row&)>& visit) const {
    std::size_t rows = 0;
    for (std::string_view rest = rows_; !rest.empty();) {
        const std::string_view line = nextLine(rest);
        if (isBeside(line)) return;
        if (++rows > kMostRowsTaken)
            throw CatalogError("the answer of the catalogue service has more rows than it may");
        const auto fields = fieldsOf(line);
        visit(Row(fields));
    }
}

std::optional<double> VizierTable::Row::number(std::optional<std::size_t> column) const {
    if (!column || *column >= fields_.size()) return std::nullopt;
    const auto value = sky::fieldNumber(fields_[*column]);
    if (value && std::isnan(*value))
        throw CatalogError("the answer of the catalogue service has \"" +
                           std::string(fields_[*column].substr(0, kMostWords)) +
                           "\" in the place of a number");
    return value;
}

}  // namespace vantrel::catalogs
