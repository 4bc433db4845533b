#include "qt/unattended_run.h"

#include <stdexcept>

#include "app/message_log.h"

namespace vantrel::qt {
namespace {

platform::Button& buttonOf(const platform::Screen& screen, const std::string& path) {
    auto* const button = dynamic_cast<platform::Button*>(screen.findControl(path));
    if (button == nullptr) throw std::logic_error("no button " + path);
    return *button;
}

}  // namespace

UnattendedRun::UnattendedRun(Program& program, platform::EventLoop& loop, std::ostream& out)
    : program_(program),
      loop_(loop),
      out_(out),
      run_(buttonOf(program.screen(), "frmMain.cmdRun")),
      next_(buttonOf(program.screen(), "frmMain.cmdNext")),
      skip_(buttonOf(program.screen(), "frmMain.cmdSkip")) {
    subscriptions_ = {
        program.application().log().lineAdded.subscribe([this](const std::string& line) { read(line); }),
        run_.changed.subscribe([this] { over_ = over_ || (running_ && run_.enabled()); }),
        next_.changed.subscribe([this] { loop_.post([this] { answer(); }); }),
    };
}

void UnattendedRun::begin() {
    program_.application().start();
    running_ = run_.click();
    // A run that a question stops, or that never began, is over as well.
    if (!running_ || run_.enabled()) over_ = true;
}

void UnattendedRun::read(const std::string& line) {
    out_ << line << std::endl;
    const auto says = [&line](const char* text) { return line.find(text) != std::string::npos; };
    if (says("Error Amplitude = ")) reported_ = true;
    if (says("Polar Align Error Calculation Failed")) failed_ = true;
}

/// Skip declines the correction; questions of failed runs have only Next.
void UnattendedRun::answer() {
    if (over_ || !next_.enabled()) return;
    if (skip_.enabled())
        skip_.click();
    else
        next_.click();
}

void UnattendedDialogs::messageBox(const std::string& title, const platform::Words& text, Icon /*icon*/,
                                   Buttons /*buttons*/) {
    out_ << title << ": " << text.english() << std::endl;
}

}  // namespace vantrel::qt
