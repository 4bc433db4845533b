#include <cmath>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "correction/history_chart.h"
#include "correction/past_nights.h"
#include "support/time_zone.h"

namespace vantrel::correction {
namespace {

using namespace platform;
using engine::PastMeasurement;
using testing::ElementsAre;

PastMeasurement measured(const char* when, double arcMinutes, std::optional<double> sigma = std::nullopt) {
    PastMeasurement one;
    one.when = *parseInstant(when);
    one.amplitude = arcMinutes / 60;
    one.sigma = sigma;
    return one;
}

/// Of a kind, in their order.
template <typename Kind>
std::vector<Kind> all(const Drawing& drawing) {
    std::vector<Kind> found;
    for (const Shape& shape : drawing.shapes)
        if (const auto* one = std::get_if<Kind>(&shape)) found.push_back(*one);
    return found;
}

TEST(HistoryChart, ANightLastsFromNoonToNoon) {
    const vantrel::test::TimeZone zone("XYZ-2");  // two hours east of Greenwich
    for (const auto& [when, night] : {std::pair{"2026-11-24T20:00:00Z", "2026-11-24"},
                                      {"2026-11-25T02:00:00Z", "2026-11-24"},
                                      {"2026-11-25T09:59:59Z", "2026-11-24"},
                                      {"2026-11-25T10:00:00Z", "2026-11-25"}})
        EXPECT_EQ(nightOf(*parseInstant(when)), night) << when;
}

TEST(HistoryChart, PointsByNightOverDecades) {
    const vantrel::test::TimeZone zone("UTC");
    const std::vector<PastMeasurement> all3{measured("2026-11-24T20:00:00Z", 100, 60),
                                            measured("2026-11-25T01:00:00Z", 10),
                                            measured("2026-11-25T20:00:00Z", 0.5, 24)};
    const Drawing drawing = historyChart(all3, 1);
    EXPECT_EQ(drawing.scale.right, 9) << "few points crowd in the room of ten";
    const auto dots = all<Circle>(drawing);
    ASSERT_EQ(dots.size(), 3u);
    EXPECT_EQ(dots[1].x - dots[0].x, 1);
    EXPECT_EQ(dots[2].x - dots[1].x, 2) << "another night";
    EXPECT_NEAR(dots[0].y, 2, 1e-12);
    EXPECT_NEAR(dots[1].y, 1, 1e-12);
    EXPECT_NEAR(dots[2].y, std::log10(0.5), 1e-12);
    EXPECT_EQ(dots[0].color, color::kWindowText);
    EXPECT_EQ(dots[1].color, color::kRed) << "selected";

    std::vector<Line> bars;
    for (const Line& line : all<Line>(drawing))
        if (line.x1 == line.x2) bars.push_back(line);
    ASSERT_EQ(bars.size(), 2u) << "one tells no uncertainty";
    EXPECT_NEAR(bars[0].y1, std::log10(99), 1e-12);
    EXPECT_NEAR(bars[0].y2, std::log10(101), 1e-12);
    EXPECT_NEAR(bars[1].y1, std::log10(0.1), 1e-9);

    std::vector<std::string> texts;
    for (const DrawnText& text : all<DrawnText>(drawing)) texts.push_back(text.text);
    EXPECT_THAT(texts, ElementsAre("0.1'", "1'", "10'", "100'", "1000'", "2026-11-24", "2026-11-25"));
}

TEST(HistoryChart, LeavesOutDatesThatWouldStandOnOthers) {
    std::vector<PastMeasurement> nights;
    for (int night = 0; night < 60; ++night) {
        nights.push_back(measured("2026-11-24T20:00:00Z", 1));
        nights.back().when += std::chrono::hours{24 * night};
    }
    const Drawing drawing = historyChart(nights, 0);
    const double width = drawing.scale.right - drawing.scale.left;
    std::vector<double> dates;
    for (const DrawnText& text : all<DrawnText>(drawing))
        if (text.text.starts_with("20")) dates.push_back(text.x);
    ASSERT_GT(dates.size(), 3u);
    for (std::size_t i = 1; i < dates.size(); ++i) EXPECT_GT(dates[i] - dates[i - 1], 0.14 * width);
}

TEST(HistoryChart, HasAPlaceForEverything) {
    const struct {
        const char* why;
        std::vector<PastMeasurement> measurements;
    } cases[] = {
        {"a perfect one", {measured("2026-11-24T20:00:00Z", 0, 10)}},
        {"more uncertain than off", {measured("2026-11-24T20:00:00Z", 0.3, 3600)}},
        {"upside down", {measured("2026-11-24T20:00:00Z", 180 * 60)}},
        {"the clock went back", {measured("2026-11-25T20:00:00Z", 3), measured("2026-11-24T20:00:00Z", 3)}},
        {"many", std::vector<PastMeasurement>(500, measured("2026-11-24T20:00:00Z", 3, 3))},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        const Drawing drawing = historyChart(c.measurements, 0);
        const auto within = [&](double x, double y) {
            EXPECT_TRUE(x >= drawing.scale.left && x <= drawing.scale.right) << x;
            EXPECT_TRUE(y >= drawing.scale.bottom && y <= drawing.scale.top) << y;
        };
        ASSERT_EQ(all<Circle>(drawing).size(), c.measurements.size());
        for (const Circle& dot : all<Circle>(drawing)) within(dot.x, dot.y);
        for (const Line& line : all<Line>(drawing)) {
            within(line.x1, line.y1);
            within(line.x2, line.y2);
        }
        for (const DrawnText& text : all<DrawnText>(drawing)) within(text.x, text.y);
    }
    EXPECT_TRUE(historyChart({}, 0).shapes.empty());
}

TEST(PastNights, TellsOfTheNewestAndOfTheChosenOne) {
    const vantrel::test::TimeZone zone("UTC");
    PastMeasurement first = measured("2026-11-24T20:00:05Z", 16, 5.5);
    first.telescope = "The mount";
    first.agreement = "consistent";
    PastMeasurement second = measured("2026-11-24T21:00:00Z", 0.5);
    second.leastSquares = true;
    second.note = "plate 2 left out";
    std::vector<PastMeasurement> kept{first};
    Screen screen{{0, 0, 1024, 600}};
    frmHistory window(screen);
    PastNights nights(window, [&] { return kept; });
    nights.refresh();
    EXPECT_TRUE(window.picHistory.drawing().shapes.empty()) << "nobody looks";

    window.show();
    EXPECT_EQ(window.txtMeasurement.text(),
              "2026-11-24 20:00:05, The mount\r\n16.00 arc-min from pole, \u00b1 5.5 arc-sec, by the written "
              "calculation\r\nThe plates agree");
    kept.push_back(second);
    nights.refresh();
    EXPECT_EQ(window.txtMeasurement.text(),
              "2026-11-24 21:00:00\r\n0.5000 arc-min from pole, by least squares\r\nplate 2 left out");
    ASSERT_TRUE(window.cmbMeasurement.choose("2026-11-24 20:00:05"));
    EXPECT_THAT(window.txtMeasurement.text(), testing::StartsWith("2026-11-24 20:00:05"));
    EXPECT_EQ(all<Circle>(window.picHistory.drawing())[0].color, color::kRed);

    kept.clear();
    nights.refresh();
    EXPECT_EQ(window.txtMeasurement.text() + window.cmbMeasurement.text(), "");
    EXPECT_TRUE(window.picHistory.drawing().shapes.empty());
}

}  // namespace
}  // namespace vantrel::correction
