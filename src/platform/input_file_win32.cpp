#include <cstdint>
#include <utility>

#include <fcntl.h>
#include <io.h>

#include "platform/input_file.h"
#include "platform/win32_calls.h"

namespace vantrel::platform {
namespace {

HANDLE handleOf(std::intptr_t number) { return reinterpret_cast<HANDLE>(number); }

/// Others may do with the file whatever they like meanwhile, as they may on other systems.
constexpr DWORD kShared = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

std::intptr_t opened(const std::filesystem::path& path) {
    // A folder is opened as well, to be told from a file that isn't there.
    return reinterpret_cast<std::intptr_t>(::CreateFileW(path.c_str(), GENERIC_READ, kShared, nullptr,
                                                         OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
}

OVERLAPPED at(std::uint64_t offset) {
    OVERLAPPED place{};
    place.Offset = static_cast<DWORD>(offset);
    place.OffsetHigh = static_cast<DWORD>(offset >> 32U);
    return place;
}

DWORD piece(std::size_t bytes) { return static_cast<DWORD>(std::min<std::size_t>(bytes, 64U << 20U)); }

}  // namespace

InputFile::InputFile(std::intptr_t handle, std::filesystem::path path)
    : handle_(handle), path_(std::move(path)), temporary_(true) {}

InputFile::InputFile(const std::filesystem::path& path) : handle_(opened(path)), path_(path) {
    if (handleOf(handle_) == INVALID_HANDLE_VALUE) failCall(::GetLastError(), "open");
    BY_HANDLE_FILE_INFORMATION facts{};
    const bool disk = ::GetFileType(handleOf(handle_)) == FILE_TYPE_DISK &&
                      ::GetFileInformationByHandle(handleOf(handle_), &facts) != 0;
    if (!disk)
        kind_ = Kind::kOther;
    else if ((facts.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0)
        kind_ = Kind::kFolder;
    size_ = std::uint64_t{facts.nFileSizeHigh} << 32U | facts.nFileSizeLow;
}

InputFile InputFile::temporary() {
    wchar_t folder[MAX_PATH + 1] = L"";
    wchar_t name[MAX_PATH + 1] = L"";
    ::GetTempPathW(MAX_PATH, folder);
    if (::GetTempFileNameW(folder, L"vtl", 0, name) == 0) failCall(::GetLastError(), "temporary file");
    // What stays in the system's memory isn't written to the disk without need.
    const HANDLE handle = ::CreateFileW(name, GENERIC_READ | GENERIC_WRITE, kShared, nullptr, OPEN_EXISTING,
                                        FILE_ATTRIBUTE_TEMPORARY, nullptr);
    if (handle == INVALID_HANDLE_VALUE) failCall(::GetLastError(), "temporary file");
    return InputFile(reinterpret_cast<std::intptr_t>(handle), name);
}

InputFile::~InputFile() {
    ::CloseHandle(handleOf(handle_));
    if (temporary_) ::DeleteFileW(path_.c_str());
}

std::size_t InputFile::read(std::uint64_t offset, std::span<std::byte> out) const {
    std::size_t done = 0;
    while (done < out.size()) {
        OVERLAPPED place = at(offset + done);
        DWORD got = 0;
        if (::ReadFile(handleOf(handle_), out.data() + done, piece(out.size() - done), &got, &place) == 0) {
            if (::GetLastError() == ERROR_HANDLE_EOF) break;
            failCall(::GetLastError(), "read");
        }
        if (got == 0) break;
        done += got;
    }
    return done;
}

void InputFile::append(std::span<const std::byte> bytes) {
    while (!bytes.empty()) {
        OVERLAPPED place = at(size_);
        DWORD put = 0;
        if (::WriteFile(handleOf(handle_), bytes.data(), piece(bytes.size()), &put, &place) == 0)
            failCall(::GetLastError(), "write");
        size_ += put;
        bytes = bytes.subspan(put);
    }
}

std::filesystem::path InputFile::nameToOpen() const { return path_; }

int InputFile::libraryDescriptor() const {
    // Opened anew: a duplicate would share the place that it is read at.
    const std::intptr_t own = opened(path_);
    if (handleOf(own) == INVALID_HANDLE_VALUE) failCall(::GetLastError(), "open");
    return ::_open_osfhandle(own, _O_RDONLY | _O_BINARY);
}

}  // namespace vantrel::platform
