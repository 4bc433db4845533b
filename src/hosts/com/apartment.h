// The thread that objects of COM live in.
//
// Drivers take seconds, show windows and send messages meanwhile. So all objects belong to one thread with a
// message loop of its own (a single-threaded apartment); the program's thread gives it work and waits for
// that as it waits for servers in the network.
#pragma once

#include <functional>
#include <memory>

#include "hosts/pumped_wait.h"

namespace vantrel::hosts::com {

class Apartment {
  public:
    explicit Apartment(PumpedWait wait);
    /// Ends the thread after what it has begun. One that hangs is left behind.
    ~Apartment();
    Apartment(const Apartment&) = delete;
    Apartment& operator=(const Apartment&) = delete;

    /// Does the work there and throws what it throws. Failure 462 with "`what` doesn't answer" when it takes
    /// longer; the apartment is lost then, since nothing ends what hangs in it.
    void run(const std::string& what, platform::Milliseconds timeOut, std::function<void()> work);

    /// Does it some time, and never waits.
    void post(std::function<void()> work);

    bool isLost() const { return lost_; }

  private:
    struct Queue;
    struct Task;

    static void live(const std::shared_ptr<Queue>& queue);
    bool isHere() const;

    PumpedWait wait_;
    std::shared_ptr<Queue> queue_;
    bool lost_ = false;
};

}  // namespace vantrel::hosts::com
