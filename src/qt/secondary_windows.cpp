#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QFontDatabase>
#include <QGroupBox>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QMouseEvent>
#include <QPainter>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QShortcut>
#include <QVBoxLayout>
#include <algorithm>
#include <map>
#include <stdexcept>

#include "qt/big_digits.h"
#include "qt/gauge_bar.h"
#include "qt/parts.h"
#include "qt/picture_widget.h"
#include "qt/plate_view.h"
#include "qt/qr_view.h"
#include "qt/translation.h"
#include "qt/window_keys.h"
#include "qt/windows.h"

namespace vantrel::qt {

// ---- Log ----

LogWindow::LogWindow(platform::Form& form, const Front& front) : FormWindow(form, front) {
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(6, 0, 6, 6);
    auto* const bar = new QMenuBar;
    QMenu* const files = bar->addMenu("&Files");
    menuItem(*files, "mnuClear");
    menuItem(*files, "mnuClose");
    menuItem(*bar->addMenu("&Set"), "mnuOnTop", true);
    layout->setMenuBar(bar);
    auto* const text = named<QPlainTextEdit>("txtLog");
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setPointSizeF(text->font().pointSizeF());
    font.setStyleStrategy(text->font().styleStrategy());
    text->setFont(font);
    text->setProperty(kFollowsEnd, true);
    text->setAccessibleName(Text::tr("Log"));
    layout->addWidget(text);
    bind();
}

// ---- Telescope ----

TelescopeWindow::TelescopeWindow(platform::Form& form, const Front& front) : FormWindow(form, front) {
    auto* const layout = new QVBoxLayout(&scrolledPage());
    auto* const box = named<QGroupBox>("fraTelescopeSelection");
    auto* const grid = new QGridLayout(box);
    grid->setSpacing(8);
    constexpr int kName = 42;
    auto* const name = named<LineField>("txtTelescopeName");
    name->setAccessibleName(Text::tr("Telescope"));
    name->setMinimumHeight(name->fontMetrics().height() + 12);
    name->setMinimumWidth(name->fontMetrics().horizontalAdvance('0') * kName);
    grid->addWidget(name, 0, 0, 1, 2);
    int cell = 0;
    for (const char* command :
         {"cmdPickTelescope", "cmdTelescopeSetup", "cmdConnectTelescope", "cmdDisconnectTelescope"}) {
        grid->addWidget(button(command), 1 + cell / 2, cell % 2);
        ++cell;
    }
    grid->setRowStretch(3, 1);
    layout->addWidget(box, 1);
    auto* const status = named<LineField>("txtTelescopeSelectionStatus");
    status->setMinimumHeight(status->fontMetrics().height() + 12);
    layout->addLayout(row({labelOf(*status, Text::tr("Status")), status}));
    bind();
}

// ---- Polar plot ----

namespace {

/// A value, its unit and what it says.
void addReadout(QGridLayout& grid, const QString& title, const char* value, QLabel* unit, QLabel* meaning) {
    const int row = grid.rowCount();
    auto* const readout = named<Readout>(value, 9);
    readout->setAccessibleDescription(title);
    grid.addWidget(new QLabel(title), row, 0);
    grid.addWidget(readout, row, 1);
    grid.addWidget(unit, row, 2);
    if (meaning != nullptr) grid.addWidget(meaning, row, 3);
}

QLabel* unitLabel(const char* name) {
    auto* const label = named<QLabel>(name);
    label->setMinimumWidth(label->fontMetrics().horizontalAdvance("arc-min") + 4);
    keepRoom(*label);
    return label;
}

QLabel* meaningLabel(const char* name, const char* widest) {
    auto* const label = named<QLabel>(name);
    label->setMinimumWidth(label->fontMetrics().horizontalAdvance(widest) + 4);
    return label;
}

/// How uncertain the grid's last value is, in this column.
void addSigma(QGridLayout& grid, const char* name, int column) {
    auto* const sigma = named<Readout>(name, 6);
    sigma->setAccessibleDescription(Text::tr("Uncertainty in arc-seconds"));
    grid.addLayout(row({new QLabel("±"), sigma, new QLabel("″")}), grid.rowCount() - 1, column);
}

QPushButton* exportMenu() {
    auto* const menu = new QMenu;
    for (const char* item : {"mnuCopyPicture", "mnuCopyValues", "mnuSavePng", "mnuSaveSvg"})
        menuItem(*menu, item);
    auto* const opener = new QPushButton(Text::tr("Copy or save"));
    opener->setMenu(menu);
    menu->setParent(opener, menu->windowFlags());
    return opener;
}

QGridLayout* readoutGrid() {
    auto* const grid = new QGridLayout;
    grid->setHorizontalSpacing(8);
    grid->setVerticalSpacing(6);
    grid->setColumnStretch(3, 1);
    // The fields of all groups stand below each other.
    grid->setColumnMinimumWidth(0, QFontMetrics(QApplication::font()).horizontalAdvance("East-West") + 4);
    return grid;
}

}  // namespace

PolarPlotWindow::PolarPlotWindow(platform::Form& form, const Front& front) : FormWindow(form, front) {
    auto* const layout = new QHBoxLayout(this);
    layout->setSpacing(12);
    auto* const dial = named<PictureWidget>("picPolarPlot", front.theme, DrawingKind::kDial);
    const int side = dial->fontMetrics().height() * 10;
    dial->setMinimumSize(side, side);
    dial->setAccessibleName(Text::tr("Pole and mount's axis"));
    auto* const left = new QVBoxLayout;
    left->addWidget(dial, 1);
    left->addWidget(named<QCheckBox>("chkHistory"));
    left->addLayout(row({exportMenu()}, true));
    auto* const exported = named<QLabel>("lblExport");
    exported->setWordWrap(true);
    exported->setMinimumHeight(exported->fontMetrics().lineSpacing());
    left->addWidget(exported);
    layout->addLayout(left, 1);

    auto* const axis = readoutGrid();
    addReadout(*axis, Text::tr("Distance"), "txtMagnitude", unitLabel("lblRA_Unit"),
               meaningLabel("lblFromPole", " from pole"));
    addReadout(*axis, Text::tr("Angle"), "txtAngle", new QLabel("°"), new QLabel(Text::tr(" CCW from up")));
    auto* const parts = readoutGrid();
    addReadout(*parts, "Elevation", "txtAltitudeError", unitLabel("lblElevation_Unit"),
               meaningLabel("lblUpFromPole", " Up from pole"));
    addSigma(*parts, "txtElevationSigma", 4);
    addReadout(*parts, "Azimuth", "txtAzimuthError", unitLabel("lblAzimuth_Unit"),
               meaningLabel("lblRightOfPole", " Right of pole"));
    addSigma(*parts, "txtAzimuthSigma", 4);
    auto* const onSky = named<QLabel>("lblOnSky");
    onSky->setWordWrap(true);
    onSky->setMinimumHeight(onSky->fontMetrics().lineSpacing());
    parts->addWidget(onSky, parts->rowCount(), 0, 1, 5);
    axis->addWidget(named<QLabel>("lblUnits"), axis->rowCount() - 1, 4);
    auto* const offsets = readoutGrid();
    addReadout(*offsets, "RA", "txtOffsetRA", new QLabel("h"), nullptr);
    addReadout(*offsets, "Dec", "txtOffsetDec", new QLabel("°"), nullptr);
    auto* const estimate = readoutGrid();
    addReadout(*estimate, "Elevation", "txtEstimateElevation", new QLabel("arc-min"), nullptr);
    addSigma(*estimate, "txtEstimateElevationSigma", 4);
    addReadout(*estimate, "Azimuth", "txtEstimateAzimuth", new QLabel("arc-min"), nullptr);
    addSigma(*estimate, "txtEstimateAzimuthSigma", 4);
    addReadout(*estimate, "±", "txtUncertainty", new QLabel("arc-sec"), nullptr);
    estimate->addLayout(row({button("cmdHistory"), button("cmdPlates")}), estimate->rowCount() - 1, 3, 1, 2);
    auto* const doubt = named<QLabel>("lblDoubt");
    doubt->setWordWrap(true);
    doubt->setMinimumHeight(doubt->fontMetrics().lineSpacing());
    keepRoom(*doubt);
    estimate->addWidget(doubt, estimate->rowCount(), 0, 1, 5);
    auto* const position = readoutGrid();
    addReadout(*position, Text::tr("East-West"), "txtPositionEastWest", new QLabel, nullptr);
    addReadout(*position, Text::tr("Up-Down"), "txtPositionUpDown", new QLabel, nullptr);

    // The dial stays in view where only the readouts have to scroll.
    auto* const readouts = new QWidget;
    auto* const column = new QVBoxLayout(readouts);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(6);
    column->addWidget(group(Text::tr("Mount's axis"), axis));
    column->addWidget(group(Text::tr("Elevation and azimuth"), parts));
    column->addWidget(group(Text::tr("Least squares"), estimate));
    column->addWidget(group(Text::tr("Offsets of the mount's readings"), offsets));
    QGroupBox* const positionGroup = group(Text::tr("Position"), position);
    column->addWidget(positionGroup);
    column->addStretch();
    layout->addWidget(new ScrollColumn(readouts));
    hideWhileEmpty(*positionGroup, {"txtPositionEastWest", "txtPositionUpDown"});
    bind();
}

/// A group of boxes that hold nothing would only raise a question.
void PolarPlotWindow::hideWhileEmpty(QGroupBox& group, const std::vector<std::string>& boxes) {
    std::vector<const platform::TextBox*> texts;
    texts.reserve(boxes.size());
    for (const std::string& name : boxes)
        texts.push_back(dynamic_cast<const platform::TextBox*>(form().find(name)));
    const auto follow = [texts, &group] {
        group.setVisible(std::any_of(texts.begin(), texts.end(), [](const platform::TextBox* box) {
            return box != nullptr && !box->text().empty();
        }));
    };
    follow();
    filled_.reserve(boxes.size());
    for (const std::string& name : boxes) filled_.push_back(form().find(name)->changed.subscribe(follow));
}

// ---- Measurements ----

namespace {

/// One adjuster's arrow and digits, to be read from three metres, and what its bolt has to do.
QGroupBox* adjusterGroup(const QString& title, const std::string& name) {
    const auto label = [&](const char* what, double size, const char* widest) {
        auto* const made = named<QLabel>(("lbl" + name + what).c_str());
        scaleFont(*made, size, size > 1);
        made->setMinimumWidth(made->fontMetrics().horizontalAdvance(widest));
        made->setMinimumHeight(made->fontMetrics().height());
        return made;
    };
    auto* const grid = new QGridLayout;
    grid->addWidget(label("Arrow", 3.2, "←"), 0, 0, 2, 1);
    grid->addWidget(label("Move", 3.2, "Elevation is right"), 0, 1, 1, 2);
    grid->addWidget(label("Sigma", 1.6, "± 118.8'"), 1, 1);
    grid->addWidget(label("Bolt", 1.6, "three quarters of a turn"), 1, 2);
    grid->setColumnStretch(2, 1);
    grid->setRowStretch(3, 1);
    LineField* const perTurn = field(("txt" + name + "PerTurn").c_str(), 5);
    grid->addLayout(row({labelOf(*perTurn, Text::tr("A turn of the bolt")), perTurn, new QLabel("'"),
                         named<QCheckBox>(("chk" + name + "OtherWay").c_str())},
                        true),
                    2, 1, 1, 2);
    return group(title, grid);
}

}  // namespace

AdjustWindow::AdjustWindow(platform::Form& form, const Front& front) : FormWindow(form, front) {
    auto* const dial = named<PictureWidget>("picAdjust", front.theme, DrawingKind::kDial);
    const int side = dial->fontMetrics().height() * 11;
    dial->setMinimumSize(side, side);
    dial->setAccessibleName(Text::tr("Pole and mount's axis"));
    auto* const state = named<QLabel>("lblLiveState");
    scaleFont(*state, 1.6, true);
    state->setWordWrap(true);
    state->setMinimumHeight(state->fontMetrics().lineSpacing() * 2);
    auto* const total = named<QLabel>("lblLiveTotal");
    scaleFont(*total, 1.35);
    total->setMinimumWidth(total->fontMetrics().horizontalAdvance("Total 118.8' ± 118.8'"));
    auto* const age = named<QLabel>("lblAge");
    scaleFont(*age, 1.35);
    age->setMinimumWidth(age->fontMetrics().horizontalAdvance("1000 s old"));

    auto* const adjusters = new QVBoxLayout;
    adjusters->addWidget(adjusterGroup(Text::tr("Azimuth"), "Azimuth"));
    adjusters->addWidget(adjusterGroup(Text::tr("Elevation"), "Elevation"));
    auto* const beside = new QVBoxLayout;
    beside->addWidget(dial, 1);
    beside->addWidget(total);
    beside->addWidget(age);
    auto* const columns = new QHBoxLayout;
    columns->addLayout(adjusters, 2);
    columns->addLayout(beside, 1);
    auto* const page = new QVBoxLayout(&scrolledPage());
    page->addWidget(state);
    page->addLayout(columns, 1);
    auto* const buttons = new QHBoxLayout;
    for (const char* name : {"cmdLock", "cmdBothTurned", "cmdMeasureAgain", "cmdEndAdjust"})
        buttons->addWidget(bigButton(name));
    auto* const phone = named<QLabel>("lblPhone");
    phone->setTextInteractionFlags(Qt::TextSelectableByMouse);
    phone->setMinimumHeight(phone->fontMetrics().height());
    auto& adjust = dynamic_cast<correction::frmAdjust&>(form);
    auto* const below = new QVBoxLayout;
    below->addLayout(row({named<QCheckBox>("chkDoneSound"), named<QCheckBox>("chkTones"),
                          named<QCheckBox>("chkSpoken"), named<QCheckBox>("chkPhone")},
                         true));
    below->addWidget(phone);
    below->addLayout(buttons);
    auto* const foot = new QHBoxLayout;
    foot->addLayout(below, 1);
    foot->addWidget(new QrView(adjust.lblPhone, front.theme));
    page->addLayout(foot);
    bind();
    auto* const digits = new BigDigits(adjust, *this);
    connect(new QShortcut(QKeySequence("F11"), this), &QShortcut::activated, digits,
            [digits] { digits->toggle(); });
}

HistoryWindow::HistoryWindow(platform::Form& form, const Front& front) : FormWindow(form, front) {
    auto* const chart = named<PictureWidget>("picHistory", front.theme, DrawingKind::kChart);
    const int line = chart->fontMetrics().height();
    chart->setMinimumSize(line * 20, line * 10);
    chart->setAccessibleName(Text::tr("Distance from the pole over the nights"));
    QComboBox* const measurement = listField("cmbMeasurement", 22);
    auto* const text = named<QPlainTextEdit>("txtMeasurement");
    text->setAccessibleName(Text::tr("The measurement"));
    text->setMinimumSize(text->fontMetrics().averageCharWidth() * 60,
                         text->fontMetrics().lineSpacing() * 4 + 16);
    text->setMaximumHeight(text->minimumHeight());
    QPushButton* const ok = button("cmdOK");
    auto* const page = new QVBoxLayout(&scrolledPage());
    page->addWidget(chart, 1);
    page->addLayout(row({labelOf(*measurement, Text::tr("The measurement")), measurement}, true));
    page->addWidget(text);
    page->addLayout(row({ok}));
    answerWithEnter(*ok);
    bind();
}

// ---- Plates ----

PlatesWindow::PlatesWindow(platform::Form& form, const Front& front) : FormWindow(form, front) {
    auto* const table = new QGridLayout;
    table->setHorizontalSpacing(14);
    table->setVerticalSpacing(4);
    int column = 0;
    for (const QString& heading : {Text::tr("Plate"), Text::tr("Hour angle"), Text::tr("Declination"),
                                   Text::tr("Off along"), Text::tr("Off across")})
        table->addWidget(new QLabel(heading), 0, column++);
    for (int number = 1; form.find("chkPlate(" + std::to_string(number) + ")") != nullptr; ++number) {
        const auto member = [number](const char* name) {
            return name + ("(" + std::to_string(number) + ")");
        };
        table->addWidget(named<QCheckBox>(member("chkPlate").c_str()), number, 0);
        column = 1;
        for (const char* cell : {"lblHourAngle", "lblDeclination", "lblAlong", "lblAcross"})
            table->addWidget(named<QLabel>(member(cell).c_str()), number, column++, Qt::AlignRight);
    }
    auto* const verdict = named<QPlainTextEdit>("txtVerdict");
    verdict->setAccessibleName(Text::tr("Whether the plates agree"));
    verdict->setMinimumSize(verdict->fontMetrics().averageCharWidth() * 60,
                            verdict->fontMetrics().lineSpacing() * 3 + 16);
    QPushButton* const ok = button("cmdOK");
    auto* const page = new QVBoxLayout(&scrolledPage());
    page->addLayout(table);
    page->addStretch();
    page->addWidget(verdict);
    page->addWidget(named<QCheckBox>("chkEstimate"));
    QComboBox* const again = listField("cmbRedo", 3);
    page->addLayout(row({labelOf(*again, Text::tr("Take again")), again, button("cmdRedo")}, true));
    page->addLayout(row({ok}));
    answerWithEnter(*ok);
    bind();
}

// ---- Before the slew ----

PreflightWindow::PreflightWindow(platform::Form& form, const Front& front) : FormWindow(form, front) {
    auto* const layout = new QHBoxLayout(this);
    layout->setSpacing(12);
    auto* const map = named<PictureWidget>("picSky", front.theme, DrawingKind::kDial);
    const int side = map->fontMetrics().height() * 14;
    map->setMinimumSize(side, side);
    map->setAccessibleName(Text::tr("The sky by expected uncertainty"));
    layout->addWidget(map, 1);

    auto* const page = new QWidget;
    auto* const column = new QVBoxLayout(page);
    column->setContentsMargins({});
    auto* const forecast = named<QPlainTextEdit>("txtForecast");
    forecast->setAccessibleName(Text::tr("What is to be expected"));
    forecast->setMinimumSize(forecast->fontMetrics().averageCharWidth() * 46,
                             forecast->fontMetrics().lineSpacing() * 7);
    column->addWidget(group(Text::tr("What is to be expected"), row({forecast})), 1);
    auto* const sky = new FieldGrid;
    sky->addField(Text::tr("Lowest altitude"), field("txtLowest", 6), "°");
    sky->addField(Text::tr("Horizon file"), field("txtHorizon", 20));
    column->addWidget(group(Text::tr("Free sky"), sky));
    LineField* const proposal = field("txtProposal", 40);
    auto* const better = new QVBoxLayout;
    better->addWidget(proposal);
    better->addLayout(row({button("cmdSlewThere")}, true));
    proposal->setAccessibleName(Text::tr("Proposal"));
    column->addWidget(group(Text::tr("Proposal"), better));
    QPushButton* const ok = button("cmdOK");
    column->addLayout(row({button("cmdLook"), ok}));
    layout->addWidget(new ScrollColumn(page));
    answerWithEnter(*ok);
    bind();
}

// ---- Pixel scale calculator ----

PixelScaleWindow::PixelScaleWindow(platform::Form& form, const Front& front) : FormWindow(form, front) {
    auto* const layout = new QVBoxLayout(&scrolledPage());
    auto* const bar = new QMenuBar;
    menuItem(*bar->addMenu("&File"), "mnuExit");
    this->layout()->setMenuBar(bar);
    constexpr int kFigures = 8;
    auto* const grid = new QGridLayout;
    grid->setHorizontalSpacing(8);
    grid->setVerticalSpacing(6);
    auto add = [grid, line = 0](const QString& label, QWidget* first, QWidget* second) mutable {
        grid->addWidget(labelOf(*first, label), line, 0);
        grid->addWidget(first, line, 1);
        if (second != nullptr) {
            if (!label.isEmpty())
                second->setAccessibleName(
                    label + (second->inherits("QComboBox") ? Text::tr(", unit") : Text::tr(", vertical")));
            grid->addWidget(second, line, 2);
        }
        ++line;
    };
    add("Telescope Focal Length", field("txtFL", kFigures), listField("cmbUnits", 4));
    add("", new QLabel(Text::tr("Horizontal")), new QLabel(Text::tr("Vertical")));
    add("Unbinned pixel size (um)", field("txtPixelSizeX", kFigures), field("txtPixelSizeY", kFigures));
    add("Unbinned CCD Scale arcsec/ pixel", field("txtUnbinnedCCDScaleHoriz", kFigures),
        field("txtUnbinnedCCDScaleVert", kFigures));
    add("Camera binning", listField("cmbCamBin", 4), nullptr);
    add("Image Scale arcsec/ pixel", field("txtPlateScaleHoriz", kFigures),
        field("txtPlateScaleVert", kFigures));
    grid->setColumnStretch(3, 1);
    layout->addLayout(grid);
    layout->addStretch();
    layout->addWidget(button("cmdCalculate"));
    bind();
}

// ---- Solve a picture ----

SolvePictureWindow::SolvePictureWindow(platform::Form& form, const Front& front) : FormWindow(form, front) {
    auto* const layout = new QHBoxLayout(this);
    layout->setSpacing(12);
    layout->addWidget(named<PlateView>("picPlate", front, Text::tr("The picture, matched stars circled"),
                                       Text::tr("Drop a picture here.")),
                      1);

    auto* const page = new QWidget;
    auto* const column = new QVBoxLayout(page);
    column->setContentsMargins({});
    constexpr int kFile = 26;
    LineField* const file = field("txtFile", kFile);
    file->setAcceptDrops(false);  // the window takes them
    QPushButton* const choose = button("cmdChooseFile");
    choose->setAccessibleName(Text::tr("Choose a picture file"));
    QPushButton* const solve = button("cmdSolve");
    auto* const what = new FieldGrid;
    what->addField(Text::tr("File"), file, choose);
    what->addField(Text::tr("Scale, if known"), field("txtScaleHint", kFile), Text::tr("″/pixel"));
    what->addRow(row({solve, button("cmdStop")}));
    column->addWidget(group(Text::tr("Picture"), what));

    auto* const outcome = named<QLabel>("lblOutcome");
    outcome->setWordWrap(true);
    outcome->setTextInteractionFlags(Qt::TextSelectableByMouse);
    outcome->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    constexpr int kLines = 3;
    outcome->setMinimumHeight(outcome->fontMetrics().lineSpacing() * kLines);
    column->addWidget(outcome);
    auto* const remark = named<QLabel>("lblRemark");
    remark->setWordWrap(true);
    remark->setTextInteractionFlags(Qt::TextSelectableByMouse);
    column->addWidget(remark);

    constexpr int kValue = 17;
    auto* const answer = new FieldGrid;
    answer->addField(Text::tr("Right ascension"), field("txtCentreRA", kValue), "J2000");
    answer->addField(Text::tr("Declination"), field("txtCentreDec", kValue), "J2000");
    answer->addField(Text::tr("Scale"), field("txtScale", kValue), Text::tr("″/pixel"));
    answer->addField(Text::tr("Field"), field("txtField", kValue), "°");
    answer->addField(Text::tr("Roll"), field("txtRoll", kValue), "°");
    answer->addField(Text::tr("Position angle"), field("txtPositionAngle", kValue), "°");
    answer->addField(Text::tr("Stars matched"), field("txtMatched", kValue));
    column->addWidget(group(Text::tr("Middle of the picture"), answer));
    column->addStretch();
    column->addLayout(row({button("cmdOK")}));
    layout->addWidget(new ScrollColumn(page));
    answerWithEnter(*solve);
    bind();
    file->setFocus();
}

// ---- Welcome ----

WelcomeWindow::WelcomeWindow(platform::Form& form, const Front& front) : FormWindow(form, front) {
    auto* const layout = new QVBoxLayout(&scrolledPage());
    layout->setContentsMargins(24, 20, 24, 20);
    layout->setSpacing(8);
    auto* const question = named<QLabel>("lblWelcome");
    scaleFont(*question, 1.3, true);
    layout->addWidget(question);
    for (const auto& [choice, explanation] : {std::pair{"cmdTrySimulator", "lblTrySimulator"},
                                              {"cmdMyDevices", "lblMyDevices"},
                                              {"cmdJustSolve", "lblJustSolve"}}) {
        layout->addSpacing(8);
        layout->addWidget(bigButton(choice));
        auto* const text = named<QLabel>(explanation);
        text->setWordWrap(true);
        text->setMinimumWidth(text->fontMetrics().averageCharWidth() * 60);
        layout->addWidget(text);
    }
    layout->addStretch();
    bind();
    findChild<QPushButton*>("cmdTrySimulator")->setFocus();
}

// ---- Devices ----

DevicesWindow::DevicesWindow(platform::Form& form, const Front& front) : FormWindow(form, front) {
    constexpr int kAddress = 30;
    auto* const indi = new FieldGrid;
    indi->addField(Text::tr("Servers"), field("txtIndiServers", kAddress));
    indi->addField(Text::tr("Mount's port"), field("txtMountPort", kAddress));
    indi->addField(Text::tr("Baud rate"), field("txtMountBaudRate", 8));
    indi->addRow(named<QCheckBox>("chkTellMount"));
    auto* const alpaca = new FieldGrid;
    alpaca->addField(Text::tr("Servers"), field("txtAlpacaServers", kAddress));
    alpaca->addField(Text::tr("Port of the search"), field("txtAlpacaPort", 8));
    constexpr int kNumber = 8;
    auto* const camera = new FieldGrid;
    camera->addField(Text::tr("Gain"), field("txtCameraGain", kNumber), named<QLabel>("lblCameraGain"));
    camera->addField(Text::tr("Offset"), field("txtCameraOffset", kNumber), named<QLabel>("lblCameraOffset"));
    LineField* const celsius = field("txtCameraTemperature", kNumber);
    celsius->setAccessibleName(Text::tr("Temperature of the camera, degrees Celsius"));
    camera->addRow(row({named<QCheckBox>("chkCameraCooling"), celsius, new QLabel("°C")}, true));
    camera->addRow(named<QLabel>("lblCameraCooling"));
    auto* const column = new QVBoxLayout(&scrolledPage());
    column->addWidget(group("INDI", indi));
    column->addWidget(group("Alpaca", alpaca));
    column->addWidget(group(Text::tr("Camera"), camera));
    column->addWidget(named<QCheckBox>("chkAbortSlewOnStop"));
    column->addStretch();
    QPushButton* const ok = button("cmdOK");
    column->addLayout(row({ok}));
    answerWithEnter(*ok);
    bind();
}

// ---- Options ----

OptionsWindow::OptionsWindow(platform::Form& form, const Front& front) : FormWindow(form, front) {
    auto* const brightness = named<QComboBox>("cmbNightBrightness");
    brightness->setAccessibleName(inWords(form.find("cmbNightBrightness")->toolTipWords()));
    auto* const pictures = new FieldGrid;
    constexpr int kNumber = 6;
    pictures->addField(Text::tr("Exposure"), field("txtPictureExposure", kNumber), "s");
    pictures->addRow(named<QCheckBox>("chkPictureGuided"));
    pictures->addField(Text::tr("Declination"), field("txtPictureDeclination", kNumber), "°");
    pictures->addField(Text::tr("Guide star to corner"), field("txtFromGuideStar", kNumber), "°");
    auto* const needed = named<QLabel>("lblNeededTolerance");
    needed->setWordWrap(true);
    needed->setMinimumWidth(needed->fontMetrics().averageCharWidth() * 44);
    needed->setMinimumHeight(needed->fontMetrics().lineSpacing() * 2);
    needed->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    pictures->addRow(needed);

    auto* const column = new QVBoxLayout(&scrolledPage());
    column->addWidget(named<QCheckBox>("chkImagingSWVersionCheck"));
    column->addWidget(named<QCheckBox>("chkGreenColors"));
    column->addWidget(brightness);
    for (const char* name :
         {"chkEnableRestoreImagingSW", "chkLeastSquares", "chkClosingPlate", "chkExactMark"})
        column->addWidget(named<QCheckBox>(name));
    column->addWidget(group(Text::tr("The pictures you align for"), pictures));
    column->addStretch();
    QPushButton* const ok = button("cmdOK");
    column->addLayout(row({ok}));
    answerWithEnter(*ok);
    bind();
}

// ---- About ----

AboutWindow::AboutWindow(platform::Form& form, const Front& front) : FormWindow(form, front) {
    auto* const layout = new QVBoxLayout(&scrolledPage());
    layout->setContentsMargins(20, 18, 20, 16);
    layout->setSpacing(12);
    auto* const version = named<QLabel>("lblVersion");
    scaleFont(*version, 1.3, true);
    layout->addWidget(version);
    for (const char* name : {"lblDescription", "lblDisclaimer"}) {
        auto* const text = named<QLabel>(name);
        text->setWordWrap(true);
        text->setMinimumWidth(text->fontMetrics().averageCharWidth() * 60);
        layout->addWidget(text);
    }
    layout->addStretch();
    QPushButton* const ok = button("cmdOK");
    layout->addLayout(row({button("cmdSysInfo"), ok}));
    answerWithEnter(*ok);
    bind();
    ok->setFocus();
}

// ---- Pop-up ----

// One message follows the other, at times before a window manager has done with the first: it would leave the
// window in a corner, or out of sight.
PopupWindow::PopupWindow(platform::Form& form, const Front& front)
    : FormWindow(form, front,
                 Qt::Tool | Qt::FramelessWindowHint | Qt::WindowDoesNotAcceptFocus |
                     Qt::WindowStaysOnTopHint | Qt::BypassWindowManagerHint) {
    setAttribute(Qt::WA_ShowWithoutActivating);
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(18, 14, 18, 14);
    heading_ = new QLabel;
    heading_->setAlignment(Qt::AlignCenter);
    heading_->hide();
    layout->addWidget(heading_);
    auto* const text = named<QLabel>("txtMsg");
    scaleFont(*text, 1.2);
    text->setAlignment(Qt::AlignCenter);
    layout->addWidget(text, 1);
    layout->addWidget(named<LineField>("txtDummy"));
    bind();
}

void PopupWindow::followForm() {
    heading_->setText(windowTitle());
    FormWindow::followForm();
    heading_->setText(windowTitle());
    heading_->setVisible(!windowTitle().isEmpty());
}

void PopupWindow::paintEvent(QPaintEvent* event) {
    FormWindow::paintEvent(event);
    QPainter painter(this);
    painter.setPen(QPen(palette().color(QPalette::Highlight), 2));
    painter.drawRect(rect().adjusted(1, 1, -1, -1));
}

void PopupWindow::mousePressEvent(QMouseEvent* event) {
    grip_ = event->globalPosition().toPoint() - pos();
    dragged_ = false;
}

void PopupWindow::mouseMoveEvent(QMouseEvent* event) {
    const QPoint target = event->globalPosition().toPoint() - grip_;
    if (!dragged_ && (target - pos()).manhattanLength() < QApplication::startDragDistance()) return;
    dragged_ = true;
    move(target);
}

void PopupWindow::mouseReleaseEvent(QMouseEvent* /*event*/) {
    if (dragged_) return windowPlace().tellOwnMoving();
    front().loop.post([&form = form()] { form.clickByOperator(); });
}

// ---- Others ----

namespace {

/// A widget for any kind of control but menu items.
QWidget* widgetFor(const platform::Control& control, const Theme& theme) {
    const auto is = [&control]<typename Kind>(const Kind* /*kind*/) {
        return dynamic_cast<const Kind*>(&control) != nullptr;
    };
    using namespace platform;
    if (is(static_cast<const Label*>(nullptr))) {
        auto* const label = new QLabel;
        label->setWordWrap(true);
        return label;
    }
    if (is(static_cast<const Button*>(nullptr))) return new QPushButton;
    if (is(static_cast<const CheckBox*>(nullptr))) return new QCheckBox;
    if (is(static_cast<const OptionButton*>(nullptr))) return new QRadioButton;
    if (is(static_cast<const TextBox*>(nullptr))) return new LineField;
    if (is(static_cast<const ComboBox*>(nullptr))) return new QComboBox;
    if (is(static_cast<const Gauge*>(nullptr))) return new GaugeBar;
    if (is(static_cast<const PictureBox*>(nullptr))) return new PictureWidget(theme, DrawingKind::kChart);
    if (is(static_cast<const Frame*>(nullptr))) {
        auto* const box = new QGroupBox;
        new QVBoxLayout(box);
        return box;
    }
    throw std::logic_error("no widget for the control " + control.name());
}

}  // namespace

PlainWindow::PlainWindow(platform::Form& form, const Front& front) : FormWindow(form, front) {
    auto* const column = new QVBoxLayout(&scrolledPage());
    auto* const buttons = new QHBoxLayout;
    QMenu* menu = nullptr;
    std::map<const platform::Control*, QWidget*> made;
    for (const platform::Control* control : form.controls()) {
        const QString name = QString::fromStdString(control->name());
        if (dynamic_cast<const platform::MenuItem*>(control) != nullptr) {
            if (menu == nullptr) {
                auto* const bar = new QMenuBar;
                menu = bar->addMenu("&File");
                layout()->setMenuBar(bar);
            }
            menuItem(*menu, control->name().c_str());
            continue;
        }
        QWidget* const widget = made[control] = widgetFor(*control, front.theme);
        widget->setObjectName(name);
        if (dynamic_cast<QComboBox*>(widget) != nullptr)
            widget->setAccessibleName(inWords(control->toolTipWords()));
        const auto frame = made.find(control->frame());
        QBoxLayout* const into = frame != made.end() ? static_cast<QBoxLayout*>(frame->second->layout())
                                 : dynamic_cast<QPushButton*>(widget) != nullptr
                                     ? static_cast<QBoxLayout*>(buttons)
                                     : column;
        into->addWidget(widget);
    }
    column->addStretch();
    column->addLayout(buttons);
    if (buttons->count() > 0)
        answerWithEnter(static_cast<QPushButton&>(*buttons->itemAt(buttons->count() - 1)->widget()));
    bind();
}

}  // namespace vantrel::qt
