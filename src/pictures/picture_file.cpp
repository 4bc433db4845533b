#include "pictures/picture_file.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <fstream>
#include <string>
#include <string_view>

#include "fits/library_call.h"
#include "pictures/picture_sink.h"

namespace vantrel::pictures {

namespace {

using fits::failFits;
using fits::FitsImage;
using fits::RawFile;

constexpr std::array<std::string_view, 24> kRawEndings = {
    ".3fr", ".arw", ".cr2", ".cr3", ".crw", ".dcr", ".dng", ".erf", ".iiq", ".kdc", ".mef", ".mos",
    ".mrw", ".nef", ".nrw", ".orf", ".pef", ".raf", ".rw2", ".rwl", ".sr2", ".srf", ".srw", ".x3f"};

bool isRawEnding(const std::filesystem::path& path) {
    std::string ending = path.extension().string();
    std::ranges::transform(ending, ending.begin(), [](unsigned char c) { return std::tolower(c); });
    return std::ranges::find(kRawEndings, ending) != kRawEndings.end();
}

/// What the libraries may take for the largest of pictures.
constexpr fits::GuardLimits kLimits{.bytes = 3'000'000'000, .seconds = 60};

FitsImage readInOwnProcess(const std::filesystem::path& path,
                           void (*read)(const std::filesystem::path&, PictureSink&)) {
    RawFile pixels = RawFile::inMemory(path);
    fits::guardedLibraryCall(path, kLimits, [&] {
        PictureSink sink(pixels);
        try {
            read(path, sink);
        } catch (const PictureError& e) {
            failFits(path, e.what());
        }
    });
    PictureHead facts;
    pixels.read(0, std::as_writable_bytes(std::span(&facts, 1)));
    std::vector<float> values(facts.width * facts.height);
    pixels.read(sizeof facts, std::as_writable_bytes(std::span(values)));
    fits::FitsHeader header;
    if (facts.filters[0] != 0) header.add({"BAYERPAT", std::string(facts.filters.data())});
    if (facts.date[0] != 0) header.add({"DATE-OBS", std::string(facts.date.data())});
    return {facts.width, facts.height, std::move(values), std::move(header)};
}

}  // namespace

PictureKind kindOf(const std::filesystem::path& path) {
    std::array<char, 8> first{};
    std::ifstream(path, std::ios::binary).read(first.data(), first.size());
    const std::string_view bytes(first.data(), first.size());
    if (isRawEnding(path)) return PictureKind::kRaw;
    if (bytes.starts_with("\xFF\xD8\xFF")) return PictureKind::kJpeg;
    if (bytes.starts_with("\x89PNG\r\n\x1A\n")) return PictureKind::kPng;
    for (const std::string_view tiff : {std::string_view("II\x2A\0", 4), std::string_view("MM\0\x2A", 4),
                                        std::string_view("II\x2B\0", 4), std::string_view("MM\0\x2B", 4)})
        if (bytes.starts_with(tiff)) return PictureKind::kTiff;
    return PictureKind::kFits;
}

FitsImage openPicture(const std::filesystem::path& path) {
    switch (kindOf(path)) {
        case PictureKind::kJpeg:
            return readInOwnProcess(path, readJpeg);
        case PictureKind::kPng:
            return readInOwnProcess(path, readPng);
        case PictureKind::kTiff:
            return readInOwnProcess(path, readTiff);
        case PictureKind::kRaw:
            return readInOwnProcess(path, readRaw);
        case PictureKind::kFits:
            break;
    }
    return FitsImage::open(path);
}

}  // namespace vantrel::pictures
