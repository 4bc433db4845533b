#include "qt/image_window.h"

#include <QAction>
#include <QCloseEvent>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QPointer>
#include <QScreen>
#include <QToolBar>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>

#include "correction/stars/star_under_point.h"
#include "imaging/drawn_line.h"
#include "platform/errors.h"
#include "platform/text.h"
#include "qt/gauge_bar.h"
#include "qt/histogram_bar.h"
#include "qt/image_view.h"
#include "qt/parts.h"

namespace vantrel::qt {
namespace {

constexpr const char* kImageSection = "ImageWindow";
constexpr const char* kNothing = "–";

QString valueText(double value) {
    if (std::isnan(value)) return kNothing;
    if (value >= imaging::kMarkValue) return Text::tr("mark");
    constexpr int kFigures = 6;
    return value == std::floor(value) && std::abs(value) < 1e9 ? QString::number(value, 'f', 0)
                                                               : QString::number(value, 'g', kFigures);
}

/// `sky` is the brightness that lies under the star.
QString starText(const platform::ImageArray& image, QPoint pixel, double sky) {
    try {
        const auto star = correction::measureStarAt(image, pixel.x(), pixel.y());
        if (star && star->peak < imaging::kMarkValue &&
            !imaging::isDrawnLine(image, star->x, star->y, star->halfFluxDiameter, (star->peak + sky) / 2))
            return Text::tr("HFD %1 px").arg(star->halfFluxDiameter, 0, 'f', 2);
    } catch (const platform::OperationError&) {  // no numbers around the cursor
    }
    return kNothing;
}

/// "1:4", "3:1"; the whole image may lie in between.
QString scaleText(double scale) {
    const auto side = [](double factor) {
        const bool whole = std::abs(factor - std::round(factor)) < 1e-6;
        return QString::number(factor, 'f', whole ? 0 : 1);
    };
    return scale >= 1 ? side(scale) + ":1" : "1:" + side(1 / scale);
}

}  // namespace

ImageWindow::ImageWindow(imaging::OpenDocuments& documents, platform::SettingsRoot& settings,
                         const Front& front)
    : QWidget(nullptr, Qt::Window),
      settings_(settings),
      front_(front),
      image_(documents),
      view_(new ImageView(image_, front)),
      histogram_(new HistogramBar(image_, front.barrier)),
      bar_(new QToolBar),
      place_(*this, front.loop,
             [this](const QRect& place) { front_.barrier.run([&] { rememberPlace(place); }); }) {
    setObjectName("imageWindow");
    setAutoFillBackground(true);
    setAttribute(Qt::WA_ShowWithoutActivating);
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(bar_);
    column->addWidget(view_, 1);
    column->addWidget(histogram_);
    column->addWidget(guidanceLine());
    column->addWidget(statusLine());
    addCommands();
    setContextMenuPolicy(Qt::ActionsContextMenu);
    front_.barrier.run([this] {
        inverted_->setChecked(chosen("Inverted"));
        green_->setChecked(chosen("GreenByNight"));
        place_.put(storedPlace());
    });
    applyLook();
    view_->setFocus();

    following_ = image_.changed.subscribe([this] { follow(); });
    moving_ = view_->moved.subscribe([this] {
        tellPixel();
        tellView();
    });
    look_ = front_.theme.changed.subscribe([this] { applyLook(); });
    follow();
}

ImageWindow::~ImageWindow() { place_.tellNow(); }

// ---- Commands ----

QAction* ImageWindow::addCommand(const char* name, const QString& text, const QString& tip,
                                 const QList<QKeySequence>& keys, std::function<void()> command) {
    auto* const action = new QAction(text, this);
    action->setObjectName(name);
    action->setShortcuts(keys);
    QString key = keys.front().toString(QKeySequence::NativeText);
    action->setToolTip(tip + " (" + key + ")");
    connect(action, &QAction::triggered, this,
            [this, command = std::move(command)] { front_.barrier.run(command); });
    addAction(action);
    return action;
}

QAction* ImageWindow::addSwitch(const char* name, const QString& text, const QString& tip,
                                const QKeySequence& key, std::function<void(bool)> command) {
    QAction* const action = addCommand(name, text, tip, {key}, [] {});
    action->setCheckable(true);
    connect(action, &QAction::toggled, this,
            [this, command = std::move(command)](bool on) { front_.barrier.run([&] { command(on); }); });
    return action;
}

void ImageWindow::addCommands() {
    QAction* const fit = addCommand("fit", Text::tr("Whole image"), Text::tr("Show the whole image"),
                                    {QKeySequence("F")}, [this] { view_->fit(); });
    QAction* const pixels = addCommand("pixels", Text::tr("Pixels 1:1"),
                                       Text::tr("Show every pixel of the image as one of the screen"),
                                       {QKeySequence("1")}, [this] { view_->showPixels(); });
    QAction* const closer = addCommand("zoomIn", Text::tr("Zoom in"), Text::tr("Zoom in"),
                                       {QKeySequence("+"), QKeySequence("=")}, [this] { view_->zoomIn(); });
    QAction* const farther = addCommand("zoomOut", Text::tr("Zoom out"), Text::tr("Zoom out"),
                                        {QKeySequence("-")}, [this] { view_->zoomOut(); });
    automatic_ = addCommand("automatic", Text::tr("Automatic stretch"),
                            Text::tr("Choose the stretch from each image"), {QKeySequence("A")}, [this] {
                                // Switched off, the stretch of this image stays for the next.
                                if (image_.automatic())
                                    image_.choose(image_.stretch());
                                else
                                    image_.beAutomatic();
                                follow();
                            });
    automatic_->setCheckable(true);
    QAction* const cross =
        addSwitch("crossHair", Text::tr("Cross hair"), Text::tr("Lines through the middle of the image"),
                  QKeySequence("X"), [this](bool on) { view_->setCrossHair(on); });
    inverted_ = addSwitch("inverted", Text::tr("Invert"), Text::tr("Dark stars on a bright sky"),
                          QKeySequence("I"), [this](bool on) {
                              remember("Inverted", on ? "1" : "0");
                              applyLook();
                          });
    green_ = addSwitch("green", Text::tr("Green by night"), Text::tr("Night vision in green instead of red"),
                       QKeySequence("G"), [this](bool on) {
                           remember("GreenByNight", on ? "1" : "0");
                           applyLook();
                       });
    QAction* const histogram =
        addSwitch("showHistogram", Text::tr("Histogram"), Text::tr("Show the histogram and the stretch"),
                  QKeySequence("H"), [this](bool on) { histogram_->setVisible(on); });
    histogram->setChecked(true);
    full_ = addSwitch("fullScreen", Text::tr("Full screen"),
                      Text::tr("The image all over the screen; Esc leaves it"), QKeySequence("F11"),
                      [this](bool on) { showFull(on); });
    // Short on the tool bar, in full in the menu.
    fit->setIconText(Text::tr("Fit"));
    pixels->setIconText("1:1");
    farther->setIconText("−");
    closer->setIconText("+");
    automatic_->setIconText(Text::tr("Auto"));
    bar_->addActions({fit, pixels, farther, closer});
    bar_->addSeparator();
    bar_->addActions({automatic_, inverted_, cross, histogram});
    bar_->addSeparator();
    bar_->addAction(full_);
    for (QAction* action : bar_->actions())
        if (QWidget* const button = bar_->widgetForAction(action))
            button->setAccessibleName(action->toolTip());
}

void ImageWindow::showFull(bool full) {
    bar_->setVisible(!full);
    setWindowState(full ? windowState() | Qt::WindowFullScreen : windowState() & ~Qt::WindowFullScreen);
}

/// The desktop has ways of its own to leave the full screen.
void ImageWindow::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::WindowStateChange && full_ != nullptr) full_->setChecked(isFullScreen());
}

void ImageWindow::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape && full_->isChecked()) {
        full_->setChecked(false);
    } else if (event->matches(QKeySequence::Close)) {
        close();
    } else {
        QWidget::keyPressEvent(event);
    }
}

// ---- Status ----

QLabel* ImageWindow::addStatus(const char* name, const QString& widest, const QString& meaning) {
    auto* const label = new QLabel(kNothing);
    label->setObjectName(name);
    label->setToolTip(meaning);
    label->setAccessibleName(meaning);
    label->setFixedWidth(label->fontMetrics().horizontalAdvance(widest) + 12);
    status_->layout()->addWidget(label);
    return label;
}

/// Places of a fixed width: nothing jumps while the cursor moves.
QWidget* ImageWindow::statusLine() {
    status_ = new QWidget;
    auto* const row = new QHBoxLayout(status_);
    row->setContentsMargins(10, 4, 10, 5);
    position_ = addStatus("pixel", "x 00000  y 00000", Text::tr("Column and row under the cursor, from 0"));
    value_ = addStatus("value", "−0.00000e+00", Text::tr("Value of the pixel under the cursor"));
    star_ = addStatus("star", Text::tr("HFD %1 px").arg("00.00"),
                      Text::tr("Half-flux diameter of the star under the cursor"));
    row->addStretch();
    size_ = addStatus("size", "00000 × 00000", Text::tr("Columns and rows of the image"));
    scale_ = addStatus("scale", "1:00.0", Text::tr("Pixels of the screen to pixels of the image"));
    status_->setMinimumWidth(1);
    return status_;
}

/// A narrow window keeps the pixel under the cursor, and as much of the rest as there is room for.
void ImageWindow::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    constexpr int kEdges = 20;
    int room = width() - kEdges;
    for (QLabel* label : {position_, value_, scale_, star_, size_}) {
        room -= label->minimumWidth() + status_->layout()->spacing();
        label->setVisible(room >= 0);
    }
}

/// To be read from the mount. There only while a star is guided.
QWidget* ImageWindow::guidanceLine() {
    constexpr double kLarge = 2.2;
    guidance_ = new QWidget;
    auto* const column = new QVBoxLayout(guidance_);
    column->setContentsMargins(10, 6, 10, 2);
    column->setSpacing(6);
    starToTarget_ = named<QLabel>("starToTarget");
    scaleFont(*starToTarget_, kLarge, true);
    starToTarget_->setMinimumWidth(1);  // a small window stays as it is
    wayLeft_ = named<GaugeBar>("wayLeft");
    wayLeft_->setFixedHeight(starToTarget_->fontMetrics().height() / 2);
    wayLeft_->setAccessibleName(Text::tr("Way from the star to its mark"));
    column->addWidget(starToTarget_);
    column->addWidget(wayLeft_);
    guidance_->hide();
    return guidance_;
}

QSize ImageWindow::leastSize() const {
    constexpr QSize kOfUse(240, 240);
    return minimumSizeHint().expandedTo(kOfUse).grownBy(place_.frame());
}

void ImageWindow::standIn(const QRect& place) {
    full_->setChecked(false);
    const QRect inside(place.topLeft(), place.size().shrunkBy(place_.frame()));
    front_.barrier.run([&] { rememberPlace(inside); });
    place_.put(inside);
}

void ImageWindow::followGuide(correction::StarGuide& guide) {
    guided_ = guide.changed.subscribe([this, &guide] { tellGuidance(guide.guidance()); });
    tellGuidance(guide.guidance());
}

void ImageWindow::tellGuidance(const std::optional<correction::Guidance>& guidance) {
    view_->setGuidance(guidance);
    starToTarget_->setText(guidance ? QString::fromStdString(guidance->text()) : QString());
    wayLeft_->setFraction(guidance ? guidance->left : 0);
    guidance_->setVisible(guidance.has_value());
}

void ImageWindow::tellPixel() {
    front_.barrier.run([this] {
        const auto pixel = view_->pixelUnderCursor();
        if (!pixel) {
            for (QLabel* label : {position_, value_, star_}) label->setText(kNothing);
            return;
        }
        const auto pixels = image_.pixels();
        const double value =
            pixels->at(static_cast<std::size_t>(pixel->x()), static_cast<std::size_t>(pixel->y()));
        position_->setText(QString("x %1  y %2").arg(pixel->x()).arg(pixel->y()));
        value_->setText(valueText(value));
        star_->setText(starText(*pixels, *pixel, image_.statistics().median));
    });
}

void ImageWindow::tellView() {
    const auto pixels = image_.pixels();
    scale_->setText(pixels ? scaleText(view_->viewport().scale()) : kNothing);
    size_->setText(pixels ? QString("%1 × %2").arg(pixels->width()).arg(pixels->height()) : kNothing);
}

// ---- What the image does ----

void ImageWindow::follow() {
    const auto document = image_.document();
    const QString name = Text::tr("Camera image");
    setWindowTitle(document ? QString::fromStdString(document->title) + " – " + name : name);
    view_->setAccessibleDescription(document ? QString::fromStdString(document->title)
                                             : Text::tr("No image yet"));
    automatic_->setChecked(image_.automatic());
    tellView();
    // The pixels are read when the program that changed them has finished.
    front_.loop.post([window = QPointer<ImageWindow>(this)] {
        if (window) window->tellPixel();
    });
    if (document && !isVisible() && !closedByOperator_) show();
}

void ImageWindow::showByOperator() {
    closedByOperator_ = false;
    show();
    raise();
    activateWindow();
}

void ImageWindow::closeEvent(QCloseEvent* event) {
    place_.tellNow();
    closedByOperator_ = true;
    event->accept();
}

void ImageWindow::applyLook() {
    const bool night = front_.theme.night();
    const bool green = night && green_->isChecked();
    const Colors colors = green ? inGreen(front_.theme.colors()) : front_.theme.colors();
    setPalette(green ? paletteOf(colors) : QPalette());
    view_->setColors(imageColors(colors, night, inverted_->isChecked()));
    green_->setEnabled(night);
}

// ---- Memory ----

bool ImageWindow::chosen(const char* key) const {
    return platform::leadingNumber(settings_.read(kImageSection, key).value_or("0")) != 0;
}

void ImageWindow::remember(const char* key, const std::string& value) const {
    if (settings_.read(kImageSection, key) != value) settings_.write(kImageSection, key, value);
}

QRect ImageWindow::storedPlace() const {
    const QRect room = QGuiApplication::primaryScreen()->availableGeometry();
    const QSize usual = sizeHint().boundedTo(room.size() * 0.8);
    const auto stored = [this](const char* key, int otherwise) {
        const auto text = settings_.read(kImageSection, key);
        return text ? static_cast<int>(std::clamp(platform::leadingNumber(*text), -1e6, 1e6)) : otherwise;
    };
    const QSize size =
        QSize(stored("Width", usual.width()), stored("Height", usual.height())).expandedTo(minimumSizeHint());
    // At first to the right, beside the main window.
    return {
        QPoint(stored("Left", room.right() - size.width()), stored("Top", room.top() + room.height() / 10)),
        size};
}

void ImageWindow::rememberPlace(const QRect& place) const {
    remember("Left", std::to_string(place.x()));
    remember("Top", std::to_string(place.y()));
    remember("Width", std::to_string(place.width()));
    remember("Height", std::to_string(place.height()));
}

}  // namespace vantrel::qt
