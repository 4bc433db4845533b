#include "app/frm_popup_msg.h"

#include <algorithm>
#include <string_view>

namespace vantrel::app {
namespace {

// Of a usual window font; a front with real fonts may make the window larger.
constexpr int kCharacterWidth = 8;
constexpr int kLineHeight = 16;
constexpr int kMargin = 12;

int characters(std::string_view line) {
    return static_cast<int>(std::count_if(
        line.begin(), line.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

}  // namespace

void frmPopupMsg::SizeForm_TextBox() {
    std::string_view rest = txtMsg.text();
    int widest = 0;
    int lines = 1;
    for (auto end = rest.find('\n'); end != std::string_view::npos; end = rest.find('\n'), ++lines) {
        widest = std::max(widest, characters(rest.substr(0, end)));
        rest.remove_prefix(end + 1);
    }
    widest = std::max(widest, characters(rest));

    const platform::Rectangle& area = screen().workArea();
    const int width = widest * kCharacterWidth + 2 * kMargin;
    const int height = lines * kLineHeight + 2 * kMargin;
    setPlace({area.left + (area.width - width) / 2, area.top + (area.height - height) / 2, width, height});
}

}  // namespace vantrel::app
