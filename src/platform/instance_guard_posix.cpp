#include <cerrno>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include "platform/instance_guard.h"

namespace vantrel::platform {

LockFileGuard::~LockFileGuard() {
    if (lock_ >= 0) ::close(static_cast<int>(lock_));
}

bool LockFileGuard::acquire() {
    if (lock_ >= 0) return true;
    std::error_code ignored;
    if (file_.has_parent_path()) std::filesystem::create_directories(file_.parent_path(), ignored);
    const int descriptor = ::open(file_.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (descriptor < 0) return true;
    if (::flock(descriptor, LOCK_EX | LOCK_NB) == 0) {
        lock_ = descriptor;
        activationRequested();  // a request to an instance that is gone
        return true;
    }
    const bool heldByAnother = errno == EWOULDBLOCK;
    ::close(descriptor);
    return !heldByAnother;
}

void LockFileGuard::activateOther() {
    // A request that can't be written leaves the window where it is.
    const int request = ::open(requestFile().c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | O_NONBLOCK, 0600);
    if (request >= 0) ::close(request);
}

bool LockFileGuard::activationRequested() {
    std::error_code ignored;
    return std::filesystem::remove(requestFile(), ignored);
}

}  // namespace vantrel::platform
