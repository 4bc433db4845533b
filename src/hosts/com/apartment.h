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
    /// longer. Nothing ends what hangs there: until it returns by itself all other work fails at once.
    void run(const std::string& what, platform::Milliseconds timeOut, std::function<void()> work);

    /// Does it some time, and never waits.
    void post(std::function<void()> work);

    bool hangs() const;

  private:
    struct Queue;
    struct Task;

    static void live(const std::shared_ptr<Queue>& queue);
    bool isHere() const;

    PumpedWait wait_;
    std::shared_ptr<Queue> queue_;
    std::shared_ptr<const Task> givenUp_;  // the last that wasn't waited for any longer
};

}  // namespace vantrel::hosts::com
