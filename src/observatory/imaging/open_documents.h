// The images that an imaging program holds open, and which of them it shows.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "observatory/sky/fits_header.h"
#include "platform/automation.h"
#include "platform/signal.h"

namespace vantrel::observatory {

/// One open image. Its pixels contain the marks that were written into it.
struct ImageDocument {
    std::string title;
    platform::ImageRef pixels;  // row 0 is the top; never empty
    std::vector<FitsCard> header;
};

/// Documents are handed out shared: one that was closed stays valid for whoever still holds it.
class OpenDocuments {
  public:
    using Ref = std::shared_ptr<ImageDocument>;

    /// Opens the image in front of the others.
    Ref open(ImageDocument document);
    /// Puts the picture into the document in front, or opens one when there is none.
    Ref replaceCurrent(ImageDocument document);
    /// Replaces an open document's pixels.
    void setPixels(const Ref& document, platform::ImageRef pixels);
    void close(const Ref& document);

    /// The document in front; empty when none is open.
    Ref current() const { return documents_.empty() ? nullptr : documents_.back(); }
    const std::vector<Ref>& all() const { return documents_; }

    /// Tells whenever another document is in front, or its pixels are others.
    [[nodiscard]] platform::Subscription onChange(platform::Signal<>::Listener listener) {
        return changed_.subscribe(std::move(listener));
    }

  private:
    std::vector<Ref> documents_;  // the foremost last
    platform::Signal<> changed_;
};

}  // namespace vantrel::observatory
