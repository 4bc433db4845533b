#include "desktop/x_operator.h"

#include <QWidget>
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <span>
#include <stdexcept>

#include <xcb/xcb.h>
#include <xcb/xtest.h>

namespace vantrel::desktop {
namespace {

constexpr std::uint8_t kLeftButton = 1, kWheelAway = 4, kWheelTowards = 5;

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
    const auto state = owned(xcb_get_window_attributes_reply(
        connection_, xcb_get_window_attributes(connection_, static_cast<xcb_window_t>(widget.winId())),
        nullptr));
    if (!state || state->map_state != XCB_MAP_STATE_VIEWABLE) return {};
    const auto frame =
        owned(xcb_get_geometry_reply(connection_, xcb_get_geometry(connection_, outermost(widget)), nullptr));
    if (!frame) return {};
    return {frame->x, frame->y, frame->width + 2 * frame->border_width,
            frame->height + 2 * frame->border_width};
}

bool XOperator::isAbove(const QWidget& one, const QWidget& other) const {
    const auto tree = owned(xcb_query_tree_reply(connection_, xcb_query_tree(connection_, root_), nullptr));
    if (!tree) return false;
    const xcb_window_t* const windows = xcb_query_tree_children(tree.get());  // from the lowest on
    const std::span stack(windows, static_cast<std::size_t>(xcb_query_tree_children_length(tree.get())));
    return std::ranges::find(stack, outermost(one)) > std::ranges::find(stack, outermost(other));
}

/// With what the window manager has put around it; 0 when the window is gone.
unsigned XOperator::outermost(const QWidget& widget) const {
    auto window = static_cast<xcb_window_t>(widget.winId());
    for (;;) {
        const auto tree =
            owned(xcb_query_tree_reply(connection_, xcb_query_tree(connection_, window), nullptr));
        if (!tree) return 0;
        if (tree->parent == root_) return window;
        window = tree->parent;
    }
}

void XOperator::moveTo(QPoint place) {
    xcb_test_fake_input(connection_, XCB_MOTION_NOTIFY, 0, XCB_CURRENT_TIME, root_,
                        static_cast<std::int16_t>(place.x()), static_cast<std::int16_t>(place.y()), 0);
    xcb_flush(connection_);
}

void XOperator::press() { button(kLeftButton, true); }

void XOperator::release() { button(kLeftButton, false); }

void XOperator::turnWheel(bool away) {
    const std::uint8_t notch = away ? kWheelAway : kWheelTowards;
    button(notch, true);
    button(notch, false);
}

void XOperator::click(QPoint place) {
    moveTo(place);
    press();
    release();
}

void XOperator::strike(unsigned symbol, std::initializer_list<unsigned> held) {
    for (const unsigned other : held) key(other, true);
    key(symbol, true);
    key(symbol, false);
    for (const unsigned other : held) key(other, false);
    xcb_flush(connection_);
}

void XOperator::key(unsigned symbol, bool down) {
    const xcb_setup_t& setup = *xcb_get_setup(connection_);
    const xcb_keycode_t first = setup.min_keycode;
    const auto count = static_cast<std::uint8_t>(setup.max_keycode - first + 1);
    const auto mapping = owned(xcb_get_keyboard_mapping_reply(
        connection_, xcb_get_keyboard_mapping(connection_, first, count), nullptr));
    if (!mapping) throw std::runtime_error("no keyboard");
    const xcb_keysym_t* const symbols = xcb_get_keyboard_mapping_keysyms(mapping.get());
    const int perKey = mapping->keysyms_per_keycode;
    for (int i = 0; i < count; ++i)
        if (symbols[i * perKey] == symbol) {
            xcb_test_fake_input(connection_, down ? XCB_KEY_PRESS : XCB_KEY_RELEASE,
                                static_cast<std::uint8_t>(first + i), XCB_CURRENT_TIME, root_, 0, 0, 0);
            return;
        }
    throw std::runtime_error("no such key");
}

void XOperator::button(std::uint8_t number, bool down) {
    xcb_test_fake_input(connection_, down ? XCB_BUTTON_PRESS : XCB_BUTTON_RELEASE, number, XCB_CURRENT_TIME,
                        root_, 0, 0, 0);
    xcb_flush(connection_);
}

}  // namespace vantrel::desktop
