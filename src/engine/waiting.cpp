#include "engine/waiting.h"

#include <cmath>

namespace vantrel::engine {

void WaitSeconds(platform::EventLoop& loop, double seconds) {
    constexpr platform::Milliseconds kStep{100};  // so soon the program's end is noticed
    double left = seconds;
    do {
        loop.yield();
        loop.sleep(kStep);
        left -= 0.1;
    } while (left > 0.1 && !loop.ending());
    loop.yield();
    if (left > 0 && !loop.ending()) loop.sleep(platform::Milliseconds{std::llround(left * 1000)});
    loop.yield();
}

}  // namespace vantrel::engine
