// Both imaging programs with one open picture, as marking and star detection see them.
#pragma once

#include "correction/open_image.h"
#include "platform/class_registry.h"
#include "platform/dispatch_object.h"
#include "platform/image_array.h"
#include "platform/recording_host.h"

namespace vantrel::test {

struct Picture {
    platform::ImageRef pixels;
    double stretchMax = 50'000;
    bool modified = false;
};

class FakeDocument : public platform::DispatchObject {
  public:
    explicit FakeDocument(Picture& picture) : DispatchObject("MaxIm.Document") {
        property("XSize", [&] { return static_cast<std::int64_t>(picture.pixels->width()); });
        property("YSize", [&] { return static_cast<std::int64_t>(picture.pixels->height()); });
        property("StretchMax", [&] { return picture.stretchMax; });
        property(
            "ImageArray", [&] { return picture.pixels; },
            [&](const platform::Value& value) { picture.pixels = value.toImage(); });
    }
};

class FakeApplication : public platform::DispatchObject {
  public:
    explicit FakeApplication(Picture& picture) : DispatchObject("MaxIm.Application") {
        property("AutofocusStatus", [] { return 0; });
        property("CurrentDocument",
                 [&picture]() -> platform::ObjectRef { return std::make_shared<FakeDocument>(picture); });
    }
};

class FakeCCDSoftImage : public platform::DispatchObject {
  public:
    explicit FakeCCDSoftImage(Picture& picture) : DispatchObject("CCDSoft.Image") {
        for (const char* member : {"AttachToActive", "SetActive"})
            method(member, [](const platform::Arguments&) { return platform::Value(); });
        property("Width", [&] { return static_cast<std::int64_t>(picture.pixels->width()); });
        property("Height", [&] { return static_cast<std::int64_t>(picture.pixels->height()); });
        property(
            "DataArray", [&] { return picture.pixels; },
            [&](const platform::Value& value) { picture.pixels = value.toImage(); });
        property(
            "ModifiedFlag", [&] { return picture.modified; },
            [&](const platform::Value& value) { picture.modified = value.toBool(); });
    }
};

struct OpenPicture {
    explicit OpenPicture(std::string program = "MaxIm") : imagingSoftware(std::move(program)) {
        install<FakeApplication>("MaxIm.Application");
        install<FakeCCDSoftImage>("CCDSoft.Image");
    }

    void show(platform::ImageArray image) {
        picture.pixels = std::make_shared<platform::ImageArray>(std::move(image));
    }

    template <typename Object>
    void install(const std::string& progId) {
        platform::AutomationClass installed;
        installed.create = [this] { return std::make_shared<Object>(picture); };
        registry.install(progId, installed);
    }

    /// From now on.
    void fail(const std::string& object, const std::string& member, long after = 0) {
        platform::MemberFault fault;
        fault.object = object;
        fault.member = member;
        fault.error = {7, object, "out of order"};
        fault.after = after;
        host.inject(fault);
    }

    /// "create MaxIm.Application", "get XSize", ...: every use since the last look.
    std::vector<std::string> uses() {
        std::vector<std::string> texts;
        for (const auto& entry : host.takeJournal("*"))
            texts.push_back(entry.kind + " " + (entry.kind == "create" ? entry.object : entry.member));
        return texts;
    }

    std::string imagingSoftware;
    Picture picture;
    platform::ClassRegistry registry;
    platform::RecordingHost host{registry};
    correction::OpenImage image{host, [this] { return imagingSoftware; }};
};

}  // namespace vantrel::test
