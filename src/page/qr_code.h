// A text as the square of dark and light fields that telephones read.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace vantrel::page {

struct QrCode {
    int side = 0;            // fields along an edge, without the light margin that belongs around it
    std::vector<bool> dark;  // row after row

    bool isDark(int x, int y) const {
        return dark[static_cast<std::size_t>(y) * static_cast<std::size_t>(side) +
                    static_cast<std::size_t>(x)];
    }
};

/// The width of that margin, in fields.
constexpr int kQrMargin = 4;

/// Without fields when the text is empty or too long.
QrCode qrCodeOf(const std::string& text);

}  // namespace vantrel::page
