#include "platform/termination.h"

#include <csignal>

#include <gtest/gtest.h>

namespace vantrel::platform {
namespace {

bool isUsual(int signal) {
    struct sigaction now {};
    ::sigaction(signal, nullptr, &now);
    return now.sa_handler == SIG_DFL;
}

TEST(TerminationWatch, HearsOfTheFirstSignalAndLeavesTheNextToTheSystem) {
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        const TerminationWatch watch;
        EXPECT_FALSE(watch.requested());
        std::raise(signal);
        EXPECT_TRUE(watch.requested()) << signal;
        EXPECT_TRUE(isUsual(signal)) << signal;
    }
    EXPECT_TRUE(isUsual(SIGTERM));
}

}  // namespace
}  // namespace vantrel::platform
