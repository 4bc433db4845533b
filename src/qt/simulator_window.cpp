#include "qt/simulator_window.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QShortcut>
#include <QTabWidget>
#include <QVBoxLayout>

#include "qt/parts.h"
#include "qt/translation.h"

namespace vantrel::qt {

using platform::Words;

namespace {

QString numbered(const char* name, int index) { return QString("%1(%2)").arg(name).arg(index); }

/// One adjuster: turns one way, where the axis stands, turns the other way.
void addAdjuster(QGridLayout& grid, const QString& title, const char* turns, const char* error,
                 const QString& there, const QString& back) {
    constexpr int kTurns = 6;
    const int row = grid.rowCount();
    int column = 0;
    grid.addWidget(new QLabel(title), row, column++);
    grid.addWidget(new QLabel(there), row, column++, Qt::AlignRight | Qt::AlignVCenter);
    for (int turn = 0; turn < kTurns; ++turn) {
        if (turn == kTurns / 2) {
            auto* const field = qt::field(error, 7);
            keepRoom(*field);
            grid.addWidget(field, row, column++);
            grid.addWidget(new QLabel("'"), row, column++);
        }
        QPushButton* const button = qt::button(qPrintable(numbered(turns, turn)));
        const int height = button->fontMetrics().height();
        button->setMinimumSize(button->fontMetrics().horizontalAdvance("0.1'") + 26, height * 2 + 14);
        button->setAutoRepeat(true);
        grid.addWidget(button, row, column++);
    }
    grid.addWidget(new QLabel(back), row, column);
    grid.setColumnStretch(column, 1);
}

QLabel* hint(const QString& text) {
    auto* const label = new QLabel(text);
    label->setWordWrap(true);
    return label;
}

QGroupBox* axisGroup() {
    auto* const grid = new QGridLayout;
    grid->setSpacing(6);
    addAdjuster(*grid, Text::tr("Azimuth"), "cmdAzimuth", "txtAzimuthError", Text::tr("West"),
                Text::tr("East"));
    addAdjuster(*grid, Text::tr("Elevation"), "cmdElevation", "txtElevationError", Text::tr("Down"),
                Text::tr("Up"));
    auto* const column = new QVBoxLayout;
    column->addLayout(grid);
    column->addLayout(row({named<QCheckBox>("chkShowError"), button("cmdAskew")}, true));
    column->addWidget(
        hint(Text::tr("Keys: ← → turn azimuth, ↑ ↓ elevation, by 1'; with Shift 10', with Ctrl 0.1'.")));
    return group(Text::tr("Polar axis and its adjusters"), column);
}

QGridLayout* compass() {
    auto* const grid = new QGridLayout;
    grid->setSpacing(6);
    const struct {
        const char* name;
        int row, column;
    } places[] = {
        {"cmdNorth", 0, 1}, {"cmdEast", 1, 0}, {"cmdHalt", 1, 1}, {"cmdWest", 1, 2}, {"cmdSouth", 2, 1}};
    for (const auto& place : places) {
        QPushButton* const button = qt::button(place.name);
        const int side = button->fontMetrics().height() * 3;
        button->setFixedSize(button->fontMetrics().horizontalAdvance(inWords(Words::tr("Halt"))) + 40, side);
        button->setAutoRepeat(true);
        grid->addWidget(button, place.row, place.column);
    }
    return grid;
}

QGridLayout* positions() {
    auto* const grid = new QGridLayout;
    grid->setHorizontalSpacing(8);
    grid->setVerticalSpacing(6);
    const struct {
        QString title;
        const char* name;
    } readouts[] = {{Text::tr("RA"), "txtRA"},
                    {Text::tr("Dec"), "txtDec"},
                    {Text::tr("Hour angle"), "txtHourAngle"},
                    {Text::tr("Altitude"), "txtAltitude"}};
    for (const auto& readout : readouts) {
        const int row = grid->rowCount();
        grid->addWidget(new QLabel(readout.title), row, 0);
        grid->addWidget(named<Readout>(readout.name, 10), row, 1);
    }
    return grid;
}

QGroupBox* mountGroup() {
    auto* const pace = new QVBoxLayout;
    auto* const state = named<QLabel>("lblState");
    scaleFont(*state, 1.1, true);
    state->setMinimumWidth(state->fontMetrics().horizontalAdvance(inWords(Words::tr("Standing still"))) + 4);
    pace->addWidget(state);
    pace->addWidget(listField("cmbRate", 11));
    pace->addWidget(named<QCheckBox>("chkTracking"));
    pace->addWidget(new QLabel(Text::tr("Keys: N, S, E, W")));
    pace->addStretch();
    auto* const row = new QHBoxLayout;
    row->setSpacing(16);
    row->addLayout(compass());
    row->addLayout(pace);
    row->addStretch();
    row->addLayout(positions());
    return group(Text::tr("Hand controller"), row);
}

QGroupBox* starGroup() {
    auto* const column = new QVBoxLayout;
    auto* const list = listField("cmbStar", 40);
    list->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    list->setMaxVisibleItems(14);
    column->addWidget(list);
    column->addLayout(row({button("cmdGoToStar"), button("cmdCenterStar"), button("cmdSync")}));
    auto* const advice = named<QLabel>("lblStarHint");
    advice->setWordWrap(true);
    advice->setMinimumHeight(advice->fontMetrics().lineSpacing() * 2 + 2);
    column->addWidget(advice);
    return group(Text::tr("Bright star"), column);
}

QVBoxLayout* columnOf(std::initializer_list<QGroupBox*> groups) {
    auto* const column = new QVBoxLayout;
    column->setSpacing(10);
    for (QGroupBox* box : groups) column->addWidget(box);
    column->addStretch();
    return column;
}

QWidget* mountPage() {
    auto* const page = new QWidget;
    page->setLayout(columnOf({axisGroup(), mountGroup(), starGroup()}));
    return page;
}

QGroupBox* cameraGroup() {
    auto* const grid = new FieldGrid;
    grid->addField(Text::tr("Focal length"), field("txtFocalLength", 8), "mm");
    grid->addField(Text::tr("Pixel size"), field("txtPixelSize", 8), "µm");
    grid->addField(Text::tr("Width"), field("txtWidth", 8), Text::tr("pixels"));
    grid->addField(Text::tr("Height"), field("txtHeight", 8), Text::tr("pixels"));
    grid->addField(Text::tr("Rotation"), field("txtRotation", 8), "°");
    grid->addField(Text::tr("Exposure"), field("txtExposure", 8), "s");
    grid->addRow(row({named<QCheckBox>("chkMirrored")}, true));
    auto* const size = named<QLabel>("lblField");
    size->setMinimumWidth(size->fontMetrics().horizontalAdvance(
                              inWords(Words::tr("%1 a pixel, %2 by %3", {"00.00\"", "00.00°", "00.00°"}))) +
                          4);
    grid->addRow(size);
    return group(Text::tr("Camera"), grid);
}

QGroupBox* skyGroup() {
    auto* const grid = new FieldGrid;
    grid->addField(Text::tr("Seeing"), field("txtSeeing", 8), Text::tr("arc-seconds"));
    grid->addField(Text::tr("Sky"), field("txtSkyLevel", 8), Text::tr("e- per s and pixel"));
    grid->addField(Text::tr("Faintest star"), field("txtLimitingMagnitude", 8), Text::tr("mag"));
    grid->addField(Text::tr("Hot pixels"), field("txtHotPixels", 8), Text::tr("or share"));
    grid->addField(Text::tr("Pointing noise"), field("txtPointingNoise", 8), Text::tr("arc-seconds"));
    grid->addRow(row({named<QCheckBox>("chkRefraction")}, true));
    grid->addField(Text::tr("Air pressure"), field("txtAirPressure", 8), "hPa");
    grid->addField(Text::tr("Air temperature"), field("txtAirTemperature", 8), "°C");
    return group(Text::tr("Sky and mount"), grid);
}

QGroupBox* simulatedSiteGroup() {
    auto* const grid = new FieldGrid;
    grid->addField(Text::tr("Latitude"), field("txtLatitude", 8), Text::tr("° north"));
    grid->addField(Text::tr("Longitude"), field("txtLongitude", 8), Text::tr("° east"));
    return group(Text::tr("Site"), grid);
}

QWidget* cameraPage() {
    auto* const page = new QWidget;
    auto* const columns = new QHBoxLayout(page);
    columns->setSpacing(10);
    columns->addLayout(columnOf({cameraGroup()}), 1);
    columns->addLayout(columnOf({skyGroup(), simulatedSiteGroup()}), 1);
    return page;
}

QGroupBox* tubeGroup() {
    auto* const grid = new FieldGrid;
    grid->addField(Text::tr("Roll noise"), field("txtRollNoise", 8), Text::tr("arc-seconds"));
    grid->addField(Text::tr("Flexure"), field("txtFlexure", 8), Text::tr("arc-seconds"));
    grid->addField(Text::tr("Declination jump"), field("txtDeclinationJump", 8), Text::tr("arc-seconds"));
    grid->addField(Text::tr("at slew"), field("txtDeclinationJumpSlew", 8), Text::tr("from now"));
    return group(Text::tr("Tube and camera"), grid);
}

QGroupBox* driveGroup() {
    auto* const grid = new FieldGrid;
    grid->addField(Text::tr("Periodic error"), field("txtPeriodicError", 8), Text::tr("arc-seconds"));
    grid->addField(Text::tr("Worm period"), field("txtWormPeriod", 8), "s");
    grid->addField(Text::tr("Clock error"), field("txtClockError", 8), Text::tr("s ahead"));
    return group(Text::tr("Drive and clock"), grid);
}

QWidget* faultsPage() {
    auto* const page = new QWidget;
    auto* const column = new QVBoxLayout(page);
    column->setSpacing(10);
    column->addWidget(
        hint(Text::tr("What no mount says of itself: pictures show it, readings don't. 0 is off.")));
    auto* const columns = new QHBoxLayout;
    columns->setSpacing(10);
    columns->addLayout(columnOf({tubeGroup()}), 1);
    columns->addLayout(columnOf({driveGroup()}), 1);
    column->addLayout(columns, 1);
    return page;
}

}  // namespace

SimulatorWindow::SimulatorWindow(platform::Form& form, const Front& front) : FormWindow(form, front) {
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(6, 6, 6, 6);
    auto* const tabs = new QTabWidget;
    tabs->setDocumentMode(true);
    tabs->setAccessibleName(Text::tr("Pages"));
    tabs->addTab(new ScrollPage(mountPage()), Text::tr("Mount"));
    tabs->addTab(new ScrollPage(cameraPage()), Text::tr("Camera and sky"));
    tabs->addTab(new ScrollPage(faultsPage()), Text::tr("Faults"));
    layout->addWidget(tabs);
    auto* const status = named<QLabel>("lblStatus");
    status->setWordWrap(true);
    status->setContentsMargins(8, 0, 8, 4);
    status->setMinimumHeight(status->fontMetrics().lineSpacing() + 8);
    layout->addWidget(status);
    bind();
    addKeys();
}

void SimulatorWindow::addKeys() {
    const auto key = [this](const QKeySequence& sequence, const QString& name) {
        auto* const button = findChild<QPushButton*>(name);
        auto* const shortcut = new QShortcut(sequence, this);
        connect(shortcut, &QShortcut::activated, button, &QPushButton::click);
    };
    const struct {
        const char* turns;
        Qt::Key key;
        int coarse, fine, finest;
    } arrows[] = {{"cmdAzimuth", Qt::Key_Left, 0, 1, 2},
                  {"cmdAzimuth", Qt::Key_Right, 5, 4, 3},
                  {"cmdElevation", Qt::Key_Down, 0, 1, 2},
                  {"cmdElevation", Qt::Key_Up, 5, 4, 3}};
    for (const auto& arrow : arrows) {
        key(QKeySequence(arrow.key), numbered(arrow.turns, arrow.fine));
        key(QKeySequence(Qt::SHIFT | arrow.key), numbered(arrow.turns, arrow.coarse));
        key(QKeySequence(Qt::CTRL | arrow.key), numbered(arrow.turns, arrow.finest));
    }
    key(QKeySequence(Qt::Key_N), "cmdNorth");
    key(QKeySequence(Qt::Key_S), "cmdSouth");
    key(QKeySequence(Qt::Key_E), "cmdEast");
    key(QKeySequence(Qt::Key_W), "cmdWest");
}

}  // namespace vantrel::qt
