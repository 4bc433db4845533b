#include "platform/whole_file.h"

#include <algorithm>
#include <span>
#include <system_error>

#include "platform/input_file.h"

namespace vantrel::platform {
namespace {

[[noreturn]] void fail(const std::filesystem::path& file, const std::error_code& error,
                       const char* why = "") {
    throw std::system_error(error, "Can't read " + file.string() + why);
}

/// What the call throws is told of the file.
template <typename Call>
auto named(const std::filesystem::path& file, Call&& call) {
    try {
        return call();
    } catch (const std::system_error& error) {
        fail(file, error.code());
    }
}

}  // namespace

std::string contentsOf(const std::filesystem::path& file, std::size_t mostBytes) {
    const InputFile input = named(file, [&] { return InputFile(file); });
    if (input.kind() == InputFile::Kind::kFolder) fail(file, std::make_error_code(std::errc::is_a_directory));
    if (input.kind() != InputFile::Kind::kRegular)
        fail(file, std::make_error_code(std::errc::invalid_argument), ", which is no regular file");

    std::string contents;
    for (;;) {
        constexpr std::size_t kPiece = 65536;
        const std::size_t before = contents.size();
        contents.resize(std::min(before + kPiece, mostBytes + 1));
        const auto room = std::as_writable_bytes(std::span(contents).subspan(before));
        const std::size_t got = named(file, [&] { return input.read(before, room); });
        contents.resize(before + got);
        if (contents.size() > mostBytes) fail(file, std::make_error_code(std::errc::file_too_large));
        if (got == 0) return contents;
    }
}

}  // namespace vantrel::platform
