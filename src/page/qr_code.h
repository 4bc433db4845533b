// A text as the square of dark and light fields that telephones read.
#pragma once

#include <string>
#include <vector>

namespace vantrel::page {

struct QrCode {
    int side = 0;            // fields along an edge, without the light margin that belongs around it
    std::vector<bool> dark;  // row after row
};

/// The width of that margin, in fields.
constexpr int kQrMargin = 4;

/// Without fields when the text is empty or too long.
QrCode qrCodeOf(const std::string& text);

}  // namespace vantrel::page
