#include "markdown.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <regex>
#include <stdexcept>

#include "platform/text.h"

namespace vantrel::documents::test {
namespace {

bool isFence(const std::string& line) { return line.starts_with("```"); }

/// 2 for "## Two"; 0 for lines that are no heading.
std::size_t levelOf(const std::string& line) {
    const std::size_t level = line.find_first_not_of('#');
    return level != std::string::npos && line[level] == ' ' ? level : 0;
}

Cells cellsOf(const std::string& line) {
    Cells cells;
    std::string cell;
    for (std::size_t i = 1; i < line.size(); ++i) {
        if (line[i] == '|') {
            cells.push_back(platform::trimmed(cell));
            cell.clear();
        } else {
            if (line[i] == '\\' && i + 1 < line.size() && line[i + 1] == '|') ++i;
            cell += line[i];
        }
    }
    return cells;
}

std::vector<std::string> matches(const std::string& text, const std::regex& pattern) {
    std::vector<std::string> found;
    for (std::sregex_iterator match(text.begin(), text.end(), pattern), end; match != end; ++match)
        found.push_back((*match)[1]);
    return found;
}

}  // namespace

const std::filesystem::path& sourceFolder() {
    static const std::filesystem::path folder = VANTREL_SOURCE_DIR;
    return folder;
}

Document::Document(const std::string& file) : file_(file) {
    std::ifstream stream(sourceFolder() / file);
    if (!stream) throw std::runtime_error("Can't read " + file);
    for (std::string line; std::getline(stream, line);) lines_.push_back(line);
}

Document Document::section(const std::string& heading) const {
    Document part;
    part.file_ = file_ + ", \"" + heading + "\"";
    std::size_t level = 0;
    bool inBlock = false;
    for (const std::string& line : lines_) {
        if (isFence(line)) inBlock = !inBlock;
        const std::size_t here = inBlock ? 0 : levelOf(line);
        if (level > 0 && here > 0 && here <= level) break;
        if (level > 0) part.lines_.push_back(line);
        if (level == 0 && here > 0 && line.substr(here + 1) == heading) level = here;
    }
    if (level == 0) throw std::runtime_error(file_ + " has no heading \"" + heading + "\"");
    return part;
}

std::vector<std::string> Document::prose() const {
    std::vector<std::string> found;
    bool inBlock = false;
    for (const std::string& line : lines_) {
        if (isFence(line))
            inBlock = !inBlock;
        else if (!inBlock)
            found.push_back(line);
    }
    return found;
}

std::vector<Cells> Document::rows() const {
    std::vector<Cells> found;
    std::size_t columns = 0;  // of the table that we are in
    for (const std::string& line : prose()) {
        if (!line.starts_with('|')) {
            columns = 0;
        } else if (line.find_first_not_of("|-: ") == std::string::npos) {
            columns = cellsOf(line).size();
            found.pop_back();  // it was the head
        } else {
            found.push_back(cellsOf(line));
            if (found.back().size() < columns) found.back().resize(columns);
        }
    }
    return found;
}

std::vector<std::string> Document::blocks() const {
    std::vector<std::string> found;
    bool inBlock = false;
    for (const std::string& line : lines_) {
        if (isFence(line)) {
            inBlock = !inBlock;
            if (inBlock) found.emplace_back();
        } else if (inBlock) {
            found.back() += line + "\n";
        }
    }
    return found;
}

std::vector<std::string> Document::headings() const {
    std::vector<std::string> found;
    for (const std::string& line : prose())
        if (const std::size_t level = levelOf(line); level > 0) found.push_back(line.substr(level + 1));
    return found;
}

std::vector<std::string> Document::links() const {
    static const std::regex kTarget(R"(\]\(([^)\s]+)\))");
    std::vector<std::string> found;
    for (const std::string& line : prose())
        for (const std::string& target : matches(line, kTarget)) found.push_back(target);
    return found;
}

std::set<std::string> Document::codes() const {
    std::set<std::string> found;
    for (const std::string& line : prose())
        for (const std::string& code : codesOf(line)) found.insert(code);
    return found;
}

std::vector<std::string> codesOf(const std::string& text) {
    static const std::regex kCode("`([^`]+)`");
    return matches(text, kCode);
}

std::string anchorOf(const std::string& heading) {
    std::string anchor;
    for (const char c : heading) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == ' ')
            anchor += '-';
        else if (std::isalnum(byte) != 0 || c == '-' || c == '_' || byte >= 0x80)
            anchor += static_cast<char>(std::tolower(byte));
    }
    return anchor;
}

}  // namespace vantrel::documents::test
