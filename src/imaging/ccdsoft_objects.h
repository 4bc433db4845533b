// The automation objects of CCDSoft.
#pragma once

#include "imaging/ccdsoft_program.h"
#include "sky/star_catalog.h"

namespace vantrel::imaging {

/// "CCDSoft.Camera".
class CCDSoftCameraObject : public ProgramObject {
  public:
    explicit CCDSoftCameraObject(CCDSoftProgram& program);

  private:
    void addLink();
    void addFrame();
    void addExposure();
    void addFiles();
    void takeImage();

    CCDSoftProgram& program_;
};

/// "CCDSoft.Image": after one of the "Attach..." members, an open image. Dead once the image was closed.
class CCDSoftImage : public ProgramObject {
  public:
    /// "InsertWCS" matches the image with these stars.
    CCDSoftImage(CCDSoftProgram& program, sky::CatalogSource stars);

  private:
    /// Throws std::runtime_error unless it is attached to an open one.
    const OpenDocuments::Ref& opened() const;
    ImageDocument& document() const { return *opened(); }
    void attach();
    void insertWcs();
    void addAttaching();
    void addPixels();
    void addHeader();
    void addFile();

    const ImagingBench& bench_;
    sky::CatalogSource stars_;
    OpenDocuments::Ref document_;
    std::string path_;
    double scale_ = 0;  // arcseconds per pixel
};

}  // namespace vantrel::imaging
