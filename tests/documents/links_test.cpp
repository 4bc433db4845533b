// Whether what the documents point at exists: links and their anchors, pictures, paths, programs, their
// options, and targets of make.
#include <algorithm>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "markdown.h"
#include "support/temp_folder.h"

namespace vantrel::documents::test {
namespace {

namespace fs = std::filesystem;
using vantrel::test::contentsOf;

const std::vector<Document>& documents() {
    static const std::vector<Document> all = [] {
        std::vector<Document> found{Document("README.md"), Document("CHANGELOG.md")};
        for (const auto& entry : fs::directory_iterator(sourceFolder() / "docs"))
            if (entry.path().extension() == ".md")
                found.emplace_back("docs/" + entry.path().filename().string());
        return found;
    }();
    return all;
}

fs::path folderOf(const Document& document) { return fs::path(document.file()).parent_path(); }

/// A link's target without its anchor, relative to the sources; empty for a web page.
fs::path targetOf(const Document& document, const std::string& link) {
    if (link.find("://") != std::string::npos) return {};
    const std::string path = link.substr(0, link.find('#'));
    return path.empty() ? fs::path(document.file()) : (folderOf(document) / path).lexically_normal();
}

TEST(Documents, LinksLeadSomewhere) {
    int seen = 0;
    for (const Document& document : documents())
        for (const std::string& link : document.links()) {
            const fs::path target = targetOf(document, link);
            if (target.empty()) continue;
            ++seen;
            ASSERT_TRUE(fs::exists(sourceFolder() / target))
                << document.file() << " links to " << link << ", which doesn't exist";
            if (link.find('#') == std::string::npos) continue;
            const auto headings = Document(target.string()).headings();
            const auto fits = [&](const std::string& heading) {
                return anchorOf(heading) == link.substr(link.find('#') + 1);
            };
            EXPECT_EQ(std::count_if(headings.begin(), headings.end(), fits), 1)
                << document.file() << " links to " << link << ": " << target << " needs one such heading";
        }
    EXPECT_GT(seen, 80);
}

TEST(Documents, EveryPictureIsShown) {
    std::set<fs::path> shown;
    for (const Document& document : documents())
        for (const std::string& link : document.links()) shown.insert(targetOf(document, link));
    for (const auto& entry : fs::directory_iterator(sourceFolder() / "docs/images")) {
        const fs::path picture = fs::relative(entry.path(), sourceFolder());
        EXPECT_TRUE(shown.contains(picture)) << picture << " is in no document";
    }
}

// The manual is made of some of the documents; what they link to has to come along.
TEST(Documents, PagesOfTheManualLinkToPagesOfTheManual) {
    const std::string list = contentsOf(sourceFolder() / "docs/CMakeLists.txt");
    const auto isPage = [&](const fs::path& file) {
        return list.find(std::string(1, '/').append(file.filename().string())) != std::string::npos;
    };
    int pages = 0;
    for (const Document& document : documents()) {
        if (!isPage(document.file())) continue;
        ++pages;
        for (const std::string& link : document.links()) {
            const fs::path target = targetOf(document, link);
            EXPECT_TRUE(target.extension() != ".md" || isPage(target))
                << document.file() << " links to " << target
                << ": add it to the pages in docs/CMakeLists.txt";
        }
    }
    EXPECT_GE(pages, 4);
}

/// What stands between ` signs, and the lines of blocks.
std::vector<std::string> codesAndLines(const Document& document) {
    const auto codes = document.codes();
    std::vector<std::string> all(codes.begin(), codes.end());
    for (const std::string& block : document.blocks()) {
        std::istringstream lines(block);
        for (std::string line; std::getline(lines, line);) all.push_back(line);
    }
    return all;
}

std::vector<std::string> wordsOf(const std::string& text) {
    std::istringstream stream(text);
    std::vector<std::string> words;
    for (std::string word; stream >> word;) words.push_back(word);
    return words;
}

/// Programs by name, and the source that knows their options.
const std::map<std::string, std::string> kPrograms = {
    {"vantrel", "src/qt/main.cpp"},
    {"vantrel-headless", "src/headless/options.cpp"},
    {"vantrel-solve", "tools/vantrel_solve.cpp"},
    {"vantrel-catalog", "tools/vantrel_catalog.cpp"},
    {"vantrel-pictures", "tools/window_pictures.cpp"},
    {"make-catalog", "tools/make_catalog.cpp"},
    {"fault_table", "tests/faults/fault_table.cpp"},
};

/// The source of a program or a script; empty when the word is neither.
std::string sourceOf(const std::string& word) {
    if (word.ends_with(".py") || word.ends_with(".sh")) return word;
    const auto program = kPrograms.find(fs::path(word).filename().string());
    return program != kPrograms.end() ? program->second : "";
}

bool quotes(const std::string& source, const std::string& text) {
    return source.find(std::string(1, '"').append(text).append(1, '"')) != std::string::npos;
}

TEST(Documents, CommandsCanBeGiven) {
    const auto isTarget = [makefile = contentsOf(sourceFolder() / "Makefile")](const std::string& name) {
        return makefile.find(std::string(1, '\n').append(name).append(1, ':')) != std::string::npos;
    };
    std::string everyProgram;
    for (const auto& [program, source] : kPrograms) everyProgram += contentsOf(sourceFolder() / source);
    for (const char* folder : {"bench", "tools", "scripts"})
        for (const auto& entry : fs::directory_iterator(sourceFolder() / folder))
            if (entry.path().extension() == ".py") everyProgram += contentsOf(entry.path());
    int targets = 0, options = 0;
    for (const Document& document : documents())
        for (const std::string& code : codesAndLines(document)) {
            const auto words = wordsOf(code);
            if (words.size() >= 2 && words[0] == "make") {
                ++targets;
                EXPECT_TRUE(isTarget(words[1]))
                    << document.file() << ": `" << code << "`: the Makefile has no such target";
            }
            const bool anybodys = !words.empty() && words[0].starts_with("--");
            const std::string source = words.empty() || anybodys ? "" : sourceOf(words[0]);
            if (source.empty() && !anybodys) continue;
            const std::string known = anybodys ? everyProgram : contentsOf(sourceFolder() / source);
            if (known.empty()) continue;  // a script that is named without its folder
            for (const std::string& word : words) {
                if (!word.starts_with("--")) continue;
                ++options;
                const std::string option = word.substr(0, word.find('='));
                EXPECT_TRUE(quotes(known, option) || quotes(known, option.substr(2)))
                    << document.file() << ": `" << code << "`: " << (anybodys ? "no program" : source)
                    << " doesn't know " << option;
            }
        }
    EXPECT_GT(targets, 5);
    EXPECT_GT(options, 10);
}

std::set<std::string> builtPrograms() {
    static const std::regex kProgram(R"(add_executable\(([\w-]+))");
    std::set<std::string> names;
    for (const char* list : {"src/qt/CMakeLists.txt", "src/headless/CMakeLists.txt", "tools/CMakeLists.txt",
                             "src/CMakeLists.txt"}) {
        const std::string text = contentsOf(sourceFolder() / list);
        for (std::sregex_iterator match(text.begin(), text.end(), kProgram), end; match != end; ++match)
            names.insert((*match)[1]);
    }
    return names;
}

// The documents name files from the sources' root, or from src/.
TEST(Documents, PathsExist) {
    static const std::regex kPath(R"([\w.-]+(/[\w.-]+)*/?)");
    const std::set<std::string> programs = builtPrograms();
    int seen = 0;
    for (const Document& document : documents())
        for (const std::string& code : codesAndLines(document)) {
            if (document.file() == "docs/reference.md") continue;  // its paths are the program's texts
            for (const std::string& word : wordsOf(code)) {
                if (word.find('/') == std::string::npos || !std::regex_match(word, kPath)) continue;
                if (word == "drives/c") continue;  // below --home
                ++seen;
                if (word.starts_with("build/release/bin/")) {
                    const std::string name = fs::path(word).filename().string();
                    EXPECT_TRUE(name.empty() || programs.contains(name))
                        << document.file() << ": `" << word << "`";
                } else {
                    EXPECT_TRUE(fs::exists(sourceFolder() / word) ||
                                fs::exists(sourceFolder() / "src" / word))
                        << document.file() << ": `" << word << "` doesn't exist, nor below src/";
                }
            }
        }
    EXPECT_GT(seen, 50);
}

}  // namespace
}  // namespace vantrel::documents::test
