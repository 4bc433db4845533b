// Keeps the operator's hands off what a procedure relies on, for as long as it is under way.
//
// A measurement, a correction and a series of exposures last for minutes and read the mount, the camera and
// the operator's settings all the while. The controls that would change these under their feet are out of
// reach meanwhile, in every front; the procedure's own buttons (Stop, Next, Skip) aren't among them.
#pragma once

#include <utility>
#include <vector>

#include "platform/controls.h"

namespace vantrel::engine {

class Interlock {
  public:
    /// The controls must live as long as procedures do.
    void setControls(std::vector<platform::Control*> controls) { controls_ = std::move(controls); }

    /// The controls are out of reach while one lives.
    class Engaged {
      public:
        explicit Engaged(Interlock& interlock) : interlock_(interlock) { interlock_.change(+1); }
        ~Engaged() { interlock_.change(-1); }
        Engaged(const Engaged&) = delete;
        Engaged& operator=(const Engaged&) = delete;

      private:
        Interlock& interlock_;
    };

    /// While one lives inside an Engaged the operator may put right what stopped the procedure.
    class Lifted {
      public:
        explicit Lifted(Interlock& interlock) : interlock_(interlock) { interlock_.change(-1); }
        ~Lifted() { interlock_.change(+1); }
        Lifted(const Lifted&) = delete;
        Lifted& operator=(const Lifted&) = delete;

      private:
        Interlock& interlock_;
    };

  private:
    void change(int by);

    std::vector<platform::Control*> controls_;
    int engaged_ = 0;
};

}  // namespace vantrel::engine
