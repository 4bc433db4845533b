// Debian's indiserver with simulators, started for a test, heard on this machine alone, and ended with it.
// Its cameras see the stars of the built-in catalogue.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include <sys/types.h>

#include "support/temp_folder.h"

namespace vantrel::test {

class IndiServer {
  public:
    /// At a port that was free.
    explicit IndiServer(std::vector<std::string> drivers = {"indi_simulator_telescope",
                                                            "indi_simulator_ccd"});
    ~IndiServer();
    IndiServer(const IndiServer&) = delete;
    IndiServer& operator=(const IndiServer&) = delete;

    int port() const { return port_; }

    void start();
    /// At once, and its drivers with it.
    void kill();
    /// The server starts it again by itself.
    void killDriver(const std::string& driver) const;
    /// Stops it in its tracks, or lets it go on: it is connected, and says nothing.
    void freeze(bool frozen) const;

    /// What it wrote to its error output.
    std::string log() const { return contentsOf(folder_ / "log"); }

  private:
    [[noreturn]] void run() const;
    pid_t driverProcess(const std::string& driver) const;

    TempFolder folder_;  // its home, too
    std::vector<std::string> drivers_;
    int port_;
    pid_t process_ = -1;
};

}  // namespace vantrel::test
