#include "catalogs/catalog_file.h"

#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "sky/star_catalog.h"

namespace vantrel::catalogs {

namespace {

[[noreturn]] void unreadable(const std::filesystem::path& path, int error) {
    throw sky::CatalogError(path.string() + " can't be read: " + std::generic_category().message(error));
}

}  // namespace

CatalogFile::CatalogFile(std::filesystem::path path) : path_(std::move(path)) {
    descriptor_ = ::open(path_.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor_ < 0) unreadable(path_, errno);
    struct stat status {};
    if (::fstat(descriptor_, &status) != 0 || !S_ISREG(status.st_mode)) {
        ::close(descriptor_);
        unreadable(path_, EINVAL);
    }
    size_ = static_cast<std::uint64_t>(status.st_size);
}

CatalogFile::~CatalogFile() { ::close(descriptor_); }

void CatalogFile::read(std::uint64_t offset, std::span<unsigned char> into) const {
    while (!into.empty()) {
        const auto n = ::pread(descriptor_, into.data(), into.size(), static_cast<off_t>(offset));
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) unreadable(path_, errno);
        if (n == 0) damaged("it is cut short");
        into = into.subspan(static_cast<std::size_t>(n));
        offset += static_cast<std::uint64_t>(n);
    }
}

std::string CatalogFile::text(std::uint64_t offset, std::size_t length) const {
    if (offset > size_ || length > size_ - offset) damaged("it is cut short");
    std::string text(length, '\0');
    read(offset, {reinterpret_cast<unsigned char*>(text.data()), length});
    return text;
}

void CatalogFile::damaged(const std::string& why) const {
    throw sky::CatalogError(path_.string() + " is damaged: " + why);
}

}  // namespace vantrel::catalogs
