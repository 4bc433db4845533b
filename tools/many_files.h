// Many images at once: each is solved by a process of its own, as many at a time as there are cores.
#pragma once

#include <string>
#include <vector>

namespace vantrel::tools {

/// Runs this program once for each file with these options before it. What each prints comes out in the
/// files' order, behind a line with the file's name unless `plain`; how far it is stands on standard error,
/// where that is a terminal. Returns the highest exit status.
int solveMany(const std::vector<std::string>& options, const std::vector<std::string>& files, bool plain);

}  // namespace vantrel::tools
