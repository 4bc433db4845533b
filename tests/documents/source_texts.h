// The texts in C++ sources, put together as the program puts them together.
#pragma once

#include <string>
#include <vector>

namespace vantrel::documents::test {

struct SourceText {
    std::string file;
    int line = 0;
    /// Literals joined by + as one text, with "…" for everything between them: "Plate … Solved". Lines that
    /// follow each other are parted by a blank. A pattern's places are "…", too.
    std::string text;
    /// The functions in whose arguments it stands, the innermost last.
    std::vector<std::string> calls;
};

/// The texts of one source, without those in comments and in preprocessor lines.
std::vector<SourceText> textsOf(const std::string& source, const std::string& file);

/// The parts of a text around "…", trimmed; blanks in a row count as one.
std::vector<std::string> partsOf(const std::string& text);

}  // namespace vantrel::documents::test
