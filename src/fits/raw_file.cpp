#include "fits/raw_file.h"

#include <system_error>

#include "fits/fits_error.h"

namespace vantrel::fits {

namespace {

using platform::InputFile;

/// What the call throws is told of the file.
template <typename Call>
auto named(const std::filesystem::path& path, Call&& call) {
    try {
        return call();
    } catch (const std::system_error& error) {
        failFits(path, error.code().message());
    }
}

}  // namespace

RawFile::RawFile(const std::filesystem::path& path)
    : path_(path), file_(named(path, [&] { return InputFile(path); })) {
    if (file_.kind() != InputFile::Kind::kRegular) failFits(path, "not a file");
}

RawFile::RawFile(const std::filesystem::path& path, InMemory)
    : path_(path), file_(named(path, [] { return InputFile::temporary(); })) {}

RawFile RawFile::inMemory(const std::filesystem::path& path) { return {path, InMemory{}}; }

void RawFile::read(std::size_t offset, std::span<std::byte> out) const {
    const std::size_t got = named(path_, [&] { return file_.read(offset, out); });
    if (got < out.size()) failFits(path_, "ends before its last pixel");
}

void RawFile::append(std::span<const std::byte> bytes) {
    named(path_, [&] { file_.append(bytes); });
}

bool RawFile::isGzip() const {
    constexpr std::size_t kSmallest = 18;
    std::byte magic[2] = {};
    if (size() >= kSmallest) read(0, magic);
    return magic[0] == std::byte{0x1f} && magic[1] == std::byte{0x8b};
}

}  // namespace vantrel::fits
