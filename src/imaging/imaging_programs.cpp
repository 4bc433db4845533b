#include "imaging/imaging_programs.h"

#include "imaging/ccdsoft_objects.h"
#include "imaging/maxim_objects.h"
#include "platform/text.h"

namespace vantrel::imaging {

ImagingPrograms::ImagingPrograms(platform::EventLoop& loop, platform::Background& background,
                                 const platform::FolderMap& folders, platform::DesktopWindows& desktop,
                                 platform::CameraHardware& camera, sky::CatalogSource stars)
    : stars_(std::move(stars)),
      shared_(camera),
      camera_(loop, background, shared_),
      bench_{loop, background, folders, desktop, camera_, documents_},
      maxIm_(bench_),
      ccdSoft_(bench_),
      builtIn_(bench_) {}

void ImagingPrograms::useCamera(std::shared_ptr<platform::CameraHardware> hardware,
                                ImagingCamera::Beside beside) {
    if (hardware == real_) return;
    auto next = hardware ? std::make_unique<ImagingCamera>(bench_.loop, bench_.background, *hardware,
                                                           std::move(beside))
                         : nullptr;
    builtIn_.useCamera(next ? *next : camera_);
    realCamera_ = std::move(next);
    real_ = std::move(hardware);
}

const platform::CameraHardware& ImagingPrograms::chosenCamera() const { return real_ ? *real_ : shared_; }

template <typename Object, typename Program, typename... Rest>
std::function<platform::ObjectRef()> ImagingPrograms::objectOf(Program& program, Rest... rest) {
    return [&program, rest...] {
        program.start();
        return std::make_shared<Object>(program, rest...);
    };
}

void ImagingPrograms::install(platform::ClassRegistry& classes, const std::string& folder) {
    const std::string maxIm = folder + "MaxIm.exe";
    const std::string ccdSoft = folder + "CCDSoft.exe";
    bench_.desktop.installProgram(maxIm,
                                  {[this] { maxIm_.start(); }, platform::toText(MaxImProgram::kVersion)});
    bench_.desktop.installProgram(ccdSoft, {[this] { ccdSoft_.start(); }, CCDSoftProgram::kFileVersion});

    classes.install("MaxIm.CCDCamera", {objectOf<MaxImCameraObject>(maxIm_), maxIm, "", ""});
    classes.install("MaxIm.Application", {objectOf<MaxImApplication>(maxIm_), maxIm, "", ""});
    classes.install("MaxIm.Document", {[this] {
                                           maxIm_.start();
                                           return MaxImDocument::current(maxIm_);
                                       },
                                       maxIm, "", ""});
    const std::string builtIn = folder + "Vantrel.exe";
    classes.install("Vantrel.CCDCamera", {objectOf<MaxImCameraObject>(builtIn_), builtIn, "", ""});
    classes.install("Vantrel.Application", {objectOf<MaxImApplication>(builtIn_), builtIn, "", ""});
    classes.install("Vantrel.Document", {[this] {
                                             builtIn_.start();
                                             return MaxImDocument::current(builtIn_);
                                         },
                                         builtIn, "", ""});
    classes.install("CCDSoft.Camera", {objectOf<CCDSoftCameraObject>(ccdSoft_), ccdSoft, "", ""});
    classes.install("CCDSoft.Image", {objectOf<CCDSoftImage>(ccdSoft_, stars_), ccdSoft, "", ""});
}

}  // namespace vantrel::imaging
