// What the "Solve a Picture" window does. It needs neither mount nor camera nor site.
#pragma once

#include <optional>

#include "platesolve/frm_solve_picture.h"
#include "platform/dialogs.h"
#include "platform/event_loop.h"
#include "platform/picture_solver.h"

namespace vantrel::platesolve {

class PictureDesk {
  public:
    /// Takes over the window's events. Without a solver every picture is refused.
    PictureDesk(frmSolvePicture& window, platform::PictureSolver* solver, platform::Dialogs& dialogs,
                const platform::Clock& clock);
    ~PictureDesk();
    PictureDesk(const PictureDesk&) = delete;
    PictureDesk& operator=(const PictureDesk&) = delete;

  private:
    void cmdChooseFile_Click();
    void cmdSolve_Click();
    void cmdStop_Click();
    void Form_Unload();

    void begin(const std::string& file, std::optional<double> scale);
    void showPicture(const std::shared_ptr<const platform::ImageArray>& picture);
    void showSolution(const platform::SolvedPicture& solution);
    void circle(const std::vector<platform::RecognisedStar>& stars);
    void end(const platform::Words& outcome);
    void clear();

    frmSolvePicture& window_;
    platform::PictureSolver* solver_;
    platform::Dialogs& dialogs_;
    const platform::Clock& clock_;
    platform::Milliseconds begun_{0};
};

}  // namespace vantrel::platesolve
