#include <cerrno>

#include "platform/mapped_file.h"
#include "platform/win32_calls.h"

namespace vantrel::platform {

MappedFile::MappedFile(const std::filesystem::path& path, bool /*readAll*/) {
    const Handle file(::CreateFileW(path.c_str(), GENERIC_READ,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file) failCall(::GetLastError(), path.string());
    LARGE_INTEGER size{};
    if (::GetFileType(file.get()) != FILE_TYPE_DISK || ::GetFileSizeEx(file.get(), &size) == 0)
        throw std::system_error(EINVAL, std::generic_category(), path.string());
    size_ = static_cast<std::size_t>(size.QuadPart);
    if (size_ == 0) return;
    const Handle mapping(::CreateFileMappingW(file.get(), nullptr, PAGE_READONLY, 0, 0, nullptr));
    if (!mapping) failCall(::GetLastError(), path.string());
    data_ = static_cast<const std::byte*>(::MapViewOfFile(mapping.get(), FILE_MAP_READ, 0, 0, 0));
    if (data_ == nullptr) failCall(::GetLastError(), path.string());
}

MappedFile::~MappedFile() {
    if (data_ != nullptr) ::UnmapViewOfFile(data_);
}

}  // namespace vantrel::platform
