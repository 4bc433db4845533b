#include "imaging/ccdsoft_program.h"

#include <cstdio>

#include "imaging/document_files.h"
#include "platform/folder_map.h"

namespace vantrel::imaging {

platform::WindowId CCDSoftProgram::openWindows() {
    return bench_.desktop.open({"CCDSoft Version 5", "CCDSoftFrame"});
}

void CCDSoftProgram::reset() {
    settings = {};
    toCome_ = 0;
}

void CCDSoftProgram::takeImages() {
    requireConnected();
    toCome_ = settings.series;
    expose();
}

void CCDSoftProgram::abort() {
    requireConnected();
    toCome_ = 0;
    bench_.camera.get().abort();
}

bool CCDSoftProgram::complete() const {
    requireConnected();
    bench_.camera.get().requireSuccess();
    return toCome_ == 0;
}

void CCDSoftProgram::expose() {
    bench_.camera.get().start(order(), [this](Picture picture) { take(std::move(picture)); });
}

ExposureOrder CCDSoftProgram::order() const {
    ExposureOrder order;
    order.frame = frameKind();
    order.seconds = settings.frame == kBias ? 0 : settings.exposureTime;
    order.filter = settings.filter;
    order.binX = settings.binX;
    order.binY = settings.binY;
    if (settings.useSubFrame) order.part = subFrame();
    order.subtractDark = settings.reduction != kNoReduction;
    return order;
}

ExposureOrder::Frame CCDSoftProgram::frameKind() const {
    using Frame = ExposureOrder::Frame;
    switch (settings.frame) {
        case kBias:
            return Frame::kBias;
        case kDark:
            return Frame::kDark;
        case kFlat:
            return Frame::kFlat;
        default:
            return Frame::kLight;
    }
}

/// In binned pixels.
SubFrame CCDSoftProgram::subFrame() const {
    const platform::CameraFacts& sensor = bench_.camera.get().facts();
    const auto part = [](int first, int end, std::size_t all, int bin) {
        if (first == 0 && end == 0) {
            first = static_cast<int>(all) / 4;
            end = static_cast<int>(all) - first;
        }
        return std::pair(first / bin, (end - first) / bin);
    };
    const auto [left, width] = part(settings.left, settings.right, sensor.width, settings.binX);
    const auto [top, height] = part(settings.top, settings.bottom, sensor.height, settings.binY);
    return {left, top, width, height};
}

/// One picture of the series.
void CCDSoftProgram::take(Picture picture) {
    showPicture(std::move(picture), settings.toNewWindow);
    --toCome_;
    if (settings.autoSave) {
        char number[16];
        std::snprintf(number, sizeof number, ".%08d", ++saved_);
        const std::string file =
            platform::joinFolder(settings.autoSavePath, settings.autoSavePrefix + number + ".fit");
        saveDocument(*bench_.documents.current(), bench_.folders, file);
        lastSavedFile_ = file;
    }
    if (toCome_ > 0) expose();
}

}  // namespace vantrel::imaging
