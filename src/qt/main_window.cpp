#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QDesktopServices>
#include <QGroupBox>
#include <QMenu>
#include <QMenuBar>
#include <QMouseEvent>
#include <QPlainTextEdit>
#include <QRadioButton>
#include <QShortcut>
#include <QTabWidget>
#include <QTextDocument>
#include <QUrl>
#include <QVBoxLayout>
#include <string_view>
#include <utility>

#include "app/frm_main.h"
#include "qt/gauge_bar.h"
#include "qt/mnemonics.h"
#include "qt/parts.h"
#include "qt/picture_widget.h"
#include "qt/status_lamp.h"
#include "qt/translation.h"
#include "qt/windows.h"

namespace vantrel::qt {

using platform::Words;

namespace {

class FolderLink : public QLabel {
  public:
    FolderLink() {
        setCursor(Qt::PointingHandCursor);
        setForegroundRole(QPalette::Link);
    }

  protected:
    void mouseReleaseEvent(QMouseEvent* event) override {
        if (event->button() == Qt::LeftButton && rect().contains(event->position().toPoint()))
            QDesktopServices::openUrl(QUrl::fromLocalFile(text()));
    }
};

// ---- Run ----

/// How close the page's parts stand. On a low screen the dial is to be seen without scrolling.
struct Density {
    double instructionsScale = 1.4;
    int instructionsLines = 7;
    int instructionsMargin = 10;
    int spacing = 8;
    int buttonPadding = 18;
    int dialLines = 9;
};
constexpr int kLowScreen = 640;
constexpr Density kTight{1.2, 6, 4, 4, 6, 8};

QPlainTextEdit* instructions(const Density& density) {
    auto* const box = named<QPlainTextEdit>("txtInstructions");
    scaleFont(*box, density.instructionsScale);
    constexpr const char* kWidest = "     any Bright Star in rectangle";
    const QFontMetrics metrics = box->fontMetrics();
    box->setMinimumSize(
        metrics.horizontalAdvance(kWidest) + 50,
        metrics.lineSpacing() * density.instructionsLines + 2 * density.instructionsMargin + 4);
    box->document()->setDocumentMargin(density.instructionsMargin);
    box->setFocusPolicy(Qt::ClickFocus);
    box->setAccessibleName(Text::tr("Instructions"));
    box->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Ignored);
    return box;
}

/// What is being done now. The two correction lights take the place of the three plates'.
QLayout* indicators() {
    auto* const grid = new QGridLayout;
    grid->setSpacing(6);
    constexpr int kSpan = 2;
    constexpr int kWide = 3;
    auto* const measure = named<IndicatorLabel>("lblMeasure");
    measure->setFixedWidth(measure->fontMetrics().horizontalAdvance("Measure") + 24);
    grid->addWidget(measure, 0, 0);
    int column = 1;
    for (const char* plate : {"lblFrame1", "lblFrame2", "lblFrame3"}) {
        grid->addWidget(named<IndicatorLabel>(plate), 0, column, 1, kSpan);
        column += kSpan;
    }
    column = 1;
    for (const char* adjuster : {"lblAlt", "lblAz"}) {
        grid->addWidget(named<IndicatorLabel>(adjuster), 0, column, 1, kWide);
        column += kWide;
    }
    column = 1;
    for (const char* step : {"lblSlew", "lblExpose", "lblSolve"}) {
        grid->addWidget(named<IndicatorLabel>(step), 1, column, 1, kSpan);
        column += kSpan;
    }
    for (int i = 1; i <= kSpan * 3; ++i) grid->setColumnStretch(i, 1);
    return grid;
}

/// How far the star is from its mark, while one is being centred.
QLayout* guidance() {
    auto* const line = new QHBoxLayout;
    line->setSpacing(8);
    auto* const reading = named<QLabel>("lblStarToTarget");
    scaleFont(*reading, 1.35, true);
    auto* const bar = named<GaugeBar>("gaugeStarToTarget");
    bar->setAccessibleName(Text::tr("Way from the star to its mark"));
    for (QWidget* part : {static_cast<QWidget*>(reading), static_cast<QWidget*>(bar)}) keepRoom(*part);
    line->addWidget(reading);
    line->addWidget(bar, 1);
    return line;
}

QLayout* runButtons(const Density& density) {
    auto* const row = new QHBoxLayout;
    row->setSpacing(4);
    for (const char* name : {"cmdRun", "cmdStop", "cmdNext", "cmdSkip", "cmdAdjust"}) {
        QPushButton* const button = bigButton(name);
        button->setMinimumHeight(button->fontMetrics().height() * 2 + density.buttonPadding);
        button->setProperty(kChoosesLetterFirst,
                            name != std::string_view("cmdAdjust"));  // pressed in the dark
        row->addWidget(button);
    }
    return row;
}

QGroupBox* measurementGroup() {
    auto* const grid = new FieldGrid;
    grid->addField("Telescope RA Slew", field("txtDeltaRA", 6), "°");
    grid->addRow(row({named<QRadioButton>("optSlewEast"), named<QRadioButton>("optSlewWest")}, true));
    grid->addField("Exposure", field("txtExposeInterval", 6), "s");
    grid->addField("Delay after slew (sec)", field("txtDelayAfterSlew", 6));
    grid->addField("Post-exp delay (sec)", field("txtPostExpDelay", 6));
    const int row = grid->rowCount();
    LineField* const plates = field("txtPlates", 2);
    LineField* const exposures = field("txtPlateExposures", 2);
    exposures->setAccessibleName(Text::tr("Exposures of each plate"));
    grid->addWidget(labelOf(*plates, Text::tr("Plates × exposures")), row, 0);
    grid->addLayout(qt::row({plates, new QLabel("×"), exposures}), row, 1, 1, 2);
    grid->addRow(qt::row({named<QCheckBox>("chkTurnByHand"), button("cmdPreflight")}, true));
    grid->addRow(named<QLabel>("lblProspect"));
    return group(Text::tr("Measurement"), grid);
}

QGroupBox* exposureGroup() {
    auto* const grid = new FieldGrid;
    grid->addField("Exposure ", field("txtContinuousExposeInterval", 6), "s");
    grid->addField("Delay ", field("txtContinuousExposeDelay", 6), "s");
    grid->addField("Line width", listField("cmbCrossHairWidth", 3));
    grid->addRow(
        row({named<QCheckBox>("chkExposeContinuousEnable"), named<QCheckBox>("chkCrossHairEnable")}, true));
    QPushButton* const expose = button("cmdExpose");
    // The widest of its captions, so that the row doesn't move.
    expose->setMinimumWidth(expose->fontMetrics().horizontalAdvance("Stoping Exp.") + 34);
    grid->addRow(row({expose, button("cmdExposeSolve")}));
    return group(Text::tr("Single exposures"), grid);
}

/// What goes on, under the lamps.
QLayout* progress() {
    auto* const line = named<QLabel>("lblProgress");
    line->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    auto* const bar = named<GaugeBar>("gaugeProgress");
    bar->setAccessibleName(Text::tr("Progress"));
    auto* const column = new QVBoxLayout;
    column->setSpacing(4);
    column->addWidget(line);
    column->addWidget(bar);
    return column;
}

QWidget* errorPlotPage(const Theme& theme) {
    auto* const page = new QWidget;
    auto* const column = new QVBoxLayout(page);
    column->setContentsMargins(0, 6, 0, 0);
    auto* const picture = named<PictureWidget>("picErrorPlot", theme, DrawingKind::kChart);
    picture->setMinimumHeight(picture->fontMetrics().height() * 5);
    picture->setAccessibleName(Text::tr("Declination errors of the plates"));
    column->addWidget(picture, 1);
    auto* const values = new QHBoxLayout;
    LineField* const range = field("txtRARange", 8);
    LineField* const error = field("txtDecError", 8);
    values->addLayout(row({labelOf(*range, Text::tr("RA range")), range, new QLabel("°")}));
    values->addStretch();
    values->addLayout(row({labelOf(*error, Text::tr("Dec error")), error, new QLabel("°")}));
    column->addLayout(values);
    return page;
}

QLabel* advice(const char* name) {
    auto* const label = named<QLabel>(name);
    scaleFont(*label, 1.35, true);
    label->setWordWrap(true);
    label->setMinimumSize(label->fontMetrics().horizontalAdvance("Elevation 118.1' too far"),
                          label->fontMetrics().lineSpacing() * 2);
    label->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    return label;
}

QWidget* resultPage(const Theme& theme, const Density& density) {
    auto* const page = new QWidget;
    auto* const columns = new QHBoxLayout(page);
    columns->setContentsMargins(0, 6, 0, 0);
    auto* const dial = named<PictureWidget>("picDial", theme, DrawingKind::kDial);
    const int side = dial->fontMetrics().height() * density.dialLines;
    dial->setMinimumSize(side, side);
    dial->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Ignored);
    dial->setAccessibleName(Text::tr("Pole and mount's axis"));
    columns->addWidget(dial, 1);
    auto* const words = new QVBoxLayout;
    words->addWidget(advice("lblAzimuthAdvice"));
    words->addWidget(advice("lblElevationAdvice"));
    auto* const total = named<QLabel>("lblTotal");
    total->setWordWrap(true);
    total->setMinimumHeight(total->fontMetrics().lineSpacing() * 2);
    words->addWidget(total);
    words->addStretch();
    words->addWidget(named<IndicatorLabel>("lblVerdict"));
    LineField* const tolerance = field("txtTolerance", 4);
    words->addLayout(row({labelOf(*tolerance, Text::tr("Tolerance")), tolerance, new QLabel("'")}, true));
    words->setSpacing(4);
    columns->addLayout(words);
    return page;
}

/// What came of it: in words, and how well the plates agree.
QWidget* outcome(const Theme& theme, const Density& density) {
    auto* const pages = new QTabWidget;
    pages->setDocumentMode(true);
    pages->setAccessibleName(Text::tr("Result"));
    pages->addTab(resultPage(theme, density), Text::tr("Result"));
    pages->addTab(errorPlotPage(theme), Text::tr("Declination errors"));
    return pages;
}

QLayout* windowButtons() {
    auto* const row = new QHBoxLayout;
    row->setSpacing(8);
    for (const char* name : {"cmdPolarPlot", "cmdTelescope", "cmdLog"}) {
        auto* const button = named<QPushButton>(name);
        button->setProperty(kBreaksCaption, true);
        button->setMinimumHeight(button->fontMetrics().lineSpacing() * 2 + 18);
        button->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
        row->addWidget(button);
    }
    return row;
}

QWidget* runTab(const Theme& theme, const Density& density) {
    auto* const steps = new QWidget;
    auto* const left = new QVBoxLayout(steps);
    left->setContentsMargins({});
    left->setSpacing(density.spacing);
    left->addWidget(instructions(density), 2);
    left->addLayout(indicators());
    left->addLayout(progress());
    left->addLayout(guidance());
    left->addLayout(runButtons(density));
    left->addWidget(outcome(theme, density), 3);
    auto* const values = new QWidget;
    auto* const right = new QVBoxLayout(values);
    right->setContentsMargins({});
    right->setSpacing(8);
    right->addWidget(measurementGroup());
    right->addWidget(exposureGroup());
    right->addStretch();
    right->addLayout(windowButtons());
    auto* const page = new QWidget;
    auto* const columns = new QHBoxLayout(page);
    columns->setSpacing(8);
    columns->addWidget(new ScrollColumn(steps), 1);
    columns->addWidget(new ScrollColumn(values));
    return page;
}

// ---- Set-up ----

/// Puts the label, the field and the button that chooses a folder into a row of the grid.
void addFolder(QGridLayout& grid, int row, const QString& label, const char* path, const char* button,
               int span) {
    auto* const line = named<LineField>(path);
    auto* const choose = named<QPushButton>(button);
    line->setMinimumSize(line->fontMetrics().averageCharWidth() * 18, line->fontMetrics().height() + 12);
    choose->setMinimumHeight(line->minimumHeight());
    choose->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    choose->setAccessibleName(label);
    grid.addWidget(labelOf(*line, label), row, 0);
    grid.addLayout(qt::row({line, choose}), row, 1, 1, span);
}

/// A path that a click opens, cut where there is no room for more.
QLabel* realFolder(const char* name) {
    auto* const label = named<FolderLink>(name);
    label->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    label->setToolTip(Text::tr("Opens the folder"));
    return label;
}

QGroupBox* foldersGroup() {
    auto* const grid = new QGridLayout;
    addFolder(*grid, 0, Text::tr("Image path"), "txtImagePath", "Command1", 1);
    grid->addWidget(realFolder("lblImageFolder"), 1, 1);
    addFolder(*grid, 2, Text::tr("Log path"), "txtLogPath", "cmdSetLogPath", 1);
    grid->addWidget(realFolder("lblLogFolder"), 3, 1);
    grid->addWidget(named<QCheckBox>("chkSaveImages"), 4, 1);
    return group(Text::tr("Folders"), grid);
}

QGroupBox* siteGroup() {
    auto* const grid = new FieldGrid;
    constexpr int kAngle = 18;
    grid->addField(Text::tr("Latitude"), field("txtSiteLat", kAngle), "xxd xxm xx.xs  N = + / S = -");
    grid->addField(Text::tr("Longitude"), field("txtSiteLong", kAngle), "xxd xxm xx.xs  E =+ / W= -");
    grid->addRow(named<QCheckBox>("chkUseTelescopeLocation"));
    LineField* const height = field("txtSiteHeight", 6);
    LineField* const pressure = field("txtAirPressure", 6);
    LineField* const temperature = field("txtAirTemperature", 6);
    grid->addRow(row({labelOf(*height, Text::tr("Height")), height, new QLabel("m"),
                      labelOf(*pressure, Text::tr("Pressure")), pressure, new QLabel("hPa"),
                      labelOf(*temperature, Text::tr("Temperature")), temperature, new QLabel("°C")},
                     true));
    return group(Text::tr("Observing site"), grid);
}

QGroupBox* imagingGroup() {
    auto* const box = named<QGroupBox>("frmImagingSW");
    auto* const column = new QVBoxLayout(box);
    column->addLayout(
        row({named<QRadioButton>("optImagingSoftware(0)"), named<QRadioButton>("optImagingSoftware(1)"),
             named<QRadioButton>("optImagingSoftware(2)")},
            true));
    column->addLayout(
        row({named<QCheckBox>("chkUseCCDSoftSubFrame"), button("cmdCamera"), button("cmdDevices")}, true));
    return box;
}

QGroupBox* messagesGroup() {
    LineField* const time = field("txtMsgDisplayTime", 6);
    return group(Text::tr("Messages"), row({labelOf(*time, Text::tr("Message display time")), time,
                                            new QLabel("s"), named<QCheckBox>("chkCloseSound")},
                                           true));
}

QWidget* setupTab() {
    auto* const page = new QWidget;
    auto* const column = new QVBoxLayout(page);
    column->setSpacing(10);
    column->addWidget(foldersGroup());
    column->addWidget(siteGroup());
    column->addWidget(imagingGroup());
    column->addWidget(messagesGroup());
    column->addStretch();
    return page;
}

// ---- Plate Solve ----

QGroupBox* detectionGroup() {
    auto* const grid = new FieldGrid;
    grid->addField("Min Size", field("txtSolveMinSiz", 7), "pixels");
    grid->addField("Min Bright", field("txtSolveMinBrt", 7), "raw flux");
    grid->addField("Min Sigma", field("txtSolveMinSig", 7), "σ");
    grid->addField("Filter FWHM", field("txtSolveFilter", 7), "arcsec");
    grid->setRowStretch(grid->rowCount(), 1);
    return group("Object Detection", grid);
}

QGroupBox* plateGroup() {
    auto* const grid = new FieldGrid;
    grid->addField("Horiz Scale", field("txtSolveScaleH", 7), "arcsec/pixel");
    grid->addField("Vert Scale", field("txtSolveScaleV", 7), "arcsec/pixel");
    grid->addRow(row({button("cmdGetImageScale(0)")}, true));
    grid->setRowStretch(grid->rowCount(), 1);
    return group("Plate Parameters", grid);
}

QGroupBox* solveGroup() {
    auto* const grid = new FieldGrid;
    grid->addField("Minimum # stars to match:", field("txtSolveMinStars", 7), "0 = auto");
    grid->addField("Max. match res. (arcsec):", field("txtSolveMaxRes", 7), "0 = auto");
    grid->addField("Max Solve Stars", field("txtMaxSolveStars", 7), "0 = use all stars");
    return group("Solve Parameters (advanced)", grid);
}

QLayout* catalogTestRow() {
    auto* const result = named<QLabel>("lblCatTest");
    result->setText("Test passed\n(see log)");
    result->setMinimumSize(result->sizeHint());  // whatever it says, the window stays as it is
    return row({button("cmdTestCatPath"), result}, true);
}

QGroupBox* catalogGroup() {
    auto* const grid = new FieldGrid;
    QComboBox* const catalog = listField("cmbppCat", 12);
    grid->addWidget(labelOf(*catalog, "Catalog"), 0, 0);
    grid->addWidget(catalog, 0, 1, 1, 3, Qt::AlignLeft);
    addFolder(*grid, 1, "Path", "txtCatPath", "cmdSetDir", 3);
    grid->addField("Expansion (%)", field("txtCatExp", 7));
    grid->addField("Max Mag.", field("txtCatMaxMag", 7));
    grid->addRow(catalogTestRow());
    return group("Reference Catalog", grid);
}

QGroupBox* pinPointFrame() {
    auto* const frame = named<QGroupBox>("framePP");
    auto* const grid = new QGridLayout(frame);
    grid->setSpacing(10);
    grid->addWidget(detectionGroup(), 0, 0);
    grid->addWidget(plateGroup(), 0, 1);
    grid->addWidget(solveGroup(), 1, 0, Qt::AlignTop);
    grid->addWidget(catalogGroup(), 1, 1);
    grid->addWidget(named<QCheckBox>("chkSpiralSearch"), 2, 0, 1, 2);
    auto* const hint =
        new QLabel("Mosaic is controlled by catalog expansion above. Suggest 30-50% for spiral searching.");
    hint->setWordWrap(true);
    grid->addWidget(hint, 3, 0, 1, 2);
    grid->setColumnStretch(0, 1);
    grid->setColumnStretch(1, 1);
    return frame;
}

QGroupBox* theSkyFrame() {
    auto* const frame = named<QGroupBox>("frameTheSky");
    auto* const column = new QVBoxLayout(frame);
    column->addWidget(group(
        "Image Link Connection",
        row({named<QRadioButton>("optImageLinkCCDSoft"), named<QRadioButton>("optImageLinkTheSky")}, true)));
    auto* const grid = new FieldGrid;
    grid->addField("Image Scale", field("txtTheSkyImageScale", 7), "arcsec/pixel");
    grid->addField("Screen FOV (degree)", field("txtTheSkyScreenFOV", 7));
    grid->addRow(row({button("cmdGetImageScale(1)")}, true));
    column->addLayout(grid);
    column->addStretch();
    return frame;
}

QWidget* plateSolveTab() {
    QLayout* const methods = row(
        {named<QRadioButton>("optPlateSolveMethod(0)"), named<QRadioButton>("optPlateSolveMethod(1)")}, true);
    auto* const page = new QWidget;
    auto* const column = new QVBoxLayout(page);
    column->addWidget(group("Plate Solve", methods));
    // The two methods' frames share their place.
    auto* const frames = new QGridLayout;
    for (QGroupBox* frame : {pinPointFrame(), theSkyFrame()}) {
        keepRoom(*frame);
        frames->addWidget(frame, 0, 0);
    }
    column->addLayout(frames, 1);
    return page;
}

/// What is ready.
QWidget* equipmentLamps() {
    auto* const lamps = new QWidget;
    auto* const line = new QHBoxLayout(lamps);
    line->setContentsMargins({});
    line->setSpacing(2);
    const struct {
        const char* name;
        Words widest;
    } all[] = {{"cmdMountStatus", Words::tr("Mount ready")},
               {"cmdCameraStatus", Words::tr("Camera failed")},
               {"cmdSolverStatus", Words::tr("Solver ready")},
               {"cmdSiteStatus", Words::tr("Site set")}};
    for (const auto& [name, widest] : all) {
        auto* const lamp = named<StatusLamp>(name);
        lamp->setMinimumWidth(lamp->widthFor(inWords(widest)));
        line->addWidget(lamp);
    }
    return lamps;
}

/// Beside the tabs, where there is room; what is longer can be read in the log.
QWidget* lastMessage() {
    auto* const message = named<StatusLamp>("cmdLastMessage");
    message->setFixedWidth(message->fontMetrics().averageCharWidth() * 56);
    message->setAccessibleName(Text::tr("Last message"));
    auto* const corner = new QWidget;
    auto* const line = new QHBoxLayout(corner);
    constexpr int kRaised = 8;  // to the height of the tabs' captions
    line->setContentsMargins(0, 0, 0, kRaised);
    line->addWidget(message);
    keepRoom(*message);
    return corner;
}

/// The menus, and the lamps behind them.
QWidget* topLine() {
    auto* const line = new QWidget;
    auto* const bar = new QMenuBar;
    QMenu* const file = bar->addMenu("&File");
    menuItem(*file, "mnuSolvePicture")->setShortcut(QKeySequence::Open);
    menuItem(*file, "mnuFileExit");
    QMenu* const set = bar->addMenu("&Set");
    set->setObjectName("menuSet");
    menuItem(*set, "mnuSetOnTop", true);
    menuItem(*set, "mnuSetOptions");
    menuItem(*set, "mnuNight")->setShortcut(QKeySequence("Ctrl+N"));
    menuItem(*set, "mnuDimmer")->setShortcut(QKeySequence("Ctrl+Shift+N"));
    QMenu* const help = bar->addMenu("&Help");
    menuItem(*help, "mnuFormHelp");
    menuItem(*help, "mnuWelcome");
    menuItem(*help, "mnuAbout");
    auto* const layout = new QHBoxLayout(line);
    layout->setContentsMargins({});
    layout->addWidget(bar);
    layout->addStretch();
    layout->addWidget(equipmentLamps());
    return line;
}

}  // namespace

MainWindow::MainWindow(app::frmMain& form, const Front& front) : FormWindow(form, front) {
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(6, 0, 6, 6);
    QWidget* const top = topLine();
    layout->setMenuBar(top);
    auto* const tabs = new QTabWidget;
    tabs->setDocumentMode(true);
    tabs->setAccessibleName(Text::tr("Pages"));
    const Density density = form.screen().workArea().height < kLowScreen ? kTight : Density{};
    tabs->addTab(new ScrollPage(runTab(front.theme, density)), "Run");
    tabs->addTab(new ScrollPage(setupTab()), Text::tr("Set-up"));
    tabs->addTab(new ScrollPage(plateSolveTab()), "Plate Solve");
    tabs->setCornerWidget(lastMessage());
    layout->addWidget(tabs);
    bind();
    setMinimumWidth(std::min(top->minimumSizeHint().width(), form.screen().workArea().width));
    pageWanted_ = form.pageWanted.subscribe(
        [tabs](app::frmMain::Page page) { tabs->setCurrentIndex(static_cast<int>(page)); });
    addKeys();
    findChild<QPushButton*>("cmdRun")->setFocus();
    nextChanged_ = form.run.cmdNext.changed.subscribe([this] { offerAnswer(); });
}

/// For gloves, and whatever window of the program has the keyboard; only Esc is the other windows' own.
void MainWindow::addKeys() {
    const struct {
        const char* keys;
        const char* button;
        Qt::ShortcutContext where = Qt::ApplicationShortcut;
    } keys[] = {{"F5", "cmdRun"},     {"F8", "cmdSkip"},          {"Esc", "cmdStop", Qt::WindowShortcut},
                {"Ctrl+L", "cmdLog"}, {"Ctrl+P", "cmdPolarPlot"}, {"Ctrl+T", "cmdTelescope"}};
    for (const auto& [sequence, name, where] : keys) {
        auto* const shortcut = new QShortcut(QKeySequence(sequence), this);
        shortcut->setContext(where);
        shortcut->setAutoRepeat(false);
        auto* const button = findChild<QPushButton*>(name);
        connect(shortcut, &QShortcut::activated, button, [button] { button->click(); });
    }
    connect(new QShortcut(QKeySequence("F11"), this), &QShortcut::activated, this,
            [this] { setWindowState(windowState() ^ Qt::WindowFullScreen); });
}

/// A prompt enables Next, which then has the keyboard, unless the operator is in the middle of a field.
void MainWindow::offerAnswer() {
    const bool enabled = form().find("cmdNext")->enabled();
    if (std::exchange(nextWasEnabled_, enabled) == enabled || !enabled) return;
    auto* const next = findChild<QPushButton*>("cmdNext");
    const auto* const line = qobject_cast<QLineEdit*>(focusWidget());
    const bool inField =
        (line != nullptr && !line->isReadOnly()) || qobject_cast<QComboBox*>(focusWidget()) != nullptr;
    if (next->isVisible() && !inField) next->setFocus();
}

}  // namespace vantrel::qt
