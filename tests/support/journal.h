// An automation journal as short texts: "put Connected True", "call SlewToCoordinatesAsync 3 45".
#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "platform/recording_host.h"

namespace vantrel::test {

inline std::string asText(const platform::JournalEntry& entry) {
    std::string text = entry.kind == "create" ? entry.kind : entry.kind + " " + entry.member;
    for (const platform::Value& argument : entry.arguments) text += " " + argument.toText();
    return text;
}

/// What was done with the class since the last look; gets are left out unless asked for.
inline std::vector<std::string> actionsOn(platform::RecordingHost& host, const std::string& progId,
                                          bool withGets = false) {
    std::vector<std::string> texts;
    for (const auto& entry : host.takeJournal(progId))
        if (withGets || entry.kind != "get") texts.push_back(asText(entry));
    return texts;
}

inline long usesOf(platform::RecordingHost& host, const std::string& progId, const std::string& text) {
    const auto texts = actionsOn(host, progId, true);
    return std::count(texts.begin(), texts.end(), text);
}

}  // namespace vantrel::test
