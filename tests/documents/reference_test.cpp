// Holds docs/reference.md against the sources: every text that the program can log, or show as a notice, in a
// box, in its instructions or on a button, stands there, and every message that stands there exists.
#include <algorithm>
#include <cctype>
#include <functional>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "markdown.h"
#include "platform/text.h"
#include "source_texts.h"
#include "support/temp_folder.h"

namespace vantrel::documents::test {
namespace {

namespace fs = std::filesystem;

const Document& reference() {
    static const Document document("docs/reference.md");
    return document;
}

/// Where the texts of a source are told, by the beginning of its name; the first that fits.
struct Place {
    const char* beginning;
    const char* heading;
    bool refusalsOnly = false;  // other texts there are names and values
};
const Place kPlaces[] = {
    {"src/app/", "At the start"},
    {"src/devices/slew_watch", "Telescope"},
    {"src/devices/telescope", "Telescope"},
    {"src/devices/", "Camera and imaging program"},
    {"src/engine/", "Measurement"},
    {"src/correction/polar_", "Polar plot and measurements"},
    {"src/correction/past_nights", "Polar plot and measurements"},
    {"src/correction/", "Correction"},
    {"src/platesolve/", "Plate solving"},
    {"src/hosts/", "Real devices"},
    {"src/station/file_solver", "Plate solving"},
    {"src/station/", "Real devices"},
    {"src/platform/http/", "What the built-in instruments refuse"},
    {"src/platform/camera_hardware.h", "What the built-in instruments refuse"},
    {"src/platform/", "Any other failure"},
    {"src/observatory/panel/", "Polar Axis Simulator"},
    {"src/sky/", "What the built-in instruments refuse", true},
    {"src/fits/", "What the built-in instruments refuse", true},
    {"src/pictures/", "What the built-in instruments refuse", true},
    {"src/catalogs/", "What the built-in instruments refuse", true},
    {"src/solver/unsolved_reason", "Plate solving"},
    {"src/solver/", "What the built-in instruments refuse", true},
    {"src/imaging/", "What the built-in instruments refuse", true},
    {"src/helpers/", "What the built-in instruments refuse", true},
    {"src/observatory/", "What the built-in instruments refuse", true},
};

// Sources whose texts aren't messages.
const char* const kSilent[] = {
    "_panel.h",
    "_panel.cpp",         // captions, which the tables of controls tell of
    "os_name.cpp",        // the names behind "OS:"
    "svg.cpp",            // what a picture's file holds
    "picture_cards.cpp",  // what a picture's header tells
    "png_writing.cpp",    // the next eight belong to vantrel-catalog, make-catalog and vantrel-solve
    "catalog_writer.cpp",
    "deep_catalog.cpp",
    "star_table.cpp",
    "tycho_distribution.cpp",
    "tycho_lines.cpp",
    "star_patterns.cpp",
    "pattern_store.cpp",
    "settings_file.cpp",  // the next three: SettingsStore tells of these failures in its own words
    "durable_file_posix.cpp",
    "durable_file_win32.cpp",
    "guarded_call_posix.cpp",  // readers of files tell of these in theirs
    "input_file_win32.cpp",
    "sockets_win32.cpp",   // the words that other systems have themselves
    "own_runs_posix.cpp",  // the next two belong to vantrel-solve
    "own_runs_win32.cpp",
    "whole_file.cpp",
    "user_paths_posix.cpp",  // the next two: what only standard error is told, before or after all windows
    "user_paths_win32.cpp",
    "queued_event_loop.cpp",
};

// Texts that nobody is shown.
const std::set<std::string> kUnseen = {
    "This is a test.",  // what is written to try a folder
    "<getProperties version=\"1.7\"/>",
    "<getProperties version=\"1.7\"",  // what an INDI server is asked
    "MaxIm DL",
    "MaxIm CCD",
    "Camera Control",  // titles of windows that are looked for
    "yyyy-MM-dd HH:mm:ss",
    "Vista",                            // a name behind "OS:"
    "The settings have failed before",  // after the box that told of it
    "telescope link",                   // what is looked for in a message
};

// Functions whose arguments are whole messages, and others whose arguments are shown as parts of one.
const std::set<std::string> kWhole = {"AddToLog", "log",        "ShowPopupMessage", "popUp",
                                      "tell",     "messageBox", "reportMissing"};
const std::set<std::string> kParts = {"numbered", "joinLines", "lines", "line"};

bool isShown(const std::string& call) { return kWhole.contains(call) || kParts.contains(call); }

/// Null when no row is the file's.
const Place* placeOf(const std::string& file) {
    const auto place = std::find_if(std::begin(kPlaces), std::end(kPlaces),
                                    [&](const Place& row) { return file.starts_with(row.beginning); });
    return place == std::end(kPlaces) ? nullptr : place;
}

bool isPlaced(const std::string& file) { return placeOf(file) != nullptr; }

/// Several words, or an exclamation.
bool isProse(const std::string& text) {
    static const std::regex kTwoWords("[A-Za-z].* .*[A-Za-z]");
    const auto parts = partsOf(text);
    return std::any_of(parts.begin(), parts.end(), [](const std::string& part) {
        return part.ends_with('!') || std::regex_search(part, kTwoWords);
    });
}

/// The line of a failure's report that tells where it happened.
bool tellsWhere(const std::string& text) {
    static const std::regex kWhere(R"(^\W*(Module )?(mod[A-Z]|mod |frm)|^… Sub )");
    return std::regex_search(text, kWhere);
}

bool isPathOrFile(const std::string& text) {
    static const std::regex kFile(R"(\\|^[^/]*\.[a-z]{3}$)");
    return std::regex_search(text, kFile);
}

bool isRefusal(const SourceText& text) {
    static const std::regex kRefusing(
        ".*([Ee]rror|refuse|damaged|fail|failFits|invalid_argument|out_of_range|GivenUp|emplace)");
    return std::any_of(text.calls.begin(), text.calls.end(),
                       [](const std::string& call) { return std::regex_match(call, kRefusing); });
}

bool isMessage(const SourceText& text) {
    const auto parts = partsOf(text.text);
    const std::string whole = parts.empty() ? "" : parts[0];
    const bool hasLetters = std::any_of(parts.begin(), parts.end(), [](const std::string& part) {
        return std::any_of(part.begin(), part.end(), [](unsigned char c) { return std::isalpha(c) != 0; });
    });
    if (!hasLetters || kUnseen.contains(whole) || tellsWhere(text.text) || isPathOrFile(text.text))
        return false;
    const Place* place = placeOf(text.file);
    if (place != nullptr && place->refusalsOnly) return isRefusal(text) && isProse(text.text);
    return isProse(text.text) || (!text.calls.empty() && isShown(text.calls.back()));
}

bool isSilent(const fs::path& file) {
    const std::string name = file.filename().string();
    return name.starts_with("frm_") ||
           std::any_of(std::begin(kSilent), std::end(kSilent),
                       [&](const char* end) { return name != "simulator_panel.cpp" && name.ends_with(end); });
}

using Choice = std::function<bool(const fs::path& file)>;

/// The sources that the choice wants, relative to the root.
std::vector<fs::path> sourcesIn(const Choice& wanted) {
    std::vector<fs::path> files;
    for (const auto& entry : fs::recursive_directory_iterator(sourceFolder() / "src")) {
        const fs::path file = fs::relative(entry.path(), sourceFolder());
        if ((file.extension() == ".cpp" || file.extension() == ".h") && wanted(file)) files.push_back(file);
    }
    return files;
}

std::vector<SourceText> textsIn(const Choice& wanted) {
    std::vector<SourceText> found;
    for (const fs::path& file : sourcesIn(wanted))
        for (SourceText& text :
             textsOf(vantrel::test::contentsOf(sourceFolder() / file), file.generic_string()))
            found.push_back(std::move(text));
    return found;
}

/// What the program's sources hold, silent ones left out.
const std::vector<SourceText>& allTexts() {
    static const std::vector<SourceText> texts =
        textsIn([](const fs::path& file) { return isPlaced(file.generic_string()) && !isSilent(file); });
    return texts;
}

bool isLetter(const std::string& text, std::size_t at) {
    return at < text.size() && std::isalnum(static_cast<unsigned char>(text[at])) != 0;
}

/// Where the part stands in the text as words of their own, from there on.
std::size_t findWords(const std::string& text, const std::string& part, std::size_t from) {
    for (std::size_t at = text.find(part, from); at != std::string::npos; at = text.find(part, at + 1)) {
        const std::size_t end = at + part.size();
        const bool cutBefore = at > 0 && isLetter(text, at - 1) && isLetter(text, at);
        const bool cutBehind = isLetter(text, end - 1) && isLetter(text, end);
        if (!cutBefore && !cutBehind) return at;
    }
    return std::string::npos;
}

/// With single blanks.
std::string asOneLine(const std::string& text) {
    std::string line;
    for (const char c : text) {
        const bool blank = std::isspace(static_cast<unsigned char>(c)) != 0;
        if (!blank || (!line.empty() && line.back() != ' ')) line += blank ? ' ' : c;
    }
    return platform::trimmed(line);
}

/// The source's text is told alone where it is a message of its own, else among others: its parts stand in
/// this one in their order.
bool tellsOf(const std::string& told, const SourceText& text) {
    if (!text.calls.empty() && kWhole.contains(text.calls.back())) return partsOf(told) == partsOf(text.text);
    std::size_t at = 0;
    for (const std::string& part : partsOf(text.text)) {
        at = findWords(told, part, at);
        if (at == std::string::npos) return false;
        at += part.size();
    }
    return true;
}

TEST(SourceTexts, ArePutTogetherAsTheProgramDoesIt) {
    const struct {
        const char* why;
        const char* source;
        std::vector<std::string> texts;
    } cases[] = {
        {"a sum", R"(log("Plate " + count(n) + " Solved");)", {"Plate … Solved"}},
        {"literals in a row", "log(\"Plate \"\n \"solved\");", {"Plate solved"}},
        {"arguments are apart", R"(numbered("Plate ", n, " Solved");)", {"Plate ", " Solved"}},
        {"a choice",
         R"(log(std::string(good ? "Test passed" : "Test failed") + "!");)",
         {"Test passed", "Test failed", "…!"}},
        {"a list", R"(joinLines({"One", "Two " + two});)", {"One", "Two …"}},
        {"escapes", R"(log("say \"so\"\r\nand \\ on");)", {"say \"so\"  and \\ on"}},
        {"raw", "auto p = R\"(C:\\a)\";", {"C:\\a"}},
        {"no comments, characters or includes",
         "// \"a\"\n/* \"b\" */ char c = '\"'; // \"c\"\n#include \"d.h\"\nint n = 1'000; f(\"e\");",
         {"e"}},
        {"a wrapped literal", R"(popUp(std::string(" Connecting ") + name + "!", 5);)", {" Connecting …!"}},
        {"calls within namespaces", R"(log("try " + std::to_string(n) + " of " + x);)", {"try … of …"}},
        {"what stands before", R"(return name + " is connected";)", {"… is connected"}},
        {"a pattern", R"(Words::tr("Plate %1 of %2", {"3", n});)", {"Plate … of …", "3"}},
    };
    for (const auto& c : cases) {
        std::vector<std::string> found;
        for (const SourceText& text : textsOf(c.source, "x.cpp")) found.push_back(text.text);
        EXPECT_EQ(found, c.texts) << c.why;
    }
    const auto texts = textsOf("// one\n\nstep([&] { log(\"a\" + b(\"c\")); });", "x.cpp");
    ASSERT_EQ(texts.size(), 2U);
    EXPECT_EQ(texts[1].calls, (std::vector<std::string>{"step", "log"}));
    EXPECT_EQ(texts[1].line, 3);
}

TEST(Reference, TellsOfEveryMessage) {
    std::vector<std::string> told;
    for (const std::string& code : reference().codes()) told.push_back(asOneLine(code));
    int seen = 0;
    for (const SourceText& text : allTexts()) {
        if (!isMessage(text)) continue;
        ++seen;
        const bool found = std::any_of(told.begin(), told.end(),
                                       [&](const std::string& code) { return tellsOf(code, text); });
        EXPECT_TRUE(found)
            << "docs/reference.md, \"" << placeOf(text.file)->heading << "\": add a row (or add to one) for `"
            << asOneLine(text.text) << "` (" << text.file << ":" << text.line
            << "): the text between ` signs on the left, what it means on the right. If nobody is "
               "shown it, name it in kUnseen of this test.";
    }
    EXPECT_GT(seen, 250);
}

// A room has its place above as soon as what it says can reach the operator.
TEST(Reference, KnowsTheRoomsThatTellTheOperator) {
    for (const SourceText& text :
         textsIn([](const fs::path& file) { return !isPlaced(file.generic_string()); }))
        for (const char* teller : {"AddToLog", "ShowPopupMessage", "messageBox"})
            EXPECT_EQ(std::count(text.calls.begin(), text.calls.end(), teller), 0)
                << text.file << ":" << text.line << " tells \"" << text.text
                << "\": add its room to kPlaces of this test";
    const auto outsideHosts = [](const fs::path& file) {
        return !file.generic_string().starts_with("src/hosts/");
    };
    for (const fs::path& file : sourcesIn(outsideHosts))
        EXPECT_TRUE(isPlaced("src/hosts/") ||
                    vantrel::test::contentsOf(sourceFolder() / file).find("#include \"hosts/") ==
                        std::string::npos)
            << file << " uses hosts/: add {\"src/hosts/\", \"Real devices\"} to kPlaces of this test";
}

/// Also what is too short, or too odd, to be told of by itself.
bool isSaid(const SourceText& text) {
    return isMessage(text) || isRefusal(text) || std::any_of(text.calls.begin(), text.calls.end(), isShown);
}

/// What is left of a documented message when everything that the program says is taken out of it.
std::string unsaid(std::string told) {
    static const std::vector<std::string> said = [] {
        std::vector<std::string> parts;
        for (const SourceText& text : allTexts())
            for (const std::string& part : isSaid(text) ? partsOf(text.text) : std::vector<std::string>())
                parts.push_back(part);
        std::sort(parts.begin(), parts.end(),
                  [](const std::string& a, const std::string& b) { return a.size() > b.size(); });
        return parts;
    }();
    for (const std::string& part : said)
        for (std::size_t at = findWords(told, part, 0); at != std::string::npos;
             at = findWords(told, part, at))
            told.replace(at, part.size(), 1, '|');
    std::erase_if(told, [](unsigned char c) { return std::isalnum(c) == 0; });
    return told;
}

TEST(Reference, TellsOfNoMessageThatTheProgramDoesNotHave) {
    int seen = 0;
    for (const Cells& row : reference().section("Messages").rows())
        for (const std::string& message : codesOf(row[0])) {
            ++seen;
            EXPECT_EQ(unsaid(asOneLine(message)), "") << "docs/reference.md, \"Messages\": no source has `"
                                                      << message << "`: take it out, or say it as "
                                                      << "the program does";
        }
    EXPECT_GT(seen, 200);
}

}  // namespace
}  // namespace vantrel::documents::test
