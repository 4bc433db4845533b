#include <csignal>

#include <gtest/gtest.h>

#include "platform/termination.h"

namespace vantrel::platform {
namespace {

bool isUsual(int signal) {
    struct sigaction now {};
    ::sigaction(signal, nullptr, &now);
    return now.sa_handler == SIG_DFL;
}

TEST(TerminationWatch, HearsOfEverySignalAndLeavesOnlyASecondInterruptToTheSystem) {
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        const TerminationWatch watch;
        EXPECT_FALSE(watch.requested());
        std::raise(signal);
        EXPECT_TRUE(watch.requested()) << signal;
        for (const int more : {SIGTERM, SIGHUP, SIGTERM}) std::raise(more);  // would end this test
        EXPECT_TRUE(isUsual(SIGINT)) << signal;
    }
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) EXPECT_TRUE(isUsual(signal)) << signal;
}

}  // namespace
}  // namespace vantrel::platform
