#include "engine/waiting.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "platform/queued_event_loop.h"

namespace vantrel::engine {
namespace {

using platform::Milliseconds;

constexpr double kForEver = std::numeric_limits<double>::infinity();

TEST(WaitSeconds, WaitsInStepsAndEndsWithTheProgram) {
    const struct {
        double seconds;
        int endsAfter;  // ms; when the program begins to end, 0: never
        int waited;     // ms
    } rows[] = {
        {0, 0, 100},      {0.05, 0, 100},   {0.25, 0, 250},
        {-3, 0, 100},     {65, 0, 65'000},  {kForEver, 1050, 1100},
        {1e308, 10, 100}, {0.25, 150, 200}, {std::nan(""), 0, 100},
    };
    for (const auto& row : rows) {
        platform::VirtualTime time(platform::Instant{});
        platform::QueuedEventLoop loop(time);
        platform::TimerHandle end;
        if (row.endsAfter > 0)
            end = loop.after(Milliseconds{row.endsAfter}, [&loop] { loop.setEnding(true); });
        WaitSeconds(loop, row.seconds);
        EXPECT_EQ(time.sinceStart(), Milliseconds{row.waited}) << row.seconds << " s";
    }
}

}  // namespace
}  // namespace vantrel::engine
