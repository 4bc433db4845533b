// The images that an imaging program holds open, and which of them it shows.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "fits/fits_header.h"
#include "imaging/display_stretch.h"
#include "platform/automation.h"
#include "platform/signal.h"

namespace vantrel::imaging {

/// One open image. Its pixels contain the marks that were written into it.
struct ImageDocument {
    std::string title;
    platform::ImageRef pixels;  // row 0 is the top; never empty
    std::vector<fits::FitsCard> header;
    std::optional<Stretch> stretch = {};  // nothing: the automatic one of its pixels
    bool modified = false;                // since it was saved

    /// The chosen stretch, or the automatic one. That is measured once for each exposure: what is drawn into
    /// the pixels later is shown as the program meant it that asked for the white point before.
    const Stretch& shownStretch() const;
    mutable std::optional<Stretch> measured = {};  // the automatic one, once it was asked for
};

/// Documents are handed out shared: one that was closed stays valid for those that still hold it.
class OpenDocuments {
  public:
    using Ref = std::shared_ptr<ImageDocument>;

    /// Opens the image in front of the others.
    Ref open(ImageDocument document);
    /// Puts the picture into the document in front, or opens one when there is none. A stretch chosen for the
    /// document stays.
    Ref replaceCurrent(ImageDocument document);
    /// Replaces an open document's pixels.
    void setPixels(const Ref& document, platform::ImageRef pixels);
    /// Chooses an open document's stretch; nothing: the automatic one.
    void setStretch(const Ref& document, std::optional<Stretch> stretch);
    /// Brings an open document to the front.
    void activate(const Ref& document);
    void close(const Ref& document);

    bool isOpen(const Ref& document) const;
    /// The document in front; empty when none is open.
    Ref current() const { return documents_.empty() ? nullptr : documents_.back(); }
    const std::vector<Ref>& all() const { return documents_; }

    /// Tells whenever another document is in front, or its pixels or stretch are others.
    [[nodiscard]] platform::Subscription onChange(platform::Signal<>::Listener listener) {
        return changed_.subscribe(std::move(listener));
    }

  private:
    void tellIfShown(const Ref& document);

    std::vector<Ref> documents_;  // the foremost last
    platform::Signal<> changed_;
};

}  // namespace vantrel::imaging
