// What the operator is told where no window can be opened.
#pragma once

namespace vantrel::qt {

/// While one lives, the toolkit's failure to reach a display ends the program with one line on the terminal
/// and EXIT_FAILURE; by itself it would abort. To be alive while QApplication is constructed. What the
/// toolkit says otherwise meanwhile, it says when this goes. One object at a time.
class DisplayWatch {
  public:
    DisplayWatch();
    ~DisplayWatch();
    DisplayWatch(const DisplayWatch&) = delete;
    DisplayWatch& operator=(const DisplayWatch&) = delete;
};

}  // namespace vantrel::qt
