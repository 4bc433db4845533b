#include "desktop/x_operator.h"

#include <QWidget>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <stdexcept>

#include <xcb/xcb.h>
#include <xcb/xtest.h>

namespace vantrel::desktop {
namespace {

struct Free {
    void operator()(void* reply) const { std::free(reply); }
};

/// What the server answered; nothing when it refused.
template <typename Reply>
std::unique_ptr<Reply, Free> owned(Reply* reply) {
    return std::unique_ptr<Reply, Free>(reply);
}

}  // namespace

XOperator::XOperator() : connection_(xcb_connect(nullptr, nullptr)) {
    if (xcb_connection_has_error(connection_) != 0) throw std::runtime_error("no X display");
    root_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data->root;
}

XOperator::~XOperator() { xcb_disconnect(connection_); }

QImage XOperator::look(const QRect& part) const {
    const auto seen = owned(xcb_get_image_reply(
        connection_,
        xcb_get_image(connection_, XCB_IMAGE_FORMAT_Z_PIXMAP, root_, static_cast<std::int16_t>(part.x()),
                      static_cast<std::int16_t>(part.y()), static_cast<std::uint16_t>(part.width()),
                      static_cast<std::uint16_t>(part.height()), ~0U),
        nullptr));
    if (!seen) return {};
    QImage image(part.size(), QImage::Format_RGB32);
    std::memcpy(image.bits(), xcb_get_image_data(seen.get()),
                static_cast<std::size_t>(xcb_get_image_data_length(seen.get())));
    return image;
}

QRect XOperator::frameOf(const QWidget& widget) const {
    auto window = static_cast<xcb_window_t>(widget.winId());
    const auto state = owned(xcb_get_window_attributes_reply(
        connection_, xcb_get_window_attributes(connection_, window), nullptr));
    if (!state || state->map_state != XCB_MAP_STATE_VIEWABLE) return {};
    for (;;) {
        const auto tree =
            owned(xcb_query_tree_reply(connection_, xcb_query_tree(connection_, window), nullptr));
        if (!tree) return {};
        if (tree->parent == root_) break;
        window = tree->parent;
    }
    const auto frame =
        owned(xcb_get_geometry_reply(connection_, xcb_get_geometry(connection_, window), nullptr));
    if (!frame) return {};
    return {frame->x, frame->y, frame->width + 2 * frame->border_width,
            frame->height + 2 * frame->border_width};
}

void XOperator::moveTo(QPoint place) {
    xcb_test_fake_input(connection_, XCB_MOTION_NOTIFY, 0, XCB_CURRENT_TIME, root_,
                        static_cast<std::int16_t>(place.x()), static_cast<std::int16_t>(place.y()), 0);
    xcb_flush(connection_);
}

void XOperator::press() { button(true); }

void XOperator::release() { button(false); }

void XOperator::click(QPoint place) {
    moveTo(place);
    press();
    release();
}

void XOperator::button(bool down) {
    constexpr std::uint8_t kLeft = 1;
    xcb_test_fake_input(connection_, down ? XCB_BUTTON_PRESS : XCB_BUTTON_RELEASE, kLeft, XCB_CURRENT_TIME,
                        root_, 0, 0, 0);
    xcb_flush(connection_);
}

}  // namespace vantrel::desktop
