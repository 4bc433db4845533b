#include <fstream>

#include "platform/instance_guard.h"
#include "platform/win32_calls.h"

namespace vantrel::platform {

LockFileGuard::~LockFileGuard() {
    if (lock_ >= 0) ::CloseHandle(reinterpret_cast<HANDLE>(lock_));
}

bool LockFileGuard::acquire() {
    if (lock_ >= 0) return true;
    std::error_code ignored;
    if (file_.has_parent_path()) std::filesystem::create_directories(file_.parent_path(), ignored);
    // Shared with nobody: that is the lock.
    const HANDLE handle = ::CreateFileW(file_.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_ALWAYS,
                                        FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE) return ::GetLastError() != ERROR_SHARING_VIOLATION;
    lock_ = reinterpret_cast<std::intptr_t>(handle);
    activationRequested();  // a request to an instance that is gone
    return true;
}

void LockFileGuard::activateOther() {
    // A request that can't be written leaves the window where it is.
    std::ofstream request(requestFile(), std::ios::app);
}

bool LockFileGuard::activationRequested() {
    std::error_code ignored;
    return std::filesystem::remove(requestFile(), ignored);
}

}  // namespace vantrel::platform
