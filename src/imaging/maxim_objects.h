// The automation objects of MaxIm DL.
#pragma once

#include "imaging/maxim_program.h"

namespace vantrel::imaging {

/// "MaxIm.CCDCamera".
class MaxImCameraObject : public ProgramObject {
  public:
    explicit MaxImCameraObject(MaxImProgram& program);
    ~MaxImCameraObject() override;
    MaxImCameraObject(const MaxImCameraObject&) = delete;
    MaxImCameraObject& operator=(const MaxImCameraObject&) = delete;

  private:
    void addLink();
    void addFrame();
    void addExposure();
    void addFrameNumber(const char* name, int SubFrame::*member);

    MaxImProgram& program_;
    int run_;
};

/// "MaxIm.Application".
class MaxImApplication : public ProgramObject {
  public:
    explicit MaxImApplication(MaxImProgram& program);
};

/// "MaxIm.Document": an open image, the application's "CurrentDocument". Dead once the image was closed.
class MaxImDocument : public ProgramObject {
  public:
    MaxImDocument(MaxImProgram& program, OpenDocuments::Ref document);

    /// The image in front. Throws std::runtime_error when none is open.
    static platform::ObjectRef current(MaxImProgram& program);

  private:
    /// Throws std::runtime_error once it was closed.
    const OpenDocuments::Ref& opened() const;
    ImageDocument& document() const { return *opened(); }
    void addPixels();
    void addStretch();
    void addFile();

    const ImagingBench& bench_;
    OpenDocuments::Ref document_;
};

}  // namespace vantrel::imaging
