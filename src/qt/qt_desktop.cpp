#include "qt/qt_desktop.h"

#include <QApplication>
#include <QBuffer>
#include <QClipboard>
#include <QDesktopServices>
#include <QImage>
#include <QPainter>
#include <QUrl>
#include <system_error>

#include "qt/desktop_services.h"
#include "qt/drawing_painter.h"
#include "qt/theme.h"

namespace vantrel::qt {
namespace {

/// For letters and web pages: by day, whatever the windows look like.
QImage imageOfDial(const platform::Drawing& drawing) {
    constexpr int kSide = 800;
    QImage image(kSide, kSide, QImage::Format_RGB32);
    const Look look;
    image.fill(look.colors().window);
    QPainter painter(&image);
    QFont font = painter.font();
    font.setPixelSize(kSide / 36);
    painter.setFont(font);
    paintDrawing(painter, image.rect(), drawing, DrawingKind::kDial, look);
    return image;
}

}  // namespace

bool QtDesktop::open(const std::string& file) {
    const QString name = QString::fromStdString(file);
    if (name.contains(QStringLiteral("://"))) return QDesktopServices::openUrl(QUrl(name));
    const QString real = QString::fromStdString(folders().real(file).string());
    return QDesktopServices::openUrl(QUrl::fromLocalFile(real));
}

std::filesystem::path QtDesktop::shownFor(const std::string& file) const {
    const std::filesystem::path help = folders().real(file);
    const std::filesystem::path pages = help.parent_path() / "manual" / "index.html";
    std::error_code ignored;
    const bool shown = help.extension() != ".chm" || !std::filesystem::exists(pages, ignored) ||
                       (std::filesystem::exists(help, ignored) && hasHelpViewer());
    return shown ? help : pages;
}

void QtDesktop::beep() { QApplication::beep(); }

void QtDesktop::say(const std::string& words) { speakAloud(words); }

bool QtDesktop::copyText(const std::string& text) {
    QGuiApplication::clipboard()->setText(QString::fromStdString(text));
    return true;
}

bool QtDesktop::copyDial(const platform::Drawing& drawing) {
    QGuiApplication::clipboard()->setImage(imageOfDial(drawing));
    return true;
}

std::string QtDesktop::pngOfDial(const platform::Drawing& drawing) const {
    QByteArray png;
    QBuffer buffer(&png);
    imageOfDial(drawing).save(&buffer, "PNG");
    return png.toStdString();
}

}  // namespace vantrel::qt
