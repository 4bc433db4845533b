// vantrel-headless: Vantrel without windows, operated by a script.

#include <cstdint>
#include <exception>
#include <iostream>

#include "headless/descriptor_lines.h"
#include "headless/headless_program.h"
#include "headless/options.h"
#include "headless/system_time.h"
#include "platform/command_line.h"
#include "platform/descriptors.h"
#include "platform/own_program.h"
#include "platform/termination.h"

namespace {

using namespace vantrel;

constexpr int kSuccess = 0;
constexpr int kFailure = 1;
constexpr int kUsage = 2;

/// A script may let the program wait for as long as it likes; nothing here is an endless wait.
constexpr platform::Milliseconds kLongestRun = std::chrono::hours{24 * 366 * 100};
constexpr std::int64_t kMostSteps = 1'000'000'000'000;

int runVirtual(const headless::Options& options, headless::CommandSource& commands,
               headless::ReplySink& replies, const platform::TerminationWatch& termination) {
    const auto start = options.start ? *options.start : *platform::parseInstant(headless::kVirtualStart);
    platform::VirtualTime time(start, kLongestRun, kMostSteps);
    headless::HeadlessProgram program(options, time, commands, replies);
    return program.run([&] { return termination.requested(); }) ? kSuccess : kFailure;
}

int runReal(const headless::Options& options, headless::DescriptorCommands& commands,
            headless::ReplySink& replies, const platform::TerminationWatch& termination) {
    const headless::HeadlessProgram* running = nullptr;
    headless::SystemTime time(options.start.value_or(headless::SystemTime::now()), [&] {
        return running != nullptr && running->wantsInput() ? commands.descriptor() : -1;
    });
    headless::HeadlessProgram program(options, time, commands, replies);
    running = &program;
    return program.run([&] { return termination.requested(); }) ? kSuccess : kFailure;
}

}  // namespace

int main(int argc, char** argv) {
    platform::outliveReaders();  // one that went away is the end of the input
    try {
        const auto options = headless::parseOptions(platform::programArguments(argc, argv));
        if (!options) return kSuccess;
        const platform::TerminationWatch termination;
        headless::DescriptorCommands commands(platform::kStandardInput);
        headless::DescriptorReplies replies(platform::kStandardOutput);
        return options->virtualTime ? runVirtual(*options, commands, replies, termination)
                                    : runReal(*options, commands, replies, termination);
    } catch (const platform::UsageError& error) {
        std::cerr << "vantrel-headless: " << error.what() << "\n(--help shows the options)\n";
        return kUsage;
    } catch (const std::exception& error) {
        std::cerr << "vantrel-headless: " << error.what() << "\n";
        return kFailure;
    }
}
