#include "fits/gzip_unpacking.h"

#include <cerrno>
#include <string>
#include <system_error>
#include <vector>

#include <zlib.h>

#include "fits/fits_error.h"

namespace vantrel::fits {

namespace {

/// Deflated data (RFC 1951) take at least a byte for 1032 of theirs.
constexpr std::size_t kMostInflation = 1032;
constexpr unsigned kPiece = 256 * 1024;

[[noreturn]] void fail(const std::filesystem::path& path, int error) {
    failFits(path, std::generic_category().message(error));
}

int descriptorOf(const std::filesystem::path& path, const RawFile& packed) {
    try {
        return packed.bytes().libraryDescriptor();
    } catch (const std::system_error& error) {
        failFits(path, error.code().message());
    }
}

gzFile_s* opened(const std::filesystem::path& path, const RawFile& packed) {
    // Without memory for its own part the library leaves the descriptor open; nothing else goes on then
    // either.
    gzFile_s* const stream = ::gzdopen(descriptorOf(path, packed), "rb");
    if (stream == nullptr) fail(path, ENOMEM);
    ::gzbuffer(stream, kPiece);
    return stream;
}

}  // namespace

void GzipUnpacking::Close::operator()(gzFile_s* stream) const { ::gzclose(stream); }

GzipUnpacking::GzipUnpacking(const std::filesystem::path& path, const RawFile& packed)
    : path_(path),
      packedBytes_(packed.size()),
      stream_(opened(path, packed)),
      memory_(RawFile::inMemory(path)) {}

bool GzipUnpacking::reach(std::size_t bytes) {
    if (bytes > RawFile::kMostInMemory) failFits(path_, "the image is too large");
    if (bytes / kMostInflation > packedBytes_)
        failFits(path_, "claims to hold more than a file of its size can");
    while (bytes_ < bytes && !ended_) unpackMore();
    return bytes_ >= bytes;
}

void GzipUnpacking::unpackMore() {
    std::vector<std::byte> piece(kPiece);
    const int got = ::gzread(stream_.get(), piece.data(), kPiece);
    if (got < 0) {
        int error = Z_OK;
        ::gzerror(stream_.get(), &error);
        if (error == Z_ERRNO) fail(path_, errno);
        if (error != Z_BUF_ERROR) failFits(path_, "damaged");  // else it was cut off
    }
    ended_ = got <= 0;
    if (ended_) return;
    piece.resize(static_cast<std::size_t>(got));
    memory_.append(piece);
    bytes_ += piece.size();
}

}  // namespace vantrel::fits
