#include "imaging/ccdsoft_objects.h"

#include <stdexcept>

#include "imaging/document_files.h"
#include "imaging/image_link.h"
#include "platform/image_array.h"

namespace vantrel::imaging {

using platform::Arguments;
using platform::Value;

// ---- the camera

CCDSoftCameraObject::CCDSoftCameraObject(CCDSoftProgram& program)
    : ProgramObject("CCDSoft.Camera", program), program_(program) {
    addLink();
    addFrame();
    addExposure();
    addFiles();
}

void CCDSoftCameraObject::addLink() {
    method("Connect", [this](const Arguments&) {
        program_.connect();
        return Value();
    });
    method("Disconnect", [this](const Arguments&) {
        program_.disconnect();
        return Value();
    });
    property("State", [this] {
        constexpr int kLinked = 0, kNotLinked = 5;
        return Value(program_.connected() ? kLinked : kNotLinked);
    });
}

void CCDSoftCameraObject::addFrame() {
    CCDSoftProgram::Settings& settings = program_.settings;
    constexpr int kFarOut = 1'000'000;
    cameraNumbers(settings.binX, settings.binY, "FilterIndexZeroBased", settings.filter);
    number("Frame", settings.frame, CCDSoftProgram::kLight, CCDSoftProgram::kFlat);
    flag("Subframe", settings.useSubFrame);
    number("SubframeLeft", settings.left, 0, kFarOut);
    number("SubframeTop", settings.top, 0, kFarOut);
    number("SubframeRight", settings.right, 0, kFarOut);
    number("SubframeBottom", settings.bottom, 0, kFarOut);
    number("ImageReduction", settings.reduction, CCDSoftProgram::kNoReduction, CCDSoftProgram::kAllFrames);
    flag("ScreenShutter", settings.screenShutter);
}

void CCDSoftCameraObject::addExposure() {
    CCDSoftProgram::Settings& settings = program_.settings;
    constexpr int kLongestSeries = 10'000;
    property(
        "ExposureTime", [&settings] { return Value(settings.exposureTime); },
        [&settings](const Value& value) {
            const double seconds = value.toDouble();
            if (!(seconds > 0)) throw std::runtime_error("ExposureTime must be greater than 0");
            settings.exposureTime = seconds;
        });
    flag("Asynchronous", settings.asynchronous);
    number("Series", settings.series, 1, kLongestSeries);
    flag("ToNewWindow", settings.toNewWindow);
    method("TakeImage", [this](const Arguments&) {
        takeImage();
        return Value(0);
    });
    property("IsExposureComplete", [this] { return Value(program_.complete()); });
    method("Abort", [this](const Arguments&) {
        program_.abort();
        return Value();
    });
}

void CCDSoftCameraObject::takeImage() {
    constexpr platform::Milliseconds kLook{100};
    program_.takeImages();
    if (program_.settings.asynchronous) return;
    while (!program_.complete()) program_.bench().loop.sleep(kLook);
}

void CCDSoftCameraObject::addFiles() {
    CCDSoftProgram::Settings& settings = program_.settings;
    flag("AutoSaveOn", settings.autoSave);
    number("AutoSaveFileFormat", settings.autoSaveFileFormat, 0, 0);
    const auto text = [this](const char* name, std::string& field) {
        property(
            name, [&field] { return Value(field); },
            [&field](const Value& value) { field = value.toText(); });
    };
    text("AutoSavePath", settings.autoSavePath);
    text("AutoSavePrefix", settings.autoSavePrefix);
    property("LastImageFileName", [this] { return Value(program_.lastSavedFile()); });
}

// ---- the image

CCDSoftImage::CCDSoftImage(CCDSoftProgram& program, sky::CatalogSource stars)
    : ProgramObject("CCDSoft.Image", program), bench_(program.bench()), stars_(std::move(stars)) {
    addAttaching();
    addPixels();
    addHeader();
    addFile();
}

const OpenDocuments::Ref& CCDSoftImage::opened() const {
    if (!document_) throw std::runtime_error("The object is not attached to an image");
    if (!bench_.documents.isOpen(document_)) throw std::runtime_error("The image was closed");
    return document_;
}

void CCDSoftImage::attach() {
    document_ = bench_.documents.current();
    if (!document_) throw std::runtime_error("There is no open image");
}

/// New images come to the front, so that the imager's image is the active one.
void CCDSoftImage::addAttaching() {
    for (const char* name : {"AttachToActive", "AttachToActiveImager"})
        method(name, [this](const Arguments&) {
            attach();
            return Value();
        });
    method("SetActive", [this](const Arguments&) {
        opened();
        bench_.documents.activate(document_);
        return Value();
    });
    method("Close", [this](const Arguments&) {
        opened();
        bench_.documents.close(document_);
        return Value();
    });
}

void CCDSoftImage::addPixels() {
    property("Width", [this] { return Value(static_cast<int>(document().pixels->width())); });
    property("Height", [this] { return Value(static_cast<int>(document().pixels->height())); });
    property(
        "DataArray", [this] { return Value(document().pixels); },
        [this](const Value& value) {
            opened();
            const platform::ImageRef pixels = value.toImage();
            if (!pixels || pixels->width() * pixels->height() == 0)
                throw std::runtime_error("DataArray is empty");
            bench_.documents.setPixels(document_, pixels);
        });
    property(
        "ModifiedFlag", [this] { return Value(document().modified); },
        [this](const Value& value) { document().modified = value.toBool(); });
}

void CCDSoftImage::addHeader() {
    indexedProperty(
        "FITSKeyword",
        [this](const Arguments& arguments) {
            return headerValue(document(), argument(arguments, 0).toText());
        },
        [this](const Value& value, const Arguments& arguments) {
            setHeaderValue(document(), argument(arguments, 0).toText(), value);
        });
    property(
        "ScaleInArcsecondsPerPixel", [this] { return Value(scale_); },
        [this](const Value& value) {
            const double scale = value.toDouble();
            if (!(scale > 0)) throw std::runtime_error("ScaleInArcsecondsPerPixel must be greater than 0");
            scale_ = scale;
        });
    method("InsertWCS", [this](const Arguments&) {
        insertWcs();
        return Value();
    });
}

void CCDSoftImage::insertWcs() {
    const OpenDocuments::Ref image = opened();
    std::vector<fits::FitsCard> cards;
    bench_.background.await([&, asked = *image, scale = scale_, stars = stars_()] {
        cards = linkImage(asked, scale, *stars, bench_.loop.clock());
    });
    for (fits::FitsCard& card : cards) setHeaderCard(*image, std::move(card));
}

void CCDSoftImage::addFile() {
    property(
        "Path", [this] { return Value(path_); }, [this](const Value& value) { path_ = value.toText(); });
    method("Save", [this](const Arguments&) {
        if (path_.empty()) throw std::runtime_error("The image has no path to be saved under");
        saveInBackground(opened(), bench_, path_);
        return Value();
    });
}

}  // namespace vantrel::imaging
