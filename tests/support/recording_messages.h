// The pop-up messages of tests: all that were shown, and the one that is open.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "engine/ports.h"

namespace vantrel::test {

struct RecordingMessages : engine::MessagePort {
    struct Shown {
        std::string text;
        double seconds;
        bool operator==(const Shown&) const = default;
        friend void PrintTo(const Shown& shown, std::ostream* out) {
            *out << '"' << shown.text << "\" for " << shown.seconds << " s";
        }
    };

    void ShowPopupMessage(const std::string& text, double seconds) override {
        shown.push_back({text, seconds});
        open = text;
        if (whileShowing) whileShowing();
    }
    void ClosePopupMessage(const std::optional<std::string>& ifItShows) override {
        if (!ifItShows || open == ifItShows) open.reset();
    }
    double displaySeconds() const override { return secondsToShow; }

    std::vector<Shown> shown;
    std::optional<std::string> open;
    double secondsToShow = 3;
    std::function<void()> whileShowing;  // what else goes on: showing a message lets events run
};

}  // namespace vantrel::test
