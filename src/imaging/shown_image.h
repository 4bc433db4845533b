// The image in front, as a window shows it.
#pragma once

#include <memory>
#include <optional>

#include "imaging/open_documents.h"
#include "imaging/pixel_statistics.h"
#include "imaging/tone_curve.h"

namespace vantrel::imaging {

struct ShownStretch {
    double black = 0, white = 1;  // in the image's units
    double midtone = 0.5;         // see midtonesTransfer

    bool operator==(const ShownStretch&) const = default;
    ToneCurve curve() const { return {black, white, midtone}; }
};

/// Follows the open documents. Pixels are looked at when a window asks, never while the program that changes
/// them is at it: a mark that is drawn into a large frame costs nothing here until the frame is shown.
class ShownImage {
  public:
    /// The documents must outlive this.
    explicit ShownImage(OpenDocuments& documents);

    /// The document in front; empty when there is none.
    OpenDocuments::Ref document() const { return documents_.current(); }
    /// Its pixels; empty when there are none.
    platform::ImageRef pixels() const;
    /// Of the pixels; measured once for each of them.
    const PixelStatistics& statistics();

    ShownStretch stretch();
    /// True unless the operator chose how this document is shown.
    bool automatic() const;
    /// Shows it so from now on, also after the next exposure. Black and white are kept apart, the midtone
    /// between them. Nothing happens without a document.
    void choose(ShownStretch stretch);
    void beAutomatic();

    /// Another document, other pixels or another stretch.
    platform::Signal<> changed;

  private:
    OpenDocuments& documents_;
    std::optional<double> midtone_;
    std::weak_ptr<const platform::ImageArray> measured_;  // what the statistics are of
    PixelStatistics statistics_;
    platform::Subscription following_;
};

}  // namespace vantrel::imaging
