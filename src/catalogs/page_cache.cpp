#include "catalogs/page_cache.h"

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <sstream>
#include <system_error>
#include <vector>

#include "platform/durable_file.h"
#include "platform/whole_file.h"

namespace vantrel::catalogs {

namespace {

namespace fs = std::filesystem;

constexpr const char* kEnding = ".page";

/// FNV-1a (Fowler, Noll, Vo), 64 bits.
std::uint64_t hashOf(const std::string& text) {
    std::uint64_t hash = 0xCBF29CE484222325U;
    for (const char c : text) hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3U;
    return hash;
}

}  // namespace

PageCache::PageCache(fs::path folder, std::uintmax_t mostBytes)
    : folder_(std::move(folder)), mostBytes_(mostBytes) {}

fs::path PageCache::fileOf(const std::string& question) const {
    std::ostringstream name;
    name << std::hex << hashOf(question) << kEnding;
    return folder_ / name.str();
}

/// The first line holds the question, because two may have the same hash.
std::optional<std::string> PageCache::find(const std::string& question) const {
    if (folder_.empty()) return std::nullopt;
    try {
        std::string page = platform::contentsOf(fileOf(question), mostBytes_);
        const std::string first = question + "\n";
        if (!page.starts_with(first)) return std::nullopt;
        return page.erase(0, first.size());
    } catch (const std::system_error&) {
        return std::nullopt;
    }
}

void PageCache::keep(const std::string& question, const std::string& document) const {
    if (folder_.empty()) return;
    std::error_code error;
    fs::create_directories(folder_, error);
    const fs::path file = fileOf(question);
    fs::path fresh = file;
    fresh += ".new";
    std::ofstream stream(fresh, std::ios::binary | std::ios::trunc);
    stream << question << "\n" << document;
    stream.close();
    if (stream) {
        platform::takePlace(fresh, file, error);
    } else {
        fs::remove(fresh, error);
    }
    makeRoom();
}

void PageCache::makeRoom() const {
    struct Page {
        fs::path file;
        fs::file_time_type written;
        std::uintmax_t bytes = 0;
    };
    std::vector<Page> pages;
    std::error_code error;
    for (fs::directory_iterator at(folder_, error), end; !error && at != end; at.increment(error)) {
        if (at->path().extension() != kEnding) continue;
        std::error_code gone;
        const Page page{at->path(), at->last_write_time(gone), at->file_size(gone)};
        if (!gone) pages.push_back(page);
    }
    std::sort(pages.begin(), pages.end(), [](const Page& a, const Page& b) { return a.written > b.written; });
    std::uintmax_t sum = 0;
    for (const Page& page : pages) {
        sum += page.bytes;
        if (sum > mostBytes_) fs::remove(page.file, error);
    }
}

}  // namespace vantrel::catalogs
