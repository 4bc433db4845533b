// What setting up a server writes into the registry.
#pragma once

#include <filesystem>
#include <string>

#include "platform/win32_calls.h"

namespace vantrel::test {

enum class ServerKind { kProgram, kLibrary, kLibraryOf32Bits };

/// For all users: Wine doesn't look up classes of a single one.
void registerClass(const std::string& progId, const GUID& id, ServerKind kind,
                   const std::filesystem::path& file);

/// An entry of the drivers' platform, in its 32-bit view.
void registerDriver(const std::string& progId, const std::string& description);

}  // namespace vantrel::test
