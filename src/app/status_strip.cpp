#include "app/status_strip.h"

#include <optional>
#include <vector>

#include "platform/color.h"
#include "platform/text.h"

namespace vantrel::app {

using platform::containsIgnoringCase;
using platform::Words;

namespace {

void light(platform::Button& lamp, Readiness readiness, const Words& word) {
    namespace color = platform::color;
    lamp.setCaption(word);
    lamp.setBackColor(readiness == Readiness::kReady     ? color::kDarkGreen
                      : readiness == Readiness::kTrouble ? color::kRed
                                                         : color::kButtonFace);
}

Words mountWord(const Equipment& equipment) {
    if (!equipment.mountChosen) return Words::tr("No mount");
    return equipment.mount == Readiness::kReady ? Words::tr("Mount ready") : Words::tr("Mount off");
}

Words cameraWord(const Equipment& equipment) {
    if (!equipment.cameraChosen) return Words::tr("No camera");
    switch (equipment.camera) {
        case Readiness::kReady:
            return Words::tr("Camera ready");
        case Readiness::kTrouble:
            return Words::tr("Camera failed");
        default:
            return Words::tr("Camera off");
    }
}

std::vector<std::string> linesOf(const std::string& message) {
    std::vector<std::string> lines;
    std::string line;
    for (const char c : message + '\n')
        if (c == '\n') {
            if (const std::string text = platform::trimmed(line); !text.empty()) lines.push_back(text);
            line.clear();
        } else if (c != '\r') {
            line += c;
        }
    return lines;
}

/// "Camera Error -2147: Shutter stuck" is "Camera: Shutter stuck", "Error 53: File not found" the latter
/// alone. Nothing for a line that isn't a report.
std::optional<std::string> withoutNumber(const std::string& line) {
    const auto mark = line.find("Error ");
    const auto colon = line.find(": ", mark == std::string::npos ? 0 : mark);
    if (mark == std::string::npos || colon == std::string::npos) return std::nullopt;
    const std::string number = line.substr(mark + 6, colon - mark - 6);
    if (!platform::parseNumber(number)) return std::nullopt;
    const std::string source = platform::trimmed(line.substr(0, mark));
    return (source.empty() ? "" : source + ": ") + line.substr(colon + 2);
}

}  // namespace

std::string plainSentence(const std::string& message) {
    std::string sentence;
    const std::vector<std::string> lines = linesOf(message);
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const auto report = withoutNumber(lines[i]);
        sentence += (sentence.empty() ? "" : " ") + report.value_or(lines[i]);
        if (report) ++i;  // the procedure's name follows
    }
    return sentence;
}

void StatusStrip::show(const Equipment& equipment) {
    equipment_ = equipment;
    light(panel_.cmdMountStatus, equipment.mount, mountWord(equipment));
    light(panel_.cmdCameraStatus, equipment.camera, cameraWord(equipment));
    const auto readiness = [](bool there) { return there ? Readiness::kReady : Readiness::kMissing; };
    light(panel_.cmdSolverStatus, readiness(equipment.solver),
          equipment.solver ? Words::tr("Solver ready") : Words::tr("No solver"));
    light(panel_.cmdSiteStatus, readiness(equipment.site),
          equipment.site ? Words::tr("Site set") : Words::tr("No site"));
}

void StatusStrip::keep(const std::string& message) {
    panel_.cmdLastMessage.setCaption(advised(plainSentence(message)));
    panel_.cmdLastMessage.setVisible(!panel_.cmdLastMessage.caption().empty());
}

void StatusStrip::takeBack() {
    panel_.cmdLastMessage.setVisible(false);
    panel_.cmdLastMessage.setCaption("");
}

/// What is missing is most likely why.
Words StatusStrip::advised(const std::string& sentence) const {
    if (containsIgnoringCase(sentence, "telescope link") && !equipment_.mountChosen)
        return Words::tr("No telescope is chosen. Choose one in the telescope window.");
    if (containsIgnoringCase(sentence, "telescope link") && equipment_.mount != Readiness::kReady)
        return Words::tr("%1. The mount isn't connected: connect it in the telescope window.", {sentence});
    if (containsIgnoringCase(sentence, "camera") && !equipment_.cameraChosen)
        return Words::tr("%1. No imaging software is chosen: choose one on the Set-up page.", {sentence});
    return sentence;
}

}  // namespace vantrel::app
