#include "imaging/maxim_objects.h"

#include <stdexcept>

#include "imaging/document_files.h"
#include "platform/image_array.h"

namespace vantrel::imaging {

using platform::Arguments;
using platform::ObjectRef;
using platform::Value;

// ---- the camera

MaxImCameraObject::MaxImCameraObject(MaxImProgram& program)
    : ProgramObject(program.classPrefix() + ".CCDCamera", program), program_(program), run_(program.run()) {
    program_.clientCame();
    addLink();
    addFrame();
    addExposure();
}

MaxImCameraObject::~MaxImCameraObject() { program_.clientLeft(run_); }

void MaxImCameraObject::addLink() {
    property(
        "LinkEnabled", [this] { return Value(program_.connected()); },
        [this](const Value& value) { value.toBool() ? program_.connect() : program_.disconnect(); });
    flag("DisableAutoShutdown", program_.settings.disableAutoShutdown);
}

void MaxImCameraObject::addFrame() {
    const auto camera = [this]() -> const platform::CameraFacts& {
        return program_.bench().camera.get().facts();
    };
    cameraNumbers(program_.settings.binX, program_.settings.binY, "Filter", program_.settings.filter);
    property("MaxBinX", [camera] { return Value(camera().maxBinX); });
    property("MaxBinY", [camera] { return Value(camera().maxBinY); });
    property("CameraXSize", [camera] { return Value(static_cast<int>(camera().width)); });
    property("CameraYSize", [camera] { return Value(static_cast<int>(camera().height)); });
    addFrameNumber("StartX", &SubFrame::left);
    addFrameNumber("StartY", &SubFrame::top);
    addFrameNumber("NumX", &SubFrame::width);
    addFrameNumber("NumY", &SubFrame::height);
    method("SetFullFrame", [this](const Arguments&) {
        program_.settings.subFrame.reset();
        return Value();
    });
}

/// In binned pixels; whether the frame fits is looked at when it is exposed.
void MaxImCameraObject::addFrameNumber(const char* name, int SubFrame::*member) {
    property(
        name, [this, member] { return Value(program_.frame().*member); },
        [this, member](const Value& value) {
            SubFrame frame = program_.frame();
            frame.*member = value.toInt();
            program_.settings.subFrame = frame;
        });
}

void MaxImCameraObject::addExposure() {
    method("Expose", [this](const Arguments& arguments) {
        const double seconds = argument(arguments, 0).toDouble();
        const bool light = arguments.size() < 2 || arguments[1].toBool();
        if (arguments.size() > 2) put("Filter", arguments[2]);
        program_.expose(seconds, light);
        return Value(true);
    });
    property("ImageReady", [this] { return Value(program_.imageReady()); });
    method("AbortExposure", [this](const Arguments&) {
        program_.requireConnected();
        program_.bench().camera.get().abort();
        return Value();
    });
    method("SaveImage", [this](const Arguments& arguments) {
        const OpenDocuments::Ref shown = program_.bench().documents.current();
        if (!shown) throw std::runtime_error("There is no image to save");
        saveInBackground(shown, program_.bench(), argument(arguments, 0).toText());
        return Value(true);
    });
}

// ---- the application

MaxImApplication::MaxImApplication(MaxImProgram& program)
    : ProgramObject(program.classPrefix() + ".Application", program) {
    property("Version", [] { return Value(MaxImProgram::kVersion); });
    property("AutofocusStatus", [] { return Value(0); });  // no focuser, nothing to report
    property("CurrentDocument", [&program] { return Value(MaxImDocument::current(program)); });
    method("CloseAll", [&program](const Arguments&) {
        OpenDocuments& documents = program.bench().documents;
        while (const OpenDocuments::Ref shown = documents.current()) documents.close(shown);
        return Value();
    });
    method("Quit", [&program](const Arguments&) {
        program.quit();
        return Value();
    });
}

// ---- the document

MaxImDocument::MaxImDocument(MaxImProgram& program, OpenDocuments::Ref document)
    : ProgramObject(program.classPrefix() + ".Document", program),
      bench_(program.bench()),
      document_(std::move(document)) {
    addPixels();
    addStretch();
    addFile();
}

ObjectRef MaxImDocument::current(MaxImProgram& program) {
    OpenDocuments::Ref shown = program.bench().documents.current();
    if (!shown) throw std::runtime_error("There is no open image");
    return std::make_shared<MaxImDocument>(program, std::move(shown));
}

const OpenDocuments::Ref& MaxImDocument::opened() const {
    if (!bench_.documents.isOpen(document_)) throw std::runtime_error("The image was closed");
    return document_;
}

void MaxImDocument::addPixels() {
    property("XSize", [this] { return Value(static_cast<int>(document().pixels->width())); });
    property("YSize", [this] { return Value(static_cast<int>(document().pixels->height())); });
    property(
        "ImageArray", [this] { return Value(document().pixels); },
        [this](const Value& value) {
            opened();
            const platform::ImageRef pixels = value.toImage();
            if (!pixels || pixels->width() * pixels->height() == 0)
                throw std::runtime_error("ImageArray is empty");
            bench_.documents.setPixels(document_, pixels);
        });
}

void MaxImDocument::addStretch() {
    const auto end = [this](const char* name, double Stretch::*member) {
        property(
            name, [this, member] { return Value(document().shownStretch().*member); },
            [this, member](const Value& value) {
                Stretch stretch = document().shownStretch();
                stretch.*member = value.toDouble();
                bench_.documents.setStretch(document_, stretch);
            });
    };
    end("StretchMin", &Stretch::min);
    end("StretchMax", &Stretch::max);
}

void MaxImDocument::addFile() {
    property("Modified", [this] { return Value(document().modified); });
    method("SaveFile", [this](const Arguments& arguments) {
        saveInBackground(opened(), bench_, argument(arguments, 0).toText());
        return Value(true);
    });
    method("GetFITSKey", [this](const Arguments& arguments) {
        return headerValue(document(), argument(arguments, 0).toText());
    });
    method("SetFITSKey", [this](const Arguments& arguments) {
        setHeaderValue(document(), argument(arguments, 0).toText(), argument(arguments, 1));
        return Value();
    });
    method("Close", [this](const Arguments&) {
        opened();
        bench_.documents.close(document_);
        return Value();
    });
}

}  // namespace vantrel::imaging
