#include "qt/style_drawing.h"

#include <QGuiApplication>
#include <QPainter>
#include <algorithm>

#include "qt/mnemonics.h"

namespace vantrel::qt {
namespace {

constexpr qreal kRadius = 4;

/// Saves the painter's state for as long as it lives.
class Painting {
  public:
    explicit Painting(QPainter& painter) : painter_(painter) {
        painter.save();
        painter.setRenderHint(QPainter::Antialiasing);
    }
    Painting(const Painting&) = delete;
    Painting& operator=(const Painting&) = delete;
    ~Painting() { painter_.restore(); }

  private:
    QPainter& painter_;
};

QRectF centredSquare(const QRect& rect) {
    const int side = std::min(rect.width(), rect.height());
    const QPoint corner = rect.topLeft() + QPoint(rect.width() - side, rect.height() - side) / 2;
    return QRectF(corner, QSizeF(side, side)).adjusted(0.5, 0.5, -0.5, -0.5);
}

void drawTick(QPainter& painter, const QRectF& box, const QColor& color) {
    const auto at = [&box](qreal x, qreal y) {
        return QPointF(box.left() + x * box.width(), box.top() + y * box.height());
    };
    QPen pen(color, std::max(1.6, box.width() / 7));
    pen.setCapStyle(Qt::RoundCap);
    pen.setJoinStyle(Qt::RoundJoin);
    painter.setPen(pen);
    painter.setBrush(Qt::NoBrush);
    painter.drawPolyline(QPolygonF({at(0.22, 0.52), at(0.43, 0.73), at(0.79, 0.28)}));
}

void drawMessageSign(QPainter& painter, const QRectF& rect, QStyle::StandardPixmap picture) {
    const QPalette palette = QGuiApplication::palette();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(
        palette.color(picture == QStyle::SP_MessageBoxCritical ? QPalette::BrightText : QPalette::Highlight));
    painter.drawEllipse(rect);
    painter.setPen(palette.color(QPalette::HighlightedText));
    QFont font = QGuiApplication::font();
    font.setBold(true);
    font.setPixelSize(static_cast<int>(rect.height() * 0.62));
    painter.setFont(font);
    const char* sign = picture == QStyle::SP_MessageBoxInformation ? "i"
                       : picture == QStyle::SP_MessageBoxQuestion  ? "?"
                                                                   : "!";
    painter.drawText(rect, Qt::AlignCenter, sign);
}

}  // namespace

QColor mixed(const QColor& a, const QColor& b, float share) {
    const auto blend = [share](float x, float y) { return x + (y - x) * share; };
    return QColor::fromRgbF(blend(a.redF(), b.redF()), blend(a.greenF(), b.greenF()),
                            blend(a.blueF(), b.blueF()));
}

void drawBox(QPainter& painter, const QRect& rect, const QColor& fill, const QColor& line) {
    const Painting painting(painter);
    painter.setPen(line);
    painter.setBrush(fill.isValid() ? QBrush(fill) : QBrush(Qt::NoBrush));
    painter.drawRoundedRect(QRectF(rect).adjusted(0.5, 0.5, -0.5, -0.5), kRadius, kRadius);
}

QColor lineColor(const QStyleOption& option) {
    const QPalette& p = option.palette;
    if (!(option.state & QStyle::State_Enabled))
        return mixed(p.color(QPalette::Mid), p.color(QPalette::Window), 0.4F);
    if (option.state & QStyle::State_HasFocus) return p.color(QPalette::Highlight);
    return p.color(QPalette::Mid);
}

void drawButtonFace(const QStyleOption& option, QPainter& painter) {
    const QPalette& p = option.palette;
    QColor fill = p.color(QPalette::Button);
    if (option.state & (QStyle::State_Sunken | QStyle::State_On))
        fill = mixed(fill, p.color(QPalette::Highlight), 0.30F);
    else if ((option.state & QStyle::State_MouseOver) && (option.state & QStyle::State_Enabled))
        fill = mixed(fill, p.color(QPalette::Highlight), 0.10F);
    drawBox(painter, option.rect, fill, lineColor(option));
}

void drawLineEdit(const QStyleOption& option, QPainter& painter) {
    const QPalette& p = option.palette;
    const QColor fill = (option.state & QStyle::State_ReadOnly)
                            ? mixed(p.color(QPalette::Base), p.color(QPalette::Window), 0.6F)
                            : p.color(QPalette::Base);
    drawBox(painter, option.rect, fill, lineColor(option));
}

void drawCheckIndicator(const QStyleOption& option, QPainter& painter) {
    const Painting painting(painter);
    const QPalette& p = option.palette;
    const bool on = option.state & QStyle::State_On;
    const bool enabled = option.state & QStyle::State_Enabled;
    const QColor fill =
        !on ? p.color(QPalette::Base) : p.color(enabled ? QPalette::Highlight : QPalette::Mid);
    const QRectF box = centredSquare(option.rect);
    painter.setPen(on ? fill : enabled ? p.color(QPalette::Dark) : p.color(QPalette::Mid));
    painter.setBrush(fill);
    painter.drawRoundedRect(box, 3, 3);
    if (on) drawTick(painter, box, p.color(QPalette::HighlightedText));
}

void drawRadioIndicator(const QStyleOption& option, QPainter& painter) {
    const Painting painting(painter);
    const QPalette& p = option.palette;
    const bool on = option.state & QStyle::State_On;
    const bool enabled = option.state & QStyle::State_Enabled;
    const QRectF box = centredSquare(option.rect);
    const QColor accent = p.color(enabled ? QPalette::Highlight : QPalette::Mid);
    painter.setPen(on ? accent : enabled ? p.color(QPalette::Dark) : p.color(QPalette::Mid));
    painter.setBrush(p.color(QPalette::Base));
    painter.drawEllipse(box);
    if (!on) return;
    const qreal inset = box.width() * 0.24;
    painter.setPen(Qt::NoPen);
    painter.setBrush(accent);
    painter.drawEllipse(box.adjusted(inset, inset, -inset, -inset));
}

void drawChevron(QPainter& painter, const QRect& rect, const QColor& color, Qt::ArrowType direction) {
    const Painting painting(painter);
    painter.setPen(QPen(color, 1.6, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.translate(QRectF(rect).center());
    switch (direction) {
        case Qt::UpArrow:
            painter.rotate(180);
            break;
        case Qt::LeftArrow:
            painter.rotate(90);
            break;
        case Qt::RightArrow:
            painter.rotate(-90);
            break;
        default:
            break;
    }
    const qreal reach = std::min(4.0, std::min(rect.width(), rect.height()) / 3.0);
    painter.drawPolyline(QPolygonF({{-reach, -reach / 2}, {0, reach / 2}, {reach, -reach / 2}}));
}

void drawComboBox(const QStyle& style, const QStyleOptionComboBox& option, QPainter& painter,
                  const QWidget* widget) {
    drawButtonFace(option, painter);
    const QRect arrow = style.subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxArrow, widget);
    drawChevron(painter, arrow, option.palette.color(QPalette::ButtonText), Qt::DownArrow);
}

void drawGroupBox(const QStyle& style, const QStyleOptionGroupBox& option, QPainter& painter,
                  const QWidget* widget) {
    const Painting painting(painter);
    const QPalette& p = option.palette;
    const int above = option.text.isEmpty() ? 0 : option.fontMetrics.height() + 3;
    drawBox(painter, option.rect.adjusted(0, above, 0, 0), {},
            mixed(p.color(QPalette::Mid), p.color(QPalette::Window), 0.25F));
    QRect title = style.subControlRect(QStyle::CC_GroupBox, &option, QStyle::SC_GroupBoxLabel, widget);
    title.setRight(option.rect.right());
    QFont font = painter.font();
    font.setBold(true);
    painter.setFont(font);
    style.drawItemText(&painter, title, Qt::AlignLeft | Qt::AlignTop | Qt::TextHideMnemonic, p,
                       option.state & QStyle::State_Enabled, option.text, QPalette::WindowText);
}

void drawScrollBar(const QStyle& style, const QStyleOptionSlider& option, QPainter& painter,
                   const QWidget* widget) {
    const Painting painting(painter);
    const QPalette& p = option.palette;
    painter.fillRect(option.rect, p.color(QPalette::Window));
    if (!(option.state & QStyle::State_Enabled) || option.minimum == option.maximum) return;
    QRectF handle = style.subControlRect(QStyle::CC_ScrollBar, &option, QStyle::SC_ScrollBarSlider, widget);
    handle.adjust(3, 3, -3, -3);
    const bool held = (option.activeSubControls & QStyle::SC_ScrollBarSlider) &&
                      (option.state & (QStyle::State_Sunken | QStyle::State_MouseOver));
    painter.setPen(Qt::NoPen);
    painter.setBrush(held ? p.color(QPalette::Dark) : p.color(QPalette::Mid));
    const qreal radius = std::min(handle.width(), handle.height()) / 2;
    painter.drawRoundedRect(handle, radius, radius);
}

void drawTab(const QStyleOptionTab& option, QPainter& painter) {
    const Painting painting(painter);
    const QPalette& p = option.palette;
    const QRectF rect(option.rect);
    if (option.state & QStyle::State_Selected) {
        painter.fillRect(QRectF(rect.left() + 6, rect.bottom() - 3, rect.width() - 12, 3),
                         p.color(QPalette::Highlight));
    } else if (option.state & QStyle::State_MouseOver) {
        painter.fillRect(QRectF(rect.left() + 6, rect.bottom() - 3, rect.width() - 12, 3),
                         p.color(QPalette::Mid));
    }
    if (option.state & QStyle::State_HasFocus) {
        painter.setPen(p.color(QPalette::Mid));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(rect.adjusted(4.5, 4.5, -4.5, -6.5), kRadius, kRadius);
    }
}

bool isMessageSign(QStyle::StandardPixmap picture) {
    return picture == QStyle::SP_MessageBoxInformation || picture == QStyle::SP_MessageBoxWarning ||
           picture == QStyle::SP_MessageBoxCritical || picture == QStyle::SP_MessageBoxQuestion;
}

QPixmap messageSign(QStyle::StandardPixmap picture) {
    constexpr int kSide = 64;
    QPixmap pixmap(kSide, kSide);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    drawMessageSign(painter, QRectF(2, 2, kSide - 4, kSide - 4), picture);
    return pixmap;
}

void drawMenuBarItem(const QStyle& style, const QStyleOptionMenuItem& option, QPainter& painter) {
    const QPalette& p = option.palette;
    const bool chosen = option.state & (QStyle::State_Selected | QStyle::State_Sunken);
    painter.fillRect(option.rect, p.color(chosen ? QPalette::Highlight : QPalette::Window));
    int flags = Qt::AlignCenter;
    flags |= Qt::TextSingleLine;
    flags |= altIsHeld() ? Qt::TextShowMnemonic : Qt::TextHideMnemonic;
    style.drawItemText(&painter, option.rect, flags, p, option.state & QStyle::State_Enabled, option.text,
                       chosen ? QPalette::HighlightedText : QPalette::WindowText);
}

}  // namespace vantrel::qt
