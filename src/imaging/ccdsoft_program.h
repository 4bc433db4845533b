// "CCDSoft": its window and the settings of its camera.
#pragma once

#include "imaging/imaging_program.h"

namespace vantrel::imaging {

class CCDSoftProgram : public ImagingProgram {
  public:
    static constexpr const char* kFileVersion = "5.00.205";

    explicit CCDSoftProgram(const ImagingBench& bench) : ImagingProgram("CCDSoft", bench) {}

    enum FrameKind { kLight = 1, kBias = 2, kDark = 3, kFlat = 4 };
    enum Reduction { kNoReduction = 0, kAutoDark = 1, kAllFrames = 2 };

    struct Settings {
        double exposureTime = 1;  // seconds
        int frame = kLight;
        int binX = 1, binY = 1;
        int filter = 0;
        bool useSubFrame = false;
        int left = 0, top = 0, right = 0, bottom = 0;  // unbinned pixels; all 0: the middle of the sensor
        bool asynchronous = false;
        int series = 1;
        int reduction = kNoReduction;  // the flat frames of kAllFrames are even: it comes to kAutoDark
        bool toNewWindow = true;
        bool screenShutter = false;
        bool autoSave = false;
        int autoSaveFileFormat = 0;  // FITS, the only one
        std::string autoSavePath = "C:";
        std::string autoSavePrefix = "Image";
    };
    Settings settings;

    /// Starts the series with these settings. Throws std::runtime_error when that is impossible.
    void takeImages();
    void abort();
    /// The series is over. Throws the failure it ended with.
    bool complete() const;
    const std::string& lastSavedFile() const { return lastSavedFile_; }

  protected:
    platform::WindowId openWindows() override;
    void reset() override;

  private:
    ExposureOrder order() const;
    ExposureOrder::Frame frameKind() const;
    SubFrame subFrame() const;
    void expose();
    void take(Picture picture);

    int toCome_ = 0;  // images of the series
    int saved_ = 0;
    std::string lastSavedFile_;
};

}  // namespace vantrel::imaging
