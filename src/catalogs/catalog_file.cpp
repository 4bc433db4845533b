#include "catalogs/catalog_file.h"

#include <system_error>

#include "sky/star_catalog.h"

namespace vantrel::catalogs {

namespace {

using platform::InputFile;

[[noreturn]] void unreadable(const std::filesystem::path& path, const std::error_code& why) {
    throw sky::CatalogError(path.string() + " can't be read: " + why.message());
}

InputFile opened(const std::filesystem::path& path) {
    try {
        return InputFile(path);
    } catch (const std::system_error& error) {
        unreadable(path, error.code());
    }
}

}  // namespace

CatalogFile::CatalogFile(std::filesystem::path path) : path_(std::move(path)), file_(opened(path_)) {
    if (file_.kind() != InputFile::Kind::kRegular)
        unreadable(path_, std::make_error_code(std::errc::invalid_argument));
}

void CatalogFile::read(std::uint64_t offset, std::span<unsigned char> into) const {
    try {
        if (file_.read(offset, std::as_writable_bytes(into)) < into.size()) damaged("it is cut short");
    } catch (const std::system_error& error) {
        unreadable(path_, error.code());
    }
}

std::string CatalogFile::text(std::uint64_t offset, std::size_t length) const {
    if (offset > size() || length > size() - offset) damaged("it is cut short");
    std::string text(length, '\0');
    read(offset, {reinterpret_cast<unsigned char*>(text.data()), length});
    return text;
}

void CatalogFile::damaged(const std::string& why) const {
    throw sky::CatalogError(path_.string() + " is damaged: " + why);
}

}  // namespace vantrel::catalogs
