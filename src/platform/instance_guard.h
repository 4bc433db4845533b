// One running instance of the program a user.
#pragma once

#include <cstdint>
#include <filesystem>

#include "platform/paths.h"

namespace vantrel::platform {

class InstanceGuard {
  public:
    virtual ~InstanceGuard() = default;

    /// True when this instance may run; it stays the only one until the guard goes.
    virtual bool acquire() = 0;

    /// Asks the instance that runs to bring its window to the front.
    virtual void activateOther() = 0;

    /// In the instance that runs: true once after another one asked for the window.
    virtual bool activationRequested() = 0;
};

/// Holds a lock on a file, which the system gives back however the program ends; requests are a file beside
/// it. A lock file that can't be created keeps nobody from running.
class LockFileGuard : public InstanceGuard {
  public:
    explicit LockFileGuard(std::filesystem::path file) : file_(std::move(file)) {}
    LockFileGuard(const LockFileGuard&) = delete;
    LockFileGuard& operator=(const LockFileGuard&) = delete;
    ~LockFileGuard() override;

    bool acquire() override;
    void activateOther() override;
    bool activationRequested() override;

  private:
    std::filesystem::path requestFile() const { return withEnding(file_, ".activate"); }

    std::filesystem::path file_;
    std::intptr_t lock_ = -1;
};

}  // namespace vantrel::platform
