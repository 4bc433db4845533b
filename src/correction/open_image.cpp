#include "correction/open_image.h"

namespace vantrel::correction {
namespace {

constexpr double kCCDSoftMark = 2147483000.0;

bool answers(const platform::ObjectRef& object, const char* member) {
    try {
        platform::required(object).get(member);
        return true;
    } catch (const platform::OperationError&) {
        return false;
    }
}

}  // namespace

OpenImage::OpenImage(platform::AutomationHost& host, std::function<std::string()> imagingSoftware)
    : host_(host), imagingSoftware_(std::move(imagingSoftware)) {}

OpenImage::Program OpenImage::program() const {
    const std::string name = imagingSoftware_();
    if (name == "MaxIm" || name == "BuiltIn") return Program::kMaxIm;
    return name == "CCDSoft" ? Program::kCCDSoft : Program::kNone;
}

bool OpenImage::ImagingAppIsAlive() const { return answers(application_, "AutofocusStatus"); }

bool OpenImage::ImageDocumentIsAlive() const { return answers(document_, "XSize"); }

OpenImage::Access OpenImage::access(bool bringForward) {
    const Program inUse = program();
    if (inUse == Program::kNone) throw platform::runTimeError(platform::error_number::kNoObject);
    if (inUse == Program::kCCDSoft) {
        const auto image = host_.create("CCDSoft.Image");
        image->call("AttachToActive");
        if (bringForward) image->call("SetActive");
        return {*this, Program::kCCDSoft, image};
    }
    const std::string owner = imagingSoftware_();
    if (owner != std::exchange(applicationOf_, owner)) release();
    if (!ImagingAppIsAlive())
        application_ = host_.create(owner == "BuiltIn" ? "Vantrel.Application" : "MaxIm.Application");
    if (!ImageDocumentIsAlive()) document_ = application_->get("CurrentDocument").toObject();
    return {*this, Program::kMaxIm, document_};
}

void OpenImage::release() {
    application_.reset();
    document_.reset();
    written_.reset();
}

OpenImage::Size OpenImage::Access::size() const {
    const bool maxIm = program_ == Program::kMaxIm;
    platform::AutomationObject& image = platform::required(object_);
    return {image.get(maxIm ? "XSize" : "Width").toInt(), image.get(maxIm ? "YSize" : "Height").toInt()};
}

platform::ImageRef OpenImage::Access::pixels() const {
    return platform::required(object_)
        .get(program_ == Program::kMaxIm ? "ImageArray" : "DataArray")
        .toImage();
}

void OpenImage::Access::replacePixels(const platform::ImageRef& image) const {
    if (program_ == Program::kMaxIm) {
        platform::required(object_).put("ImageArray", image);
        owner_.written_ = image;
        return;
    }
    platform::required(object_).put("DataArray", image);
    owner_.written_ = image;
    platform::required(object_).put("ModifiedFlag", true);
}

double OpenImage::Access::markValue() const {
    return program_ == Program::kMaxIm ? platform::required(object_).get("StretchMax").toDouble()
                                       : kCCDSoftMark;
}

}  // namespace vantrel::correction
