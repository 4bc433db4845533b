// What the tests need to know about a Markdown document: its sections, tables, code and links.
#pragma once

#include <filesystem>
#include <set>
#include <string>
#include <vector>

namespace vantrel::documents::test {

using Cells = std::vector<std::string>;

class Document {
  public:
    /// `file` is relative to the folder of the sources. Throws std::runtime_error when it can't be read.
    explicit Document(const std::string& file);

    /// What stands below the heading, up to the next one that is no deeper. Throws when there is no such
    /// heading.
    Document section(const std::string& heading) const;

    /// The rows of every table, without the heads. A row shorter than its head has empty cells.
    std::vector<Cells> rows() const;
    /// The text within each pair of ``` lines.
    std::vector<std::string> blocks() const;
    /// Headings, without the signs before them.
    std::vector<std::string> headings() const;
    /// The targets of links and pictures, as they stand.
    std::vector<std::string> links() const;

    /// Every `code` of the text, blocks left out.
    std::set<std::string> codes() const;
    const std::string& file() const { return file_; }

  private:
    Document() = default;
    /// The lines outside of blocks.
    std::vector<std::string> prose() const;

    std::string file_;
    std::vector<std::string> lines_;
};

/// The `codes` of a text, in their order.
std::vector<std::string> codesOf(const std::string& text);

/// The fragment under which a heading is linked.
std::string anchorOf(const std::string& heading);

/// The folder of the sources.
const std::filesystem::path& sourceFolder();

}  // namespace vantrel::documents::test
