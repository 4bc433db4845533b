// Makes an object of a COM server that is a 32-bit library, for a 64-bit program that can't load it:
//
//     vantrel-com32 PROGID
//
// Writes one line: "object" and COM's reference to it, or "failed" and COM's number, in hexadecimal digits.
// The object lives until standard input ends. Knows nothing of the rest of Vantrel, which has 64 bits.
#include <cstdio>
#include <string>

#include <windows.h>
// "windows.h" has to come first.
#include <objbase.h>
#include <oleauto.h>
#include <shellapi.h>

namespace {

constexpr DWORD kPatience = 5000;  // milliseconds that a server has to let go of its device

HRESULT create(const wchar_t* progId, IDispatch*& object) {
    CLSID id{};
    const HRESULT failure = CLSIDFromProgID(progId, &id);
    if (FAILED(failure)) return failure;
    return CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch,
                            reinterpret_cast<void**>(&object));
}

/// What another process needs to find the object.
HRESULT refer(IDispatch* object, std::string& reference) {
    IStream* stream = nullptr;
    HRESULT failure = CreateStreamOnHGlobal(nullptr, TRUE, &stream);
    if (FAILED(failure)) return failure;
    failure = CoMarshalInterface(stream, IID_IDispatch, object, MSHCTX_LOCAL, nullptr, MSHLFLAGS_NORMAL);
    HGLOBAL memory = nullptr;
    STATSTG facts{};
    if (SUCCEEDED(failure)) failure = stream->Stat(&facts, STATFLAG_NONAME);
    if (SUCCEEDED(failure)) failure = GetHGlobalFromStream(stream, &memory);
    if (SUCCEEDED(failure)) {
        reference.assign(static_cast<const char*>(GlobalLock(memory)), facts.cbSize.LowPart);
        GlobalUnlock(memory);
    }
    stream->Release();
    return failure;
}

std::string hexadecimal(const std::string& bytes) {
    constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    for (const char byte : bytes) {
        text += kDigits[static_cast<unsigned char>(byte) >> 4];
        text += kDigits[byte & 15];
    }
    return text;
}

void tell(const std::string& line) {
    DWORD written = 0;
    WriteFile(GetStdHandle(STD_OUTPUT_HANDLE), line.data(), static_cast<DWORD>(line.size()), &written,
              nullptr);
}

DWORD WINAPI readToTheEnd(void*) {
    char ignored[64];
    DWORD count = 0;
    while (ReadFile(GetStdHandle(STD_INPUT_HANDLE), ignored, sizeof ignored, &count, nullptr) && count > 0) {
    }
    return 0;
}

DWORD WINAPI endAfterPatience(void*) {
    Sleep(kPatience);
    TerminateProcess(GetCurrentProcess(), 1);
    return 0;
}

/// The object's calls come as messages.
void serveUntilInputEnds() {
    HANDLE reader = CreateThread(nullptr, 0, readToTheEnd, nullptr, 0, nullptr);
    while (MsgWaitForMultipleObjectsEx(1, &reader, INFINITE, QS_ALLINPUT, MWMO_INPUTAVAILABLE) !=
           WAIT_OBJECT_0) {
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
    }
}

}  // namespace

int WINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR, int) {
    int count = 0;
    wchar_t** arguments = CommandLineToArgvW(GetCommandLineW(), &count);
    if (count != 2) return 2;
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    IDispatch* object = nullptr;
    std::string reference;
    HRESULT failure = create(arguments[1], object);
    if (SUCCEEDED(failure)) failure = refer(object, reference);
    if (FAILED(failure)) {
        char line[32];
        std::snprintf(line, sizeof line, "failed %08lx\n", static_cast<unsigned long>(failure));
        tell(line);
        return 1;
    }
    tell("object " + hexadecimal(reference) + "\n");
    serveUntilInputEnds();
    CreateThread(nullptr, 0, endAfterPatience, nullptr, 0, nullptr);
    object->Release();
    CoUninitialize();
    return 0;
}
