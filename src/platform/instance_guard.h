// One running instance of the program a user.
#pragma once

#include <filesystem>

namespace vantrel::platform {

class InstanceGuard {
  public:
    virtual ~InstanceGuard() = default;

    /// True when this instance may run; it stays the only one until the guard goes.
    virtual bool acquire() = 0;

    /// Brings the window of the instance that runs to the front, as far as the desktop allows it.
    virtual void activateOther() = 0;
};

/// Holds a lock on a file, which the system gives back however the program ends. A lock file that can't be
/// created keeps nobody from running.
class LockFileGuard : public InstanceGuard {
  public:
    explicit LockFileGuard(std::filesystem::path file) : file_(std::move(file)) {}
    LockFileGuard(const LockFileGuard&) = delete;
    LockFileGuard& operator=(const LockFileGuard&) = delete;
    ~LockFileGuard() override;

    bool acquire() override;
    /// A file alone reaches no window; a front that knows the desktop overrides this.
    void activateOther() override {}

  private:
    std::filesystem::path file_;
    int descriptor_ = -1;
};

}  // namespace vantrel::platform
