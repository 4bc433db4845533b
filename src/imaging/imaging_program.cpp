#include "imaging/imaging_program.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "platform/text.h"

namespace vantrel::imaging {

using platform::Arguments;
using platform::Value;

void ImagingProgram::start() {
    if (running()) return;
    ++run_;
    reset();
    mainWindow_ = openWindows();
}

void ImagingProgram::quit() {
    if (!running()) return;
    disconnect();
    bench_.desktop.close(mainWindow_);
    mainWindow_ = 0;
}

void ImagingProgram::connect() {
    bench_.camera.get().connect(name_);
    showConnection();
}

void ImagingProgram::disconnect() {
    bench_.camera.get().disconnect(name_);
    showConnection();
}

void ImagingProgram::useCamera(ImagingCamera& camera) {
    if (&camera == &bench_.camera.get()) return;
    disconnect();
    bench_.camera = camera;
}

void ImagingProgram::requireConnected() const {
    if (!connected()) throw std::runtime_error("The camera is not connected");
}

void ImagingProgram::showPicture(Picture picture, bool newWindow) {
    imaging::showPicture(bench_.documents, std::move(picture), newWindow);
}

void showPicture(OpenDocuments& documents, Picture picture, bool newWindow) {
    ImageDocument document{"Image", std::move(picture.pixels), std::move(picture.header)};
    if (newWindow)
        documents.open(std::move(document));
    else
        documents.replaceCurrent(std::move(document));
}

Value ProgramObject::get(const std::string& member, const Arguments& arguments) {
    requireLife();
    return DispatchObject::get(member, arguments);
}

void ProgramObject::put(const std::string& member, const Value& value, const Arguments& arguments) {
    requireLife();
    DispatchObject::put(member, value, arguments);
}

Value ProgramObject::call(const std::string& member, const Arguments& arguments) {
    requireLife();
    return DispatchObject::call(member, arguments);
}

void ProgramObject::number(const std::string& name, int& field, int least, int most) {
    number(name, field, least, [most] { return most; });
}

void ProgramObject::number(const std::string& name, int& field, int least, std::function<int()> most) {
    property(
        name, [&field] { return Value(field); },
        [name, &field, least, most = std::move(most)](const Value& value) {
            const int wanted = value.toInt();
            if (wanted < least || wanted > most())
                throw std::runtime_error(name + " must be between " + std::to_string(least) + " and " +
                                         std::to_string(most()));
            field = wanted;
        });
}

void ProgramObject::cameraNumbers(int& binX, int& binY, const std::string& filterName, int& filter) {
    const auto camera = [&program = program_]() -> const platform::CameraFacts& {
        return program.bench().camera.get().facts();
    };
    number("BinX", binX, 1, [camera] { return camera().maxBinX; });
    number("BinY", binY, 1, [camera] { return camera().maxBinY; });
    number(filterName, filter, 0,
           [camera] { return std::max(0, static_cast<int>(camera().filters.size()) - 1); });
}

void ProgramObject::flag(const std::string& name, bool& field) {
    property(
        name, [&field] { return Value(field); }, [&field](const Value& value) { field = value.toBool(); });
}

void ProgramObject::requireLife() const {
    if (!programLives())
        throw platform::AutomationError(platform::error_number::kServerIsGone, className(),
                                        "The remote server machine does not exist or is unavailable");
}

}  // namespace vantrel::imaging
