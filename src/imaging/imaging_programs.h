// Imaging: the open images, the two programs that show them, and the built-in camera program, which drives
// real cameras as well.
#pragma once

#include <memory>

#include "imaging/ccdsoft_program.h"
#include "imaging/maxim_program.h"
#include "platform/class_registry.h"
#include "sky/star_catalog.h"

namespace vantrel::imaging {

class ImagingPrograms {
  public:
    /// All that is given must outlive this. The camera is everybody's, unless the built-in camera program is
    /// given another.
    ImagingPrograms(platform::EventLoop& loop, platform::Background& background,
                    const platform::FolderMap& folders, platform::DesktopWindows& desktop,
                    platform::CameraHardware& camera, sky::CatalogSource stars);

    /// Registers the classes, with servers in the folder (which ends with a backslash), and the programs
    /// behind these. Creating an object starts its program.
    void install(platform::ClassRegistry& classes, const std::string& folder);

    ImagingCamera& camera() { return camera_; }
    OpenDocuments& documents() { return documents_; }
    const OpenDocuments& documents() const { return documents_; }
    /// The camera of the built-in camera program from now on, and what is known of its pictures beside;
    /// nothing: everybody's.
    void useCamera(std::shared_ptr<platform::CameraHardware> hardware, ImagingCamera::Beside beside = {});
    /// The built-in camera program's, as it says of itself.
    const platform::CameraHardware& chosenCamera() const;
    MaxImProgram& maxIm() { return maxIm_; }
    CCDSoftProgram& ccdSoft() { return ccdSoft_; }

  private:
    template <typename Object, typename Program, typename... Rest>
    static std::function<platform::ObjectRef()> objectOf(Program& program, Rest... rest);

    sky::CatalogSource stars_;
    OpenDocuments documents_;
    platform::CameraHardware& shared_;
    ImagingCamera camera_;
    ImagingBench bench_;
    MaxImProgram maxIm_;
    CCDSoftProgram ccdSoft_;
    BuiltInCameraProgram builtIn_;
    std::shared_ptr<platform::CameraHardware> real_;  // nothing: the shared camera is used
    std::unique_ptr<ImagingCamera> realCamera_;
};

}  // namespace vantrel::imaging
