#include "hosts/com/library_process.h"

#include <array>
#include <charconv>
#include <string_view>
#include <vector>

#include "platform/own_program.h"

namespace vantrel::hosts::com {

namespace {

using platform::Handle;

// What the process says, in hexadecimal digits: how others find the object, or COM's number for why there is
// none.
constexpr std::string_view kObject = "object ";
constexpr std::string_view kFailed = "failed ";

constexpr const char* kCannotStart = "vantrel-com32 can't be started";

struct Pipe {
    Handle read, write;
};

/// Of its ends the child gets one.
Pipe makePipe(const Handle Pipe::*childsEnd) {
    HANDLE read = nullptr, write = nullptr;
    if (::CreatePipe(&read, &write, nullptr, 0) == 0) platform::failCall(::GetLastError(), kCannotStart);
    Pipe pipe{Handle(read), Handle(write)};
    ::SetHandleInformation((pipe.*childsEnd).get(), HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT);
    return pipe;
}

/// Starts a program that inherits these two handles and no others.
void start(std::wstring commandLine, HANDLE input, HANDLE output) {
    std::array<HANDLE, 2> inherited{input, output};
    SIZE_T size = 0;
    ::InitializeProcThreadAttributeList(nullptr, 1, 0, &size);
    std::vector<std::byte> room(size);
    const auto list = reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(room.data());
    ::InitializeProcThreadAttributeList(list, 1, 0, &size);
    ::UpdateProcThreadAttribute(list, 0, PROC_THREAD_ATTRIBUTE_HANDLE_LIST, inherited.data(),
                                sizeof inherited, nullptr, nullptr);
    STARTUPINFOEXW how{};
    how.StartupInfo.cb = sizeof how;
    how.StartupInfo.dwFlags = STARTF_USESTDHANDLES;
    how.StartupInfo.hStdInput = input;
    how.StartupInfo.hStdOutput = output;
    how.lpAttributeList = list;
    PROCESS_INFORMATION what{};
    const BOOL started =
        ::CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, TRUE, EXTENDED_STARTUPINFO_PRESENT,
                         nullptr, nullptr, &how.StartupInfo, &what);
    const DWORD failure = ::GetLastError();
    ::DeleteProcThreadAttributeList(list);
    if (started == 0) platform::failCall(failure, kCannotStart);
    ::AllowSetForegroundWindow(what.dwProcessId);  // a driver's dialogs come before our windows
    ::CloseHandle(what.hThread);
    ::CloseHandle(what.hProcess);
}

std::vector<unsigned char> bytesOf(std::string_view digits) {
    std::vector<unsigned char> bytes(digits.size() / 2);
    for (std::size_t i = 0; i < bytes.size(); ++i)
        std::from_chars(digits.data() + 2 * i, digits.data() + 2 * i + 2, bytes[i], 16);
    return bytes;
}

HRESULT objectFrom(const std::vector<unsigned char>& reference, IDispatch*& object) {
    IStream* stream = nullptr;
    HRESULT failure = ::CreateStreamOnHGlobal(nullptr, TRUE, &stream);
    if (FAILED(failure)) return failure;
    failure = stream->Write(reference.data(), static_cast<ULONG>(reference.size()), nullptr);
    if (SUCCEEDED(failure)) failure = stream->Seek({}, STREAM_SEEK_SET, nullptr);
    if (SUCCEEDED(failure))
        failure = ::CoUnmarshalInterface(stream, IID_IDispatch, reinterpret_cast<void**>(&object));
    stream->Release();
    return failure;
}

}  // namespace

LibraryProcess::LibraryProcess(const std::string& progId) {
    const auto program = platform::ownProgram().parent_path() / "vantrel-com32.exe";
    Pipe input = makePipe(&Pipe::read), output = makePipe(&Pipe::write);
    start(L"\"" + program.native() + L"\" " + platform::wide(progId), input.read.get(), output.write.get());
    input_ = std::move(input.write);
    output_ = std::move(output.read);
}

std::string LibraryProcess::firstLine() {
    std::string line;
    char next = 0;
    DWORD count = 0;
    while (::ReadFile(output_.get(), &next, 1, &count, nullptr) != 0 && count == 1 && next != '\n')
        line += next;
    return line;
}

HRESULT LibraryProcess::takeObject(IDispatch*& object) {
    const std::string line = firstLine();
    if (line.starts_with(kObject)) return objectFrom(bytesOf(line.substr(kObject.size())), object);
    if (!line.starts_with(kFailed)) return CO_E_SERVER_EXEC_FAILURE;  // it died in the server
    unsigned failure = 0;
    std::from_chars(line.data() + kFailed.size(), line.data() + line.size(), failure, 16);
    return static_cast<HRESULT>(failure);
}

}  // namespace vantrel::hosts::com
