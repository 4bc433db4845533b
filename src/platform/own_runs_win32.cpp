#include <algorithm>
#include <cstdio>

#include <io.h>

#include "platform/input_file.h"
#include "platform/own_program.h"
#include "platform/own_runs.h"
#include "platform/win32_calls.h"

namespace vantrel::platform {
namespace {

constexpr DWORD kCrashed = 0xC0000000U;  // what the system ends processes with begins there

/// As the other end takes command lines apart.
std::wstring quoted(const std::wstring& argument) {
    std::wstring text = L"\"";
    std::size_t backslashes = 0;
    for (const wchar_t c : argument) {
        if (c == L'"') text.append(backslashes + 1, L'\\');
        backslashes = c == L'\\' ? backslashes + 1 : 0;
        text += c;
    }
    return text.append(backslashes, L'\\') + L'"';
}

}  // namespace

struct OwnRuns::Run {
    InputFile output = InputFile::temporary();
    Handle process;
};

OwnRuns::OwnRuns() = default;
OwnRuns::~OwnRuns() = default;

void OwnRuns::start(std::size_t number, const std::vector<std::string>& arguments) {
    Run& run = runs_[number];
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    const Handle output(::CreateFileW(run.output.nameToOpen().c_str(), GENERIC_WRITE,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, &inherited,
                                      OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    std::wstring line = quoted(ownProgram().native());
    for (const std::string& argument : arguments) line += L" " + quoted(wide(argument));
    STARTUPINFOW how{};
    how.cb = sizeof how;
    how.dwFlags = STARTF_USESTDHANDLES;
    how.hStdInput = ::GetStdHandle(STD_INPUT_HANDLE);
    how.hStdOutput = output.get();
    how.hStdError = ::GetStdHandle(STD_ERROR_HANDLE);
    PROCESS_INFORMATION what{};
    if (::CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &how, &what) ==
        0) {
        const DWORD failure = ::GetLastError();
        runs_.erase(number);
        failCall(failure, "no further process");
    }
    ::CloseHandle(what.hThread);
    run.process = Handle(what.hProcess);
}

std::size_t OwnRuns::running() const {
    return static_cast<std::size_t>(std::count_if(runs_.begin(), runs_.end(), [](const auto& entry) {
        return static_cast<bool>(entry.second.process);
    }));
}

OwnRuns::Ended OwnRuns::waitForOne() {
    std::vector<HANDLE> processes;
    std::vector<std::size_t> numbers;
    for (const auto& [number, run] : runs_)
        if (run.process && processes.size() < MAXIMUM_WAIT_OBJECTS) {
            processes.push_back(run.process.get());
            numbers.push_back(number);
        }
    const DWORD which =
        ::WaitForMultipleObjects(static_cast<DWORD>(processes.size()), processes.data(), FALSE, INFINITE);
    if (which >= processes.size()) failCall(::GetLastError(), "no process to wait for");
    const std::size_t number = numbers[which];
    DWORD status = 0;
    ::GetExitCodeProcess(processes[which], &status);
    runs_.at(number).process = Handle();
    return {number, status < kCrashed ? std::optional(static_cast<int>(status)) : std::nullopt};
}

void OwnRuns::copyOutput(std::size_t number) {
    const auto run = runs_.find(number);
    if (run == runs_.end()) return;
    std::vector<std::byte> buffer(4096);
    std::uint64_t done = 0;
    while (const std::size_t got = run->second.output.read(done, buffer)) {
        std::fwrite(buffer.data(), 1, got, stdout);
        done += got;
    }
    std::fflush(stdout);
    runs_.erase(run);
}

bool isWatched() { return ::_isatty(::_fileno(stderr)) != 0; }

}  // namespace vantrel::platform
