// The telescope that the test servers hand out, under what names.
#pragma once

#include "platform/automation.h"
#include "platform/win32_calls.h"

namespace vantrel::test {

inline constexpr const char* kProgramId = "VantrelTest.Telescope";         // served by a program
inline constexpr const char* kLibraryId = "VantrelTestLibrary.Telescope";  // by a library
inline constexpr const char* kLibraryOf32BitsId = "VantrelTestLibrary32.Telescope";
inline constexpr GUID kProgramClass = {0x6e7a1d11, 0x4c1b, 0x4b0e, {0x9a, 0x11, 0x20, 0, 0, 0, 0, 1}};
inline constexpr GUID kLibraryClass = {0x6e7a1d11, 0x4c1b, 0x4b0e, {0x9a, 0x11, 0x20, 0, 0, 0, 0, 2}};
inline constexpr GUID kLibraryOf32BitsClass = {0x6e7a1d11, 0x4c1b, 0x4b0e, {0x9a, 0x11, 0x20, 0, 0, 0, 0, 3}};

platform::ObjectRef testTelescope();

}  // namespace vantrel::test
