// A file packed by gzip (RFC 1952), unpacked into memory.
#pragma once

#include <cstddef>
#include <filesystem>
#include <memory>

#include "fits/raw_file.h"

struct gzFile_s;

namespace vantrel::fits {

/// Unpacks from the beginning on and no further than is asked for: what a small file unpacks to behind the
/// last byte that is of interest costs nothing.
class GzipUnpacking {
  public:
    /// The path is for messages. Throws FitsError without memory.
    GzipUnpacking(const std::filesystem::path& path, const RawFile& packed);

    /// Unpacks until there are so many bytes; false when the file holds fewer. Throws FitsError when it is
    /// damaged, and without unpacking anything for more bytes than a file of its size can hold, or than any
    /// camera's image has.
    bool reach(std::size_t bytes);

    /// What has been unpacked.
    const RawFile& unpacked() const { return memory_; }

  private:
    struct Close {
        void operator()(gzFile_s* stream) const;
    };

    void unpackMore();

    std::filesystem::path path_;
    std::size_t packedBytes_;
    std::unique_ptr<gzFile_s, Close> stream_;
    RawFile memory_;
    std::size_t bytes_ = 0;
    bool ended_ = false;
};

}  // namespace vantrel::fits
