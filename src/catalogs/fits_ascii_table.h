// The ASCII table in a FITS file (FITS standard 4.0, section 7.2), read by rows.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>

#include "catalogs/catalog_file.h"

namespace vantrel::catalogs {

/// Where a field stands in a row.
struct TableColumn {
    std::size_t start = 0;  ///< from 0
    std::size_t width = 0;
};

class FitsAsciiTable {
  public:
    /// Reads the headers. Throws CatalogError when the file is none with a table, or shorter than they say.
    explicit FitsAsciiTable(const std::filesystem::path& path);

    const CatalogFile& file() const { return file_; }

    /// The column of this name; where the header doesn't name it, it stands at the place given. Throws
    /// CatalogError when it doesn't lie within the rows.
    TableColumn column(const std::string& name, TableColumn otherwise) const;

    /// Calls visit(row's text, row's number from 1) for all rows in order.
    void eachRow(const std::function<void(std::string_view, std::uint64_t)>& visit) const;

  private:
    using Cards = std::map<std::string, std::string>;

    Cards readHeader(std::uint64_t& position) const;
    std::uint64_t number(const Cards& cards, const std::string& name, std::uint64_t limit) const;
    void readColumns(const Cards& cards);

    CatalogFile file_;
    std::uint64_t dataStart_ = 0;
    std::uint64_t rows_ = 0;
    std::size_t rowBytes_ = 0;
    std::map<std::string, TableColumn> columns_;
};

}  // namespace vantrel::catalogs
