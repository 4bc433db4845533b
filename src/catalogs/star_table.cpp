#include "catalogs/star_table.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <initializer_list>
#include <optional>
#include <string_view>

#include "catalogs/vizier_table.h"
#include "platform/text.h"
#include "sky/field_number.h"
#include "sky/star_catalog.h"

namespace vantrel::catalogs {

namespace {

using platform::withoutBlanks;
using sky::CatalogError;

using Names = std::initializer_list<const char*>;
constexpr Names kRaNames = {"RAJ2000", "_RAJ2000", "RA_ICRS", "RAmdeg", "RAdeg", "ra_deg", "ra"};
constexpr Names kDecNames = {"DEJ2000", "_DEJ2000", "DE_ICRS", "DEmdeg", "DEdeg", "dec_deg", "dec"};
/// Those near V first, then what stands for it.
constexpr Names kMagnitudeNames = {"Vmag",  "VTmag",           "V",     "mag",   "magnitude", "Gmag",
                                   "G",     "phot_g_mean_mag", "f.mag", "fmag",  "r'mag",     "Rmag",
                                   "r1mag", "R2mag",           "rmag",  "B1mag", "Bmag"};
constexpr Names kMotionRaNames = {"pmRA", "pmra_mas", "pmRAc"};
constexpr Names kMotionDecNames = {"pmDE", "pmdec", "pmdec_mas"};
constexpr std::size_t kLongestShown = 40;

/// The file, line by line. A byte order mark and the ends of lines are no part of it.
class Lines {
  public:
    explicit Lines(const std::filesystem::path& path) : path_(path), in_(path, std::ios::binary) {
        if (!in_) throw CatalogError(path.string() + " can't be read");
    }

    bool next() {
        if (!std::getline(in_, text_)) {
            if (in_.bad()) throw CatalogError(path_.string() + " can't be read");
            return false;
        }
        if (++number_ == 1 && text_.starts_with("\xEF\xBB\xBF")) text_.erase(0, 3);
        return true;
    }

    bool isBeside() const { return text_.starts_with('#') || withoutBlanks(text_).empty(); }
    std::string_view text() const { return withoutLineEnd(text_); }

    [[noreturn]] void refuse(const std::string& why) const {
        throw CatalogError(path_.string() + ": line " + std::to_string(number_) + ": " + why);
    }

  private:
    static std::string_view withoutLineEnd(std::string_view text) {
        if (text.ends_with('\r')) text.remove_suffix(1);
        return text;
    }

    const std::filesystem::path& path_;
    std::ifstream in_;
    std::string text_;
    std::uint64_t number_ = 0;
};

/// A field, blanks and quotes around it aside.
std::string_view plain(std::string_view field) {
    field = withoutBlanks(field);
    if (field.size() >= 2 && field.starts_with('"') && field.ends_with('"'))
        field = withoutBlanks(field.substr(1, field.size() - 2));
    return field;
}

/// Separators between quotes part nothing.
void split(std::string_view line, char separator, std::vector<std::string_view>& fields) {
    fields.clear();
    std::size_t start = 0;
    bool quoted = false;
    for (std::size_t i = 0; i <= line.size(); ++i) {
        if (i < line.size() && line[i] == '"') quoted = !quoted;
        if (i < line.size() && (quoted || line[i] != separator)) continue;
        fields.push_back(plain(line.substr(start, i - start)));
        start = i + 1;
    }
}

char separatorOf(std::string_view heading) {
    for (const char separator : {'\t', ';', ','})
        if (heading.find(separator) != std::string_view::npos) return separator;
    return '\0';
}

class Heading {
  public:
    explicit Heading(const std::vector<std::string_view>& names) : names_(names.begin(), names.end()) {}

    std::size_t size() const { return names_.size(); }
    const std::string& name(std::size_t column) const { return names_[column]; }

    std::optional<std::size_t> find(const std::string& chosen, Names customary) const {
        if (!chosen.empty()) return find(chosen);
        for (const char* name : customary)
            if (const auto found = find(name)) return found;
        return std::nullopt;
    }

    std::string listed() const {
        std::string text;
        for (const std::string& name : names_) text += (text.empty() ? "" : ", ") + name;
        return text;
    }

  private:
    std::optional<std::size_t> find(const std::string& name) const {
        const auto found = std::ranges::find_if(
            names_, [&](const std::string& n) { return platform::equalIgnoringCase(n, name); });
        if (found == names_.end()) return std::nullopt;
        return static_cast<std::size_t>(found - names_.begin());
    }

    std::vector<std::string> names_;
};

class TableReader {
  public:
    TableReader(const std::filesystem::path& file, const TableColumns& columns)
        : lines_(file), heading_(headingOf(file)) {
        ra_ = required("right ascensions", columns.ra, kRaNames);
        dec_ = required("declinations", columns.dec, kDecNames);
        magnitude_ = required("magnitudes", columns.magnitude, kMagnitudeNames);
        motionRa_ = chosen("motions in right ascension", columns.motionRa, kMotionRaNames);
        motionDec_ = chosen("motions in declination", columns.motionDec, kMotionDecNames);
    }

    StarTable read(double years) {
        StarTable table;
        table.magnitude = heading_.name(magnitude_);
        table.moves = motionRa_ && motionDec_;
        skipUnits();
        for (bool more = haveLine_ || lines_.next(); more; more = lines_.next()) {
            if (lines_.isBeside()) continue;
            split(lines_.text(), separator_, fields_);
            if (fields_.size() != heading_.size())
                lines_.refuse("has " + std::to_string(fields_.size()) + " fields where the heading has " +
                              std::to_string(heading_.size()) + ": is the file cut short?");
            const auto ra = number(ra_, 0, 360);
            const auto dec = number(dec_, -90, 90);
            const auto magnitude = number(magnitude_, -30, 40);
            if (!ra || !dec || !magnitude) {
                ++table.incomplete;
                continue;
            }
            table.stars.push_back(
                sky::carried({*ra, *dec, *magnitude, motion(motionRa_), motion(motionDec_)}, years));
        }
        return table;
    }

  private:
    Heading headingOf(const std::filesystem::path& file) {
        while (lines_.next()) {
            if (lines_.isBeside()) continue;
            separator_ = separatorOf(lines_.text());
            if (separator_ == '\0' || lines_.text().find('\0') != std::string_view::npos)
                lines_.refuse("holds no names of columns parted by tabs, semicolons or commas");
            split(lines_.text(), separator_, fields_);
            return Heading(fields_);
        }
        throw CatalogError(file.string() + " holds no table");
    }

    /// VizieR's second line has units, its third dashes.
    void skipUnits() {
        haveLine_ = lines_.next();
        if (!haveLine_) return;
        if (!isRule(lines_.text())) {
            split(lines_.text(), separator_, fields_);
            const auto isWord = [this](std::size_t column) {
                if (column >= fields_.size()) return false;
                const auto value = sky::fieldNumber(fields_[column]);
                return value && std::isnan(*value);
            };
            if (!isWord(ra_) || !isWord(dec_)) return;
            if (!lines_.next() || !isRule(lines_.text()))
                lines_.refuse("isn't the line of dashes that follows one of units");
        }
        haveLine_ = false;
    }

    std::optional<std::size_t> chosen(const std::string& what, const std::string& name,
                                      Names customary) const {
        const auto found = heading_.find(name, customary);
        if (!found && !name.empty()) refuseWithout(what, name);
        return found;
    }

    std::size_t required(const std::string& what, const std::string& name, Names customary) const {
        const auto found = chosen(what, name, customary);
        if (!found) refuseWithout(what, "of a customary name");
        return *found;
    }

    [[noreturn]] void refuseWithout(const std::string& what, const std::string& name) const {
        lines_.refuse("there is no column of " + what + " (" + name + "); there are: " + heading_.listed());
    }

    /// Nothing where the field is blank.
    std::optional<double> number(std::size_t column, double least, double most) const {
        const auto value = sky::fieldNumber(fields_[column]);
        if (value && !(*value >= least && *value <= most))
            lines_.refuse("\"" + std::string(fields_[column].substr(0, kLongestShown)) +
                          "\" can't stand in the column " + heading_.name(column) +
                          (std::isnan(*value) ? ", which must hold decimal numbers" : ""));
        return value;
    }

    double motion(const std::optional<std::size_t>& column) const {
        constexpr double kFastest = 20'000;  // mas a year; Barnard's star has 10,400
        return column ? number(*column, -kFastest, kFastest).value_or(0) : 0;
    }

    Lines lines_;
    std::vector<std::string_view> fields_;
    char separator_ = '\0';
    bool haveLine_ = false;  ///< the first row was read when units were looked for
    Heading heading_;
    std::size_t ra_ = 0, dec_ = 0, magnitude_ = 0;
    std::optional<std::size_t> motionRa_, motionDec_;
};

}  // namespace

StarTable readStarTable(const std::filesystem::path& file, const TableColumns& columns, double tableEpoch,
                        double epochYear) {
    return TableReader(file, columns).read(epochYear - tableEpoch);
}

}  // namespace vantrel::catalogs
