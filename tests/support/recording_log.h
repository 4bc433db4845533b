// The message log of tests: the lines without their time.
#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "engine/ports.h"

namespace vantrel::test {

struct RecordingLog : engine::LogPort {
    void AddToLog(const std::string& text) override { lines.push_back(text); }

    bool has(const std::string& line) const { return std::count(lines.begin(), lines.end(), line) > 0; }

    std::vector<std::string> lines;
};

}  // namespace vantrel::test
