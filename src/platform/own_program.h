// The program that runs, as its system sees it.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace vantrel::platform {

/// The file that the program was started from; empty when the system doesn't tell.
std::filesystem::path ownProgram();

/// The number of its process.
unsigned long processNumber();

/// What it was called with, without its own name. Prepares standard input and output, too, where the system
/// would change line ends in them.
std::vector<std::string> programArguments(int count, char** texts);

/// A reader of standard output who goes away is a failed write, nothing worse.
void outliveReaders();

/// Asks for the memory that an image takes at once, in large pages where the system has them, and keeps it:
/// page by page it would take longer to get than to fill.
void takeMemoryAtOnce();

}  // namespace vantrel::platform
