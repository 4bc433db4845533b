#include "qt/style.h"

#include <QGuiApplication>
#include <QPainter>
#include <QStyleOption>

#include "qt/mnemonics.h"
#include "qt/style_drawing.h"
#include "qt/theme.h"

namespace vantrel::qt {
namespace {

bool isNight() { return QGuiApplication::palette().color(QPalette::Window).lightnessF() < 0.2F; }

QPixmap inNightRed(const QPixmap& picture) {
    return reddened(picture, QGuiApplication::palette().color(QPalette::BrightText));
}

}  // namespace

Style::Style() : QProxyStyle("Fusion") { watchAltKey(*this); }

void Style::drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                          const QWidget* widget) const {
    const QPalette& p = option->palette;
    switch (element) {
        case PE_PanelButtonCommand:
            return drawButtonFace(*option, *painter);
        case PE_PanelButtonTool:
            if (option->state & (State_Sunken | State_On | State_MouseOver))
                drawButtonFace(*option, *painter);
            return;
        case PE_FrameDefaultButton:
            return;
        case PE_PanelLineEdit:
            if (const auto* frame = qstyleoption_cast<const QStyleOptionFrame*>(option);
                frame == nullptr || frame->lineWidth > 0)
                return drawLineEdit(*option, *painter);
            return;
        case PE_FrameLineEdit:
        case PE_Frame:
            return drawBox(*painter, option->rect, {}, lineColor(*option));
        case PE_FrameTabBarBase:
        case PE_FrameTabWidget: {
            const QRect& r = option->rect;
            painter->fillRect(QRect(r.left(), r.top(), r.width(), 1), p.color(QPalette::Mid));
            return;
        }
        case PE_FrameFocusRect:
            return drawBox(*painter, option->rect, {},
                           mixed(p.color(QPalette::Highlight), p.color(QPalette::Window), 0.4F));
        case PE_IndicatorCheckBox:
            return drawCheckIndicator(*option, *painter);
        case PE_IndicatorRadioButton:
            return drawRadioIndicator(*option, *painter);
        case PE_IndicatorArrowDown:
            return drawChevron(*painter, option->rect, p.color(QPalette::ButtonText), Qt::DownArrow);
        case PE_IndicatorArrowUp:
            return drawChevron(*painter, option->rect, p.color(QPalette::ButtonText), Qt::UpArrow);
        case PE_IndicatorArrowLeft:
            return drawChevron(*painter, option->rect, p.color(QPalette::ButtonText), Qt::LeftArrow);
        case PE_IndicatorArrowRight:
            return drawChevron(*painter, option->rect, p.color(QPalette::ButtonText), Qt::RightArrow);
        default:
            QProxyStyle::drawPrimitive(element, option, painter, widget);
    }
}

void Style::drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                        const QWidget* widget) const {
    if (element == CE_TabBarTabShape)
        if (const auto* tab = qstyleoption_cast<const QStyleOptionTab*>(option))
            return drawTab(*tab, *painter);
    if (element == CE_MenuBarItem)
        if (const auto* item = qstyleoption_cast<const QStyleOptionMenuItem*>(option))
            return drawMenuBarItem(*this, *item, *painter);
    if (element == CE_Splitter || element == CE_SizeGrip) return;
    if (element == CE_MenuBarEmptyArea || element == CE_HeaderSection || element == CE_HeaderEmptyArea) {
        painter->fillRect(option->rect, option->palette.color(QPalette::Window));
        return;
    }
    QProxyStyle::drawControl(element, option, painter, widget);
}

void Style::drawComplexControl(ComplexControl control, const QStyleOptionComplex* option, QPainter* painter,
                               const QWidget* widget) const {
    if (control == CC_ComboBox)
        if (const auto* combo = qstyleoption_cast<const QStyleOptionComboBox*>(option))
            return drawComboBox(*this, *combo, *painter, widget);
    if (control == CC_GroupBox)
        if (const auto* box = qstyleoption_cast<const QStyleOptionGroupBox*>(option))
            return drawGroupBox(*this, *box, *painter, widget);
    if (control == CC_ScrollBar)
        if (const auto* bar = qstyleoption_cast<const QStyleOptionSlider*>(option))
            return drawScrollBar(*this, *bar, *painter, widget);
    QProxyStyle::drawComplexControl(control, option, painter, widget);
}

QRect Style::subElementRect(SubElement element, const QStyleOption* option, const QWidget* widget) const {
    const QRect rect = QProxyStyle::subElementRect(element, option, widget);
    return element == SE_LineEditContents ? rect.adjusted(4, 0, -4, 0) : rect;
}

QSize Style::sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& contents,
                              const QWidget* widget) const {
    if (type == CT_PushButton) return contents + QSize(30, 14);
    return QProxyStyle::sizeFromContents(type, option, contents, widget);
}

int Style::pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const {
    switch (metric) {
        case PM_IndicatorWidth:
        case PM_IndicatorHeight:
        case PM_ExclusiveIndicatorWidth:
        case PM_ExclusiveIndicatorHeight:
            return 18;
        case PM_TextCursorWidth:
            return 0;  // see LineField
        case PM_ScrollBarExtent:
            return 16;
        case PM_ButtonShiftHorizontal:
        case PM_ButtonShiftVertical:
            return 0;
        case PM_ToolTipLabelFrameWidth:
            return 2;
        case PM_TabBarTabHSpace:
            return 30;
        case PM_TabBarTabVSpace:
            return 16;
        default:
            return QProxyStyle::pixelMetric(metric, option, widget);
    }
}

int Style::styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                     QStyleHintReturn* data) const {
    switch (hint) {
        case SH_ComboBox_Popup:
        case SH_EtchDisabledText:
        case SH_DitherDisabledText:
        case SH_DialogButtonBox_ButtonsHaveIcons:  // the desktop's pictures have colours of their own
            return 0;
        case SH_UnderlineShortcut:
            return altIsHeld() ? 1 : 0;
        default:
            return QProxyStyle::styleHint(hint, option, widget, data);
    }
}

QPixmap Style::generatedIconPixmap(QIcon::Mode mode, const QPixmap& pixmap,
                                   const QStyleOption* option) const {
    const QPixmap generated = QProxyStyle::generatedIconPixmap(mode, pixmap, option);
    return isNight() ? inNightRed(generated) : generated;
}

QIcon Style::standardIcon(StandardPixmap picture, const QStyleOption* option, const QWidget* widget) const {
    if (isMessageSign(picture)) return messageSign(picture);
    const QIcon icon = QProxyStyle::standardIcon(picture, option, widget);
    return isNight() ? QIcon(inNightRed(icon.pixmap(32))) : icon;
}

QPixmap Style::standardPixmap(StandardPixmap picture, const QStyleOption* option,
                              const QWidget* widget) const {
    if (isMessageSign(picture)) return messageSign(picture);
    const QPixmap pixmap = QProxyStyle::standardPixmap(picture, option, widget);
    return isNight() ? inNightRed(pixmap) : pixmap;
}

}  // namespace vantrel::qt
