// The answers of the VizieR catalogue service in its tab-separated form.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantrel::catalogs {

/// True for the line of dashes that follows names and units, whatever separates its columns.
bool isRule(std::string_view line);

/// The first table of an answer. Comment lines begin with "#"; the table begins with lines of column names,
/// units and dashes and ends with an empty line, a comment or the text.
class VizierTable {
  public:
    /// Throws CatalogError, with what the service says in its comments, when the answer holds no table.
    explicit VizierTable(std::string_view answer);

    /// A row's fields in the columns' order; missing ones are blank.
    class Row {
      public:
        explicit Row(const std::vector<std::string_view>& fields) : fields_(fields) {}
        /// Nothing when the field is blank or the column isn't there. Throws CatalogError when no number
        /// stands in it.
        std::optional<double> number(std::optional<std::size_t> column) const;

      private:
        const std::vector<std::string_view>& fields_;
    };

    std::optional<std::size_t> column(std::string_view name) const;
    void eachRow(const std::function<void(const Row&)>& visit) const;

  private:
    std::vector<std::string_view> names_;
    std::string_view rows_;
};

}  // namespace vantrel::catalogs
