#include "page/qr_code.h"

#include <memory>

#include <qrencode.h>

namespace vantrel::page {

QrCode qrCodeOf(const std::string& text) {
    QrCode result;
    if (text.empty()) return result;
    const std::unique_ptr<QRcode, decltype(&QRcode_free)> code(
        QRcode_encodeString8bit(text.c_str(), 0, QR_ECLEVEL_M), &QRcode_free);
    if (!code) return result;
    result.side = code->width;
    const int fields = code->width * code->width;
    for (int i = 0; i < fields; ++i) result.dark.push_back((code->data[i] & 1) != 0);
    return result;
}

}  // namespace vantrel::page
