// Which part of an image a window shows, and how large.
#pragma once

namespace vantrel::imaging {

struct ViewPoint {
    double x = 0, y = 0;

    bool operator==(const ViewPoint&) const = default;
};

/// A part of the window that shows image and nothing else. `left` and `top` in pixels of the image, from the
/// outer edge of its first pixel; width, height and where it lies in the window in pixels of the screen.
struct ViewWindow {
    double left = 0, top = 0;
    double scale = 1;  // pixels of the screen for a pixel of the image
    int x = 0, y = 0;
    int width = 0, height = 0;

    bool operator==(const ViewWindow&) const = default;
};

/// Zoom and position of the view. An image that is smaller than the window lies in its middle, a larger one
/// can't be drawn off its edge. Begins, and goes on after `fit` at every new size, with the whole image.
///
/// Points of the image: pixel centres stand at whole numbers, from 0. Points of the window: pixels of the
/// screen from its upper left corner.
class ImageViewport {
  public:
    /// An image of another size is shown as a whole; one of the same size keeps the view.
    void setImageSize(int width, int height);
    /// Keeps the middle where it is.
    void setWindowSize(int width, int height);

    double scale() const { return scale_; }
    bool fitted() const { return fitted_; }
    /// The whole image, as large as the window allows.
    void fit();
    /// The nearest larger or smaller of the usual scales. The image's point under `anchor` stays there.
    void zoomIn(ViewPoint anchor) { zoomTo(nextScale(1), anchor); }
    void zoomOut(ViewPoint anchor) { zoomTo(nextScale(-1), anchor); }
    void zoomTo(double scale, ViewPoint anchor);
    /// Draws the image this far over the window.
    void pan(double dx, double dy);
    ViewPoint middle() const { return {windowWidth_ / 2.0, windowHeight_ / 2.0}; }

    ViewPoint toImage(ViewPoint window) const;
    ViewPoint toWindow(ViewPoint image) const;

    /// Of no width or height when there is nothing to show.
    ViewWindow window() const;

  private:
    double fittingScale() const;
    double nextScale(int direction) const;
    void keepInside();

    int imageWidth_ = 0, imageHeight_ = 0;
    int windowWidth_ = 0, windowHeight_ = 0;
    double scale_ = 1;
    double left_ = 0, top_ = 0;  // the window's corner in pixels of the image, from the image's corner
    bool fitted_ = true;
};

}  // namespace vantrel::imaging
