// The image that the imaging program shows, for reading and for marking.
#pragma once

#include <functional>
#include <string>
#include <utility>

#include "platform/automation.h"

namespace vantrel::correction {

/// The image that is open in the imaging program in use. Objects of MaxIm DL are kept and created
/// anew when they no longer answer; of the second a new one is made for every access. All operations throw
/// OperationError when the program fails.
class OpenImage {
  public:
    /// The second argument tells which program is in use: "MaxIm", "CCDSoft", "BuiltIn", which is spoken to
    /// like the first, or anything else for none.
    OpenImage(platform::AutomationHost& host, std::function<std::string()> imagingSoftware);

    enum class Program { kNone, kMaxIm, kCCDSoft };
    Program program() const;

    struct Size {
        int width = 0, height = 0;
    };

    /// One access: the image's size and pixels as they are now, and the way back.
    class Access {
      public:
        Size size() const;
        platform::ImageRef pixels() const;
        void replacePixels(const platform::ImageRef& image) const;
        /// What a marked pixel is set to.
        double markValue() const;

      private:
        friend class OpenImage;
        Access(OpenImage& owner, Program program, platform::ObjectRef object)
            : owner_(owner), program_(program), object_(std::move(object)) {}
        OpenImage& owner_;
        Program program_;
        platform::ObjectRef object_;
    };

    /// `bringForward` also makes CCDSoft's image the active one. Failure 91 when no program is in
    /// use.
    Access access(bool bringForward = true);

    /// The pixels that were written last, once: what the operator has before him with the marks in it. Asks
    /// no program. Empty when nothing was written since.
    platform::ImageRef takeWritten() { return std::exchange(written_, nullptr); }

    bool ImagingAppIsAlive() const;
    bool ImageDocumentIsAlive() const;
    void release();

  private:
    platform::AutomationHost& host_;
    std::function<std::string()> imagingSoftware_;
    std::string applicationOf_;  // the program that the objects belong to
    platform::ObjectRef application_;
    platform::ObjectRef document_;
    platform::ImageRef written_;
};

}  // namespace vantrel::correction
