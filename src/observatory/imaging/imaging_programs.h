// The observatory's imaging: the camera, the open images, and the two programs that show them.
#pragma once

#include "observatory/imaging/ccdsoft_program.h"
#include "observatory/imaging/maxim_program.h"
#include "platform/class_registry.h"

namespace vantrel::observatory {

class ImagingPrograms {
  public:
    /// All that is given must outlive this.
    ImagingPrograms(platform::EventLoop& loop, const platform::FolderMap& folders,
                    platform::DesktopWindows& desktop, PictureSource pictures, CatalogSource stars);

    /// Registers the classes, with servers in the folder (which ends with a backslash), and the programs
    /// behind these. Creating an object starts its program.
    void install(platform::ClassRegistry& classes, const std::string& folder);

    ImagingCamera& camera() { return camera_; }
    OpenDocuments& documents() { return documents_; }
    const OpenDocuments& documents() const { return documents_; }
    MaxImProgram& maxIm() { return maxIm_; }
    CCDSoftProgram& ccdSoft() { return ccdSoft_; }

  private:
    template <typename Object, typename Program, typename... Rest>
    static std::function<platform::ObjectRef()> objectOf(Program& program, Rest... rest);

    CatalogSource stars_;
    OpenDocuments documents_;
    ImagingCamera camera_;
    ImagingBench bench_;
    MaxImProgram maxIm_;
    CCDSoftProgram ccdSoft_;
};

}  // namespace vantrel::observatory
