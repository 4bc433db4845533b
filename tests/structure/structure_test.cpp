// The architecture's rules, read from the sources: which room may include which, which libraries stay where,
// and what must stand in one place only.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace vantrel {
namespace {

namespace fs = std::filesystem;

const fs::path kRoot = VANTREL_SOURCE_DIR;

struct Line {
    std::string file;  // relative to the root
    int number;
    std::string text;
};

std::ostream& operator<<(std::ostream& out, const Line& line) {
    return out << line.file << ":" << line.number << ": " << line.text;
}

std::vector<Line> linesOf(const fs::path& file) {
    std::vector<Line> lines;
    std::ifstream stream(file);
    for (std::string text; std::getline(stream, text);)
        lines.push_back(
            {fs::relative(file, kRoot).generic_string(), static_cast<int>(lines.size()) + 1, text});
    return lines;
}

/// The lines of all files with one of these extensions below the folder.
std::vector<Line> linesBelow(const std::string& folder, const std::set<std::string>& extensions) {
    std::vector<Line> all;
    if (!fs::exists(kRoot / folder)) return all;
    for (const auto& entry : fs::recursive_directory_iterator(kRoot / folder)) {
        if (!entry.is_regular_file() || !extensions.contains(entry.path().extension().string())) continue;
        const auto lines = linesOf(entry.path());
        all.insert(all.end(), lines.begin(), lines.end());
    }
    return all;
}

const std::vector<Line>& sources() {
    static const std::vector<Line> lines = linesBelow("src", {".h", ".cpp"});
    return lines;
}

/// "engine" of "src/engine/ports.h".
std::string roomOf(const std::string& file) {
    const auto start = file.find('/') + 1;
    return file.substr(start, file.find('/', start) - start);
}

bool isStandardHeader(const std::string& header) {
    // Standard headers have no dot, but for those of C and of the operating system below.
    static const std::set<std::string> kSystem = {"unistd.h",   "fcntl.h",       "poll.h",     "stdlib.h",
                                                  "sys/file.h", "sys/stat.h",    "sys/mman.h", "sys/types.h",
                                                  "sys/wait.h", "sys/resource.h"};
    return kSystem.contains(header) || std::regex_match(header, std::regex("[a-z_0-9]+"));
}

TEST(Structure, RoomsIncludeOnlyWhatTheirRowAllows) {
    const std::map<std::string, std::set<std::string>> allowed = {
        {"platform", {"platform"}},
        {"engine", {"engine", "platform"}},
        {"correction", {"correction", "engine", "platform"}},
        {"platesolve", {"platesolve", "engine", "platform"}},
        {"devices", {"devices", "engine", "platform"}},
        {"app", {"app", "devices", "platesolve", "correction", "engine", "platform"}},
        {"observatory", {"observatory", "platform"}},
        {"qt", {"qt", "app", "devices", "platesolve", "correction", "engine", "platform", "observatory"}},
        {"headless",
         {"headless", "app", "devices", "platesolve", "correction", "engine", "platform", "observatory"}},
    };
    const std::regex include(R"-(^\s*#\s*include\s*"([^"/]+)/[^"]+")-");
    int seen = 0;
    for (const Line& line : sources()) {
        std::smatch match;
        if (!std::regex_search(line.text, match, include)) continue;
        ++seen;
        const auto row = allowed.find(roomOf(line.file));
        ASSERT_NE(row, allowed.end()) << line << "\nis in a room that the architecture doesn't know";
        EXPECT_TRUE(row->second.contains(match[1])) << line;
    }
    EXPECT_GT(seen, 100);
}

TEST(Structure, EveryOwnIncludeNamesItsRoom) {
    const std::regex include(R"-(^\s*#\s*include\s*"([^"]+)")-");
    for (const Line& line : sources()) {
        std::smatch match;
        if (!std::regex_search(line.text, match, include)) continue;
        EXPECT_TRUE(fs::exists(kRoot / "src" / match[1].str())) << line;
    }
}

TEST(Structure, LibrariesStayInTheirRooms) {
    const std::regex include(R"(^\s*#\s*include\s*<([^>]+)>)");
    const std::map<std::string, std::regex> allowed = {
        {"observatory", std::regex(R"((fitsio|erfam?|sep|zlib)\.h|curl/curl\.h|Eigen/.*)")},
        {"headless", std::regex(R"(nlohmann/.*)")},
        {"qt", std::regex(R"(Q[A-Za-z]+)")},
    };
    for (const Line& line : sources()) {
        std::smatch match;
        if (!std::regex_search(line.text, match, include)) continue;
        const std::string header = match[1];
        const auto room = allowed.find(roomOf(line.file));
        const bool isQt = std::regex_match(header, allowed.at("qt"));
        const bool good = room != allowed.end() && std::regex_match(header, room->second);
        EXPECT_TRUE(good || (isStandardHeader(header) && !isQt)) << line;
        EXPECT_NE(header, "QtWidgets") << line << "\nis slow to compile: include the widgets by name";
    }
}

TEST(Structure, EachLibraryOfTheObservatoryHasOneWrapper) {
    const std::string fits = "observatory/sky/fits_library.h";  // the only header with a library inside
    const std::map<std::string, std::string> wrappers = {{"<fitsio.h>", "src/" + fits},
                                                         {'"' + fits + '"', "src/observatory/sky/"},
                                                         {"<erfa.h>", "src/observatory/sky/"},
                                                         {"<sep.h>", "src/observatory/solver/"},
                                                         {"<curl/curl.h>", "src/observatory/catalogs/"}};
    for (const auto& [header, folder] : wrappers) {
        std::set<std::string> users;
        for (const Line& line : sources())
            if (line.text.find("#include " + header) != std::string::npos) users.insert(line.file);
        for (const std::string& user : users) {
            EXPECT_TRUE(user.starts_with(folder)) << header << " in " << user;
            EXPECT_TRUE(user.ends_with(".cpp") || user == "src/" + fits) << header << " in " << user;
        }
    }
}

TEST(Structure, OnlyTheMainsKnowTheObservatory) {
    for (const Line& line : sources()) {
        if (line.text.find("#include \"observatory/observatory.h\"") == std::string::npos) continue;
        const std::string room = roomOf(line.file);
        EXPECT_TRUE(room == "qt" || room == "headless" || room == "observatory") << line;
    }
}

/// Something that may stand in few files only.
struct OnePlace {
    const char* why;
    std::regex pattern;
    std::vector<std::string> places;  // beginnings of file names
};

TEST(Structure, WaitsClocksAndChanceHaveOnePlace) {
    const OnePlace rules[] = {
        {"nested event loops",
         std::regex(R"(QEventLoop|processEvents|\bexec\s*\()"),
         {"src/qt/qt_event_loop.", "src/qt/qt_dialogs.", "src/qt/main.cpp"}},
        {"sleeping", std::regex(R"(sleep_for|sleep_until|\busleep|nanosleep|QThread|std::this_thread)"), {}},
        {"waiting for input",
         std::regex(R"(::poll\()"),
         {"src/headless/system_time.cpp", "src/headless/descriptor_lines.cpp"}},
        {"the machine's clock",
         std::regex(R"(_clock::now|gettimeofday|clock_gettime|std::time\(|currentDateTime|QElapsedTimer)"),
         {"src/headless/system_time.cpp", "src/qt/qt_event_loop.", "src/qt/qt_clock."}},
        {"the machine's time zone", std::regex(R"(localtime)"), {"src/platform/clock.cpp"}},
        {"chance",
         std::regex(R"(random_device|\brand\(|srand\(|std::mt19937|QRandomGenerator)"),
         {"src/observatory/sky/noise.", "src/qt/main.cpp", "src/headless/main.cpp"}},
        {"the environment", std::regex(R"(\bgetenv|qgetenv)"), {"src/platform/user_machine.cpp", "src/qt/"}},
        {"threads", std::regex(R"(std::j?thread\b|std::async)"), {}},
    };
    for (const OnePlace& rule : rules)
        for (const Line& line : sources()) {
            if (!std::regex_search(line.text, rule.pattern)) continue;
            const bool allowed = std::any_of(rule.places.begin(), rule.places.end(),
                                             [&](const auto& place) { return line.file.starts_with(place); });
            EXPECT_TRUE(allowed) << rule.why << ": " << line;
        }
}

TEST(Structure, HeadersGuardThemselves) {
    std::map<std::string, bool> guarded;
    for (const Line& line : sources())
        if (line.file.ends_with(".h")) guarded[line.file] = guarded[line.file] || line.text == "#pragma once";
    for (const auto& [file, good] : guarded) EXPECT_TRUE(good) << file;
}

}  // namespace
}  // namespace vantrel
