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

std::vector<Line> sourcesIn(const char* folder) {
    std::vector<Line> all;
    for (const auto& entry : fs::recursive_directory_iterator(kRoot / folder)) {
        if (entry.path().extension() != ".h" && entry.path().extension() != ".cpp") continue;
        std::ifstream stream(entry.path());
        int number = 0;
        for (std::string text; std::getline(stream, text);)
            all.push_back({fs::relative(entry.path(), kRoot).generic_string(), ++number, text});
    }
    return all;
}

const std::vector<Line>& sources() {
    static const std::vector<Line> lines = sourcesIn("src");
    return lines;
}

/// Each include with the line that it stands in.
struct Include {
    Line line;
    bool own;  // in quotes
    std::string header;
};

std::vector<Include> includes(const std::vector<Line>& lines = sources()) {
    const std::regex include(R"-(^\s*#\s*include\s*(["<])([^">]+)[">])-");
    std::vector<Include> found;
    std::smatch match;
    for (const Line& line : lines)
        if (line.text.find('#') != std::string::npos && std::regex_search(line.text, match, include))
            found.push_back({line, match[1] == "\"", match[2]});
    return found;
}

/// "engine" of "src/engine/ports.h".
std::string roomOf(const std::string& file) {
    const auto start = file.find('/') + 1;
    return file.substr(start, file.find('/', start) - start);
}

bool isStandardHeader(const std::string& header) {
    // Standard headers have no dot, but for those of C and of the operating system below.
    static const std::set<std::string> kSystem = {
        "unistd.h",      "fcntl.h",    "poll.h",      "stdlib.h",   "sys/file.h",
        "sys/stat.h",    "sys/mman.h", "sys/types.h", "sys/wait.h", "sys/resource.h",
        "sys/utsname.h", "malloc.h",   "spawn.h"};
    return kSystem.contains(header) || std::regex_match(header, std::regex("[a-z_0-9]+"));
}

/// Files that are compiled for Windows alone.
bool isForWindows(const std::string& file) {
    return file.ends_with("_win32.cpp") || file.ends_with("/win32_calls.h") ||
           file.starts_with("src/hosts/com/");
}

TEST(Structure, SystemsHaveTheirOwnFiles) {
    const std::set<std::string> windows = {"windows.h", "winsock2.h", "objbase.h", "oleauto.h", "io.h"};
    const std::set<std::string> posix = {"unistd.h",   "fcntl.h",     "poll.h",     "sys/stat.h",
                                         "sys/mman.h", "spawn.h",     "sys/wait.h", "sys/resource.h",
                                         "sys/file.h", "sys/socket.h"};
    for (const auto& [line, own, header] : includes()) {
        if (own) continue;
        EXPECT_FALSE(windows.contains(header) && !isForWindows(line.file)) << line;
        const bool mayUsePosix =
            line.file.ends_with("_posix.cpp") || isForWindows(line.file) || line.file.starts_with("src/qt/");
        EXPECT_TRUE(mayUsePosix || !posix.contains(header)) << line;
    }
}

TEST(Structure, RoomsIncludeOnlyWhatTheirRowAllows) {
    const std::map<std::string, std::set<std::string>> allowed = {
        {"platform", {"platform"}},
        {"engine", {"engine", "platform"}},
        {"correction", {"correction", "engine", "platform"}},
        {"platesolve", {"platesolve", "engine", "platform"}},
        {"devices", {"devices", "engine", "platform"}},
        {"app", {"app", "devices", "platesolve", "correction", "engine", "platform"}},
        {"sky", {"sky", "platform"}},
        {"fits", {"fits", "sky", "platform"}},
        {"catalogs", {"catalogs", "sky", "platform"}},
        {"pictures", {"pictures", "fits", "platform"}},
        {"solver", {"solver", "catalogs", "fits", "sky", "platform"}},
        {"imaging", {"imaging", "solver", "fits", "sky", "platform"}},
        {"helpers", {"helpers", "platform"}},
        {"observatory",
         {"observatory", "helpers", "imaging", "solver", "catalogs", "fits", "sky", "platform"}},
        {"hosts", {"hosts", "platform"}},
        {"page", {"page", "platform"}},
        {"station",
         {"station", "page", "imaging", "observatory", "solver", "pictures", "catalogs", "fits", "sky",
          "hosts", "platform"}},
        {"qt",
         {"qt", "app", "devices", "platesolve", "correction", "engine", "platform", "imaging", "observatory",
          "page", "station"}},
        {"headless",
         {"headless", "app", "devices", "platesolve", "correction", "engine", "platform", "fits", "imaging",
          "station"}},
    };
    int seen = 0;
    for (const auto& [line, own, header] : includes()) {
        if (!own) continue;
        ++seen;
        EXPECT_TRUE(fs::exists(kRoot / "src" / header)) << line << "\ndoesn't name its room";
        const auto row = allowed.find(roomOf(line.file));
        ASSERT_NE(row, allowed.end()) << line << "\nis in a room that the architecture doesn't know";
        EXPECT_TRUE(row->second.contains(header.substr(0, header.find('/')))) << line;
    }
    EXPECT_GT(seen, 100);
}

/// Benchmarks are built by hand: nobody else would miss a header that they share with the tests.
TEST(Structure, WhatIsIncludedIsThere) {
    int seen = 0;
    for (const char* folder : {"bench", "tools", "library", "tests"})
        for (const auto& [line, own, header] : includes(sourcesIn(folder))) {
            if (!own) continue;
            ++seen;
            const fs::path beside = (kRoot / line.file).parent_path();
            EXPECT_TRUE(fs::exists(kRoot / "src" / header) || fs::exists(kRoot / "tests" / header) ||
                        fs::exists(kRoot / "include" / header) || fs::exists(beside / header))
                << line;
        }
    EXPECT_GT(seen, 500);
}

TEST(Structure, LibrariesStayInTheirRooms) {
    const std::map<std::string, std::regex> allowed = {
        {"engine", std::regex(R"(Eigen/.*)")},
        {"correction", std::regex(R"(Eigen/.*)")},
        {"platform",
         std::regex(
             R"(CLI/CLI\.hpp|(curl/curl|netdb|ifaddrs|arpa/inet|net/if|sys/socket|netinet/in|netinet/tcp)\.h)")},
        {"sky", std::regex(R"(erfam?\.h)")},
        {"fits", std::regex(R"((fitsio|zlib)\.h)")},
        {"pictures", std::regex(R"(jpeglib\.h|png\.h|tiffio\.h|libraw/libraw\.h)")},
        {"solver", std::regex(R"(Eigen/.*)")},
        {"hosts", std::regex(R"(zlib\.h|nlohmann/.*)")},
        {"page",
         std::regex(
             R"((microhttpd|qrencode|png|ifaddrs|arpa/inet|net/if|sys/socket|sys/random|netinet/in)\.h|nlohmann/.*)")},
        {"headless", std::regex(R"(nlohmann/.*)")},
        {"qt", std::regex(R"(Q[A-Za-z]+)")},
    };
    for (const auto& [line, own, header] : includes()) {
        if (own || isForWindows(line.file)) continue;
        const auto room = allowed.find(roomOf(line.file));
        const bool isQt = std::regex_match(header, allowed.at("qt"));
        const bool good = room != allowed.end() && std::regex_match(header, room->second);
        EXPECT_TRUE(good || (isStandardHeader(header) && !isQt)) << line;
        EXPECT_NE(header, "QtWidgets") << line << "\nis slow to compile: include the widgets by name";
    }
}

TEST(Structure, EachLibraryHasOneWrapper) {
    const std::string fits = "fits/fits_library.h";  // the only header with a library inside
    const std::map<std::string, std::string> wrappers = {{"fitsio.h", "src/" + fits},
                                                         {fits, "src/fits/"},
                                                         {"erfa.h", "src/sky/"},
                                                         {"curl/curl.h", "src/platform/http/"},
                                                         {"CLI/CLI.hpp", "src/platform/command_line."},
                                                         {"microhttpd.h", "src/page/http_server."},
                                                         {"qrencode.h", "src/page/qr_code."}};
    for (const auto& [line, own, header] : includes()) {
        const auto wrapper = wrappers.find(header);
        if (wrapper == wrappers.end()) continue;
        EXPECT_TRUE(line.file.starts_with(wrapper->second)) << line;
        EXPECT_TRUE(line.file.ends_with(".cpp") || line.file == "src/" + fits) << line;
    }
}

TEST(Structure, WaitsClocksAndChanceHaveOnePlace) {
    const struct {
        const char* why;
        std::regex pattern;
        std::vector<std::string> places;  // beginnings of file names
    } rules[] = {
        {"nested event loops",
         std::regex(R"(QEventLoop|processEvents|\bexec\s*\()"),
         {"src/qt/qt_event_loop.", "src/qt/qt_dialogs.", "src/qt/main.cpp"}},
        {"sleeping", std::regex(R"(sleep_for|sleep_until|\busleep|nanosleep|QThread|std::this_thread)"), {}},
        {"waiting for input",
         std::regex(R"(::poll\()"),
         {"src/platform/descriptors_posix.cpp", "src/platform/sockets_posix.cpp"}},
        {"the machine's clock",
         std::regex(R"(_clock::now|gettimeofday|clock_gettime|std::time\(|currentDateTime|QElapsedTimer)"),
         {"src/headless/system_time.cpp", "src/qt/qt_event_loop.", "src/qt/qt_clock."}},
        {"the machine's time zone", std::regex(R"(localtime)"), {"src/platform/clock.cpp"}},
        {"chance",
         std::regex(R"(random_device|\brand\(|srand\(|std::mt19937|QRandomGenerator|getrandom)"),
         {"src/observatory/telescopes/noise.", "src/page/secret_", "src/qt/main.cpp",
          "src/headless/main.cpp"}},
        {"the environment", std::regex(R"(\bgetenv|qgetenv)"), {"src/platform/user_paths_", "src/qt/"}},
        {"threads",
         std::regex(R"(std::j?thread\b|std::async)"),
         {"src/hosts/name_lookup.cpp", "src/platform/background.cpp", "src/platform/descriptors_win32.cpp",
          "src/hosts/com/apartment.cpp"}},
    };
    for (const auto& rule : rules)
        for (const Line& line : sources()) {
            if (!std::regex_search(line.text, rule.pattern)) continue;
            const bool allowed = std::any_of(rule.places.begin(), rule.places.end(),
                                             [&](const auto& place) { return line.file.starts_with(place); });
            EXPECT_TRUE(allowed) << rule.why << ": " << line;
        }
}

}  // namespace
}  // namespace vantrel
