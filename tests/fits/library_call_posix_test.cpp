#include <csignal>
#include <new>
#include <string>

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include "fits/fits_error.h"
#include "fits/fits_library.h"
#include "fits/library_call.h"
#include "support/refusal.h"

namespace vantrel::fits {
namespace {

constexpr GuardLimits kLimits{64'000'000, 7};

template <typename Error, typename Call>
std::string refusalOf(Call&& call) {
    return test::refusalOf<Error>([&] { callGuarded(kLimits, call); });
}

std::string raised(int signal) {
    std::raise(signal);
    return "went on";
}

TEST(GuardedCall, AnswersOrTellsHowItEnded) {
    EXPECT_EQ(callGuarded(kLimits, [] { return std::string(1'000'000, 'x'); }), std::string(1'000'000, 'x'));
    EXPECT_EQ(callGuarded(kLimits, [] { return std::string(); }), "");
    const auto fails = [](const char* text) {
        return [text]() -> std::string { throw std::runtime_error(text); };
    };
    EXPECT_EQ(refusalOf<GuardedCallFailed>(fails("own words")), "own words");
    EXPECT_THROW(callGuarded(kLimits, fails("")), GuardedCallFailed);
    for (const int signal : {SIGSEGV, SIGFPE, SIGABRT, SIGKILL})
        EXPECT_THROW(callGuarded(kLimits, [&] { return raised(signal); }), GuardedCallCrashed) << signal;
    for (const int signal : {SIGXCPU, SIGALRM})
        EXPECT_THROW(callGuarded(kLimits, [&] { return raised(signal); }), GuardedCallTookTooLong) << signal;
    EXPECT_THROW(callGuarded(kLimits, []() -> std::string { ::_exit(0); }), GuardedCallCrashed);
}

TEST(GuardedCall, IsGivenNoMoreThanItsLimits) {
    EXPECT_EQ(callGuarded(kLimits,
                          [] {
                              rlimit time{};
                              ::getrlimit(RLIMIT_CPU, &time);
                              return std::to_string(time.rlim_cur);
                          }),
              "7");
    EXPECT_EQ(refusalOf<GuardedCallFailed>([] {
                  std::string large;
                  large.resize(80'000'000, 'x');
                  return large;
              }),
              "std::bad_alloc");
}

TEST(GuardedLibraryCall, TellsInOneLineWhatHappenedToTheFile) {
    const struct {
        void (*call)();
        const char* says;
    } cases[] = {
        {[] {}, ""},
        {[] { std::raise(SIGSEGV); }, "image.fz: the library that reads it crashed"},
        {[] { std::raise(SIGXCPU); }, "image.fz: takes longer to read than an image of its size does"},
        {[] { failFits("image.fz", "damaged"); }, "image.fz: damaged"},
        {[] { throw std::bad_alloc(); }, "image.fz: damaged: it asks for more memory than an image takes"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(test::refusalOf<FitsError>([&] { guardedLibraryCall("image.fz", kLimits, c.call); }),
                  c.says);
}

}  // namespace
}  // namespace vantrel::fits
