#include "fits/fits_writing.h"

#include <algorithm>
#include <fstream>
#include <stdexcept>
#include <system_error>

#include "fits/fits_error.h"
#include "fits/fits_library.h"
#include "fits/fits_units.h"
#include "fits/header_wcs.h"
#include "platform/durable_file.h"
#include "platform/own_program.h"

namespace vantrel::fits {

namespace {

/// Writes beside the target and takes its place when complete. The operator knows the target's name only:
/// what goes wrong is told of that.
template <typename Write>
void replaceFile(const std::filesystem::path& target, Write&& write) {
    std::filesystem::path partial = target;
    partial += std::string(".").append(std::to_string(platform::processNumber())).append(".part");
    std::error_code error;
    std::filesystem::remove(partial, error);
    try {
        write(partial);
    } catch (...) {
        std::filesystem::remove(partial, error);
        throw;
    }
    platform::takePlace(partial, target, error);
    if (error) {
        std::error_code ignored;
        std::filesystem::remove(partial, ignored);
        failFits(target, error.message());
    }
}

void writeCard(LibraryFile& file, const FitsCard& card) {
    const char* keyword = card.keyword.c_str();
    const char* comment = card.comment.empty() ? nullptr : card.comment.c_str();
    int* status = file.status();
    if (const auto* flag = std::get_if<bool>(&card.value)) {
        int value = *flag ? 1 : 0;
        fits_update_key(file.get(), TLOGICAL, keyword, &value, comment, status);
    } else if (const auto* whole = std::get_if<std::int64_t>(&card.value)) {
        LONGLONG value = *whole;
        fits_update_key(file.get(), TLONGLONG, keyword, &value, comment, status);
    } else if (const auto* real = std::get_if<double>(&card.value)) {
        fits_update_key_dbl(file.get(), keyword, *real, -15, comment, status);
    } else {
        fits_update_key_str(file.get(), keyword, std::get<std::string>(card.value).c_str(), comment, status);
    }
    file.check(*status);
}

void removeOldWcs(LibraryFile& file) {
    constexpr int kHighestOrder = 9;  // of SIP polynomials
    std::vector<std::string> keywords = {"CDELT1", "CDELT2", "CROTA1", "CROTA2",  "PC1_1",  "PC1_2",
                                         "PC2_1",  "PC2_2",  "EPOCH",  "LONPOLE", "LATPOLE"};
    for (const std::string name : {"A", "B", "AP", "BP"}) {
        keywords.push_back(name + "_ORDER");
        keywords.push_back(name + "_DMAX");
        for (int p = 0; p <= kHighestOrder; ++p)
            for (int q = 0; p + q <= kHighestOrder; ++q)
                keywords.push_back(name + "_" + std::to_string(p) + "_" + std::to_string(q));
    }
    for (const std::string& keyword : keywords) {
        int status = 0;
        fits_delete_key(file.get(), keyword.c_str(), &status);
    }
    fits_clear_errmsg();
}

/// Writes all units of a packed file into the file `partial`, which is to become `target`.
void writeUnpacked(FitsFile& source, const std::filesystem::path& partial,
                   const std::filesystem::path& target) {
    FitsUnits units(source);
    while (units.next()) {
    }
    if (!source.reach(units.end())) failFits(source.path(), "ends before its last pixel");
    std::ofstream out(partial, std::ios::binary | std::ios::trunc);
    std::vector<char> piece(1024 * 1024);
    for (std::size_t at = 0; out && at < units.end(); at += piece.size()) {
        piece.resize(std::min(piece.size(), units.end() - at));
        source.read(at, std::as_writable_bytes(std::span(piece)));
        out.write(piece.data(), static_cast<std::streamsize>(piece.size()));
    }
    out.close();
    if (!out) failFits(target, "can't be written");
}

void copyFile(const std::filesystem::path& source, const std::filesystem::path& partial,
              const std::filesystem::path& target) {
    std::error_code error;
    std::filesystem::copy_file(source, partial, error);
    if (error)
        failFits(source, "can't be copied to \"" + target.parent_path().string() + "\": " + error.message());
    std::filesystem::permissions(partial, std::filesystem::perms::owner_write,
                                 std::filesystem::perm_options::add, error);
}

void changeWcs(LibraryFile& file, const FitsImageUnit& image, const sky::TangentWcs& wcs,
               const std::optional<sky::SipDistortion>& distortion) {
    file.moveTo(image);
    removeOldWcs(file);
    const auto height = static_cast<double>(image.layout.height);
    for (const FitsCard& card : wcsCards(wcs, height, image.unit.header.isBottomUp(), distortion))
        writeCard(file, card);
    file.close();
}

/// What the library takes to move the data behind a header that grows.
GuardLimits limitsFor(const std::filesystem::path& file) {
    constexpr std::size_t kBytes = 256 * 1024 * 1024;
    constexpr std::size_t kMovedPerSecond = 20'000'000;
    return {kBytes, static_cast<unsigned>(10 + std::filesystem::file_size(file) / kMovedPerSecond)};
}

struct FitsPixelType {
    int image;  // in the file
    int data;   // in memory
};
FitsPixelType fitsPixelType(const std::uint16_t*) { return {USHORT_IMG, TUSHORT}; }
FitsPixelType fitsPixelType(const std::int32_t*) { return {LONG_IMG, TINT}; }
FitsPixelType fitsPixelType(const float*) { return {FLOAT_IMG, TFLOAT}; }

template <typename Pixel>
void writePixels(const std::filesystem::path& path, std::size_t width, std::size_t height,
                 std::span<const Pixel> pixels, const std::vector<FitsCard>& cards) {
    if (pixels.size() != width * height || pixels.empty())
        throw std::invalid_argument("pixels and size disagree");
    const FitsPixelType type = fitsPixelType(pixels.data());
    replaceFile(path, [&](const std::filesystem::path& partial) {
        auto file = LibraryFile::create(partial, path);
        LONGLONG sizes[2] = {static_cast<LONGLONG>(width), static_cast<LONGLONG>(height)};
        file.check(fits_create_imgll(file.get(), type.image, 2, sizes, file.status()));
        for (const FitsCard& card : cards) writeCard(file, card);
        // CFITSIO takes a pointer to non-const, but only reads from it.
        file.check(fits_write_img(file.get(), type.data, 1, static_cast<LONGLONG>(pixels.size()),
                                  const_cast<Pixel*>(pixels.data()), file.status()));
        file.close();
    });
}

}  // namespace

void writeFits(const std::filesystem::path& path, std::size_t width, std::size_t height,
               std::span<const std::uint16_t> pixels, const std::vector<FitsCard>& cards) {
    writePixels(path, width, height, pixels, cards);
}

void writeFits(const std::filesystem::path& path, const platform::ImageArray& image,
               const std::vector<FitsCard>& cards) {
    std::visit(
        [&](const auto& pixels) {
            writePixels(path, image.width(), image.height(), std::span(pixels), cards);
        },
        image.pixels());
}

void writeWcs(const std::filesystem::path& source, const std::filesystem::path& target,
              const sky::TangentWcs& wcs, const std::optional<sky::SipDistortion>& distortion) {
    std::error_code ignored;
    FitsFile bytes(source);
    if (bytes.isUnpacked() && std::filesystem::equivalent(source, target, ignored)) {
        failFits(target, "compressed by gzip, its header can't be changed");
    }
    const FitsImageUnit image = findImage(bytes);
    replaceFile(target, [&](const std::filesystem::path& partial) {
        if (bytes.isUnpacked())
            writeUnpacked(bytes, partial, target);
        else
            copyFile(source, partial, target);
        guardedLibraryCall(source, limitsFor(partial), [&] {
            auto file = LibraryFile::change(partial, target);
            changeWcs(file, image, wcs, distortion);
        });
    });
}

}  // namespace vantrel::fits
