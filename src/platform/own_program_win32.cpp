#include <cstdio>

#include <fcntl.h>
#include <io.h>

#include "platform/own_program.h"
#include "platform/win32_calls.h"

namespace vantrel::platform {

std::filesystem::path ownProgram() {
    std::wstring name(32'768, L'\0');  // no path is longer
    name.resize(::GetModuleFileNameW(nullptr, name.data(), static_cast<DWORD>(name.size())));
    return name;
}

unsigned long processNumber() { return ::GetCurrentProcessId(); }

std::vector<std::string> programArguments(int /*count*/, char** /*texts*/) {
    for (std::FILE* stream : {stdin, stdout, stderr}) ::_setmode(::_fileno(stream), _O_BINARY);
    // Those that main is given are in another encoding.
    int count = 0;
    wchar_t** const texts = ::CommandLineToArgvW(::GetCommandLineW(), &count);
    std::vector<std::string> arguments;
    for (int i = 1; i < count; ++i) arguments.push_back(narrow(texts[i]));
    ::LocalFree(texts);
    return arguments;
}

void outliveReaders() {}

void takeMemoryAtOnce() {}

}  // namespace vantrel::platform
