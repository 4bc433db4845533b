#include "platesolve/picture_desk.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "platform/sexagesimal.h"
#include "platform/text.h"

namespace vantrel::platesolve {
namespace {

using platform::Drawing;
using platform::formatNumber;
using platform::Words;

constexpr double kDegree = std::numbers::pi / 180;

std::string pair(double across, double down, const char* format, const std::string& unit = {}) {
    return formatNumber(across, format) + unit + " x " + formatNumber(down, format) + unit;
}

/// How much of the sky so many pixels show, in degrees.
double fieldOf(double pixels, double arcsecPerPixel) {
    return 2 * std::atan(std::tan(arcsecPerPixel / 3600 * kDegree) * pixels / 2) / kDegree;
}

/// Of the upper edge, from north through east: 0 with north up.
double positionAngle(const platform::SolvedPicture& solution) {
    const double fromNorth = solution.mirrored ? -solution.rollDeg : 180 - solution.rollDeg;
    const double turned = std::fmod(fromNorth + 720, 360);
    return turned < 359.995 ? turned : 0;
}

}  // namespace

PictureDesk::PictureDesk(frmSolvePicture& window, platform::PictureSolver* solver, platform::Dialogs& dialogs,
                         const platform::Clock& clock)
    : window_(window), solver_(solver), dialogs_(dialogs), clock_(clock) {
    window_.cmdChooseFile.onClick = [this] { cmdChooseFile_Click(); };
    window_.cmdSolve.onClick = [this] { cmdSolve_Click(); };
    window_.cmdStop.onClick = [this] { cmdStop_Click(); };
    window_.onUnload = [this] { Form_Unload(); };
}

PictureDesk::~PictureDesk() {
    if (solver_ != nullptr) solver_->giveUp();
}

/// Who has chosen a picture wants to know where it points.
void PictureDesk::cmdChooseFile_Click() {
    const std::string file = dialogs_.chooseFile(Words::tr("Choose a picture"));
    if (file.empty()) return;
    window_.txtFile.setText(file);
    cmdSolve_Click();
}

void PictureDesk::cmdSolve_Click() {
    constexpr double kFinest = 0.01, kCoarsest = 1000;
    const std::string file = platform::trimmed(window_.txtFile.text());
    const std::string hint = platform::trimmed(window_.txtScaleHint.text());
    const auto scale = platform::parseNumber(hint);
    if (file.empty())
        end(Words::tr("Choose a picture first"));
    else if (!hint.empty() && !(scale && *scale >= kFinest && *scale <= kCoarsest))
        end(Words::tr("The scale must be a number from 0.01 to 1000, or left empty"));
    else if (solver_ == nullptr)
        end("There is nothing here to solve pictures with");
    else
        begin(file, hint.empty() ? std::nullopt : scale);
}

void PictureDesk::begin(const std::string& file, std::optional<double> scale) {
    clear();
    begun_ = clock_.sinceStart();
    window_.cmdStop.setEnabled(true);
    window_.lblOutcome.setCaption(Words::tr("Reading the picture"));
    solver_->solve(file, scale,
                   {[this](const auto& picture) { showPicture(picture); },
                    [this](const platform::SolvedPicture& solution) { showSolution(solution); },
                    [this](const Words& why, const Words& remark) {
                        window_.lblRemark.setCaption(remark);
                        end(why);
                    }});
}

void PictureDesk::showPicture(const std::shared_ptr<const platform::ImageArray>& picture) {
    Drawing drawing;
    // Pixel centres stand at whole numbers.
    drawing.scale = {-0.5, -0.5, static_cast<double>(picture->width()) - 0.5,
                     static_cast<double>(picture->height()) - 0.5};
    drawing.photograph = picture;
    window_.picPlate.setDrawing(drawing);
    window_.lblOutcome.setCaption(Words::tr("Looking for it in the sky"));
}

void PictureDesk::showSolution(const platform::SolvedPicture& solution) {
    const auto& picture = window_.picPlate.drawing().photograph;
    window_.txtCentreRA.setText(platform::raText(solution.raHours));
    window_.txtCentreDec.setText(platform::decText(solution.decDeg));
    window_.txtScale.setText(pair(solution.scaleX, solution.scaleY, "0.0000"));
    window_.txtRoll.setText(formatNumber(solution.rollDeg, "0.00"));
    window_.txtPositionAngle.setText(formatNumber(positionAngle(solution), "0.00"));
    window_.txtField.setText(pair(fieldOf(static_cast<double>(picture->width()), solution.scaleX),
                                  fieldOf(static_cast<double>(picture->height()), solution.scaleY), "0.000"));
    const std::string matched = std::to_string(solution.stars.size());
    window_.txtMatched.setText(matched + " / " + std::to_string(solution.starsFound));
    circle(solution.stars);
    const double seconds = static_cast<double>((clock_.sinceStart() - begun_).count()) / 1000;
    const Words solved =
        Words::tr("Solved in %1 s by %2 stars, off by %3\" on average",
                  {formatNumber(seconds, "0.0"), matched, formatNumber(solution.residualArcsec, "0.00")});
    end(solution.mirrored ? Words::tr("%1; the picture is mirrored", {solved}) : solved);
    if (!solution.dated)
        window_.lblRemark.setCaption(
            Words::tr("The file tells no date: the stars are taken where they stand today"));
}

/// The brighter, the wider; the brightest with their magnitudes.
void PictureDesk::circle(const std::vector<platform::RecognisedStar>& stars) {
    constexpr std::size_t kNamed = 12;
    Drawing drawing = window_.picPlate.drawing();
    const double unit = (drawing.scale.right - drawing.scale.left) / 400;
    for (const platform::RecognisedStar& star : stars) {
        const double radius = unit * std::clamp(11 - star.magnitude, 2.0, 9.0);
        drawing.shapes.push_back(platform::Circle{star.x, star.y, radius});
        if (drawing.shapes.size() < 2 * kNamed)
            drawing.shapes.push_back(
                platform::DrawnText{star.x + radius, star.y, formatNumber(star.magnitude, "0.0")});
    }
    window_.picPlate.setDrawing(std::move(drawing));
}

void PictureDesk::cmdStop_Click() {
    solver_->giveUp();
    end(Words::tr("Search stopped"));
}

void PictureDesk::Form_Unload() {
    if (solver_ != nullptr) solver_->giveUp();
    clear();
    end("");
}

void PictureDesk::end(const Words& outcome) {
    window_.cmdStop.setEnabled(false);
    window_.lblOutcome.setCaption(outcome);
}

/// What is shown belongs to the picture at hand.
void PictureDesk::clear() {
    for (platform::TextBox* box :
         {&window_.txtCentreRA, &window_.txtCentreDec, &window_.txtScale, &window_.txtRoll,
          &window_.txtPositionAngle, &window_.txtField, &window_.txtMatched})
        box->setText("");
    window_.lblRemark.setCaption("");
    window_.picPlate.clear();
}

}  // namespace vantrel::platesolve
