#include "app/status_strip.h"

#include <optional>
#include <vector>

#include "platform/color.h"
#include "platform/text.h"

namespace vantrel::app {

using platform::containsIgnoringCase;

namespace {

void light(platform::Button& lamp, Readiness readiness, const std::string& word) {
    namespace color = platform::color;
    lamp.setCaption(word);
    lamp.setBackColor(readiness == Readiness::kReady     ? color::kDarkGreen
                      : readiness == Readiness::kTrouble ? color::kRed
                                                         : color::kButtonFace);
}

std::string word(const char* thing, Readiness readiness, bool chosen) {
    if (!chosen) return std::string("No ") + thing;
    const char* const state = readiness == Readiness::kReady     ? " ready"
                              : readiness == Readiness::kTrouble ? " failed"
                                                                 : " off";
    std::string text = thing + std::string(state);
    text.front() = static_cast<char>(text.front() - 'a' + 'A');
    return text;
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
    light(panel_.cmdMountStatus, equipment.mount, word("mount", equipment.mount, equipment.mountChosen));
    light(panel_.cmdCameraStatus, equipment.camera, word("camera", equipment.camera, equipment.cameraChosen));
    const auto readiness = [](bool there) { return there ? Readiness::kReady : Readiness::kMissing; };
    light(panel_.cmdSolverStatus, readiness(equipment.solver),
          equipment.solver ? "Solver ready" : "No solver");
    light(panel_.cmdSiteStatus, readiness(equipment.site), equipment.site ? "Site set" : "No site");
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
std::string StatusStrip::advised(const std::string& sentence) const {
    if (containsIgnoringCase(sentence, "telescope link") && !equipment_.mountChosen)
        return "No telescope is chosen. Choose one in the telescope window.";
    if (containsIgnoringCase(sentence, "telescope link") && equipment_.mount != Readiness::kReady)
        return sentence + ". The mount isn't connected: connect it in the telescope window.";
    if (containsIgnoringCase(sentence, "camera") && !equipment_.cameraChosen)
        return sentence + ". No imaging software is chosen: choose one on the Set-up page.";
    return sentence;
}

}  // namespace vantrel::app
