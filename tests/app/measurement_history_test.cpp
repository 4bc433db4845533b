#include "app/measurement_history.h"

#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/queued_event_loop.h"
#include "support/memory_settings_port.h"
#include "support/recording_log.h"
#include "support/temp_folder.h"

namespace vantrel::app {
namespace {

struct History : testing::Test {
    engine::MeasurementRecord record() const {
        engine::MeasurementRecord one;
        one.plates = {{.hourAngle = 1, .declination = 30}, {.hourAngle = 2, .declination = 30.1}};
        one.check.estimate.validity = engine::Validity::kValid;
        one.check.estimate.fromTruePole = {40.25, -25.5};
        one.check.estimate.covariance = engine::AxisCovariance{9, 0, 4};
        one.check.estimate.residuals = {{0.1, -0.2}, {-0.1, 0.2}};
        one.check.verdict.agreement = engine::Agreement::kConsistent;
        one.shown = {.ErrorAmplitude = 0.75, .ErrorAngle = 120};
        one.latitude = 50;
        one.exposure = 2.5;
        return one;
    }
    /// By column, of the row from 0.
    std::map<std::string, std::string> row(std::size_t number) const {
        std::istringstream text(test::contentsOf(folders.real("C:\\logs\\Measurements.csv")));
        std::vector<std::vector<std::string>> table;
        for (std::string line; std::getline(text, line);) {
            EXPECT_TRUE(line.ends_with('\r'));
            line.pop_back();
            table.emplace_back();
            std::istringstream fields(line + ",");
            for (std::string field; std::getline(fields, field, ',');) table.back().push_back(field);
        }
        EXPECT_GT(table.size(), number + 1);
        EXPECT_EQ(table.at(number + 1).size(), table.at(0).size());
        std::map<std::string, std::string> found;
        for (std::size_t i = 0; i < table[0].size(); ++i) found[table[0][i]] = table[number + 1].at(i);
        return found;
    }

    test::TempFolder folder;
    platform::VirtualTime time{*platform::parseInstant("2026-11-24T20:00:05Z")};
    platform::FolderMap folders{folder.path()};
    test::MemorySettingsPort settings;
    test::RecordingLog log;
    MeasurementHistory history{time, folders, settings, log, [] { return "The \"big\" mount"; }};
};

TEST_F(History, KeepsEveryMeasurementInALineOfItsOwn) {
    settings.SaveSetting("PolarAlign", "LogPath", "C:\\logs");
    std::filesystem::create_directories(folders.real("C:\\logs"));
    history.keep(record());
    engine::MeasurementRecord bad = record();
    bad.bad = true;
    bad.check.estimate = {};
    history.keep(bad);
    auto first = row(0);
    EXPECT_EQ(first["utc"], "2026-11-24T20:00:05Z");
    EXPECT_EQ(first["telescope"], "\"The \"\"big\"\" mount\"");
    EXPECT_EQ(first["exposure_s"], "2.5");
    EXPECT_EQ(first["shown"], "written");
    EXPECT_EQ(first["amplitude_deg"], "0.7500");
    EXPECT_EQ(first["azimuth_arcmin"], "40.2500");
    EXPECT_EQ(first["written_azimuth_arcmin"], "");
    EXPECT_EQ(first["major_arcsec"], "3.00");
    EXPECT_EQ(first["agreement"], "consistent");
    EXPECT_EQ(first["hour_angles_h"], "1.0000 2.0000");
    EXPECT_EQ(first["across_arcsec"], "-0.2000 0.2000");
    auto second = row(1);
    EXPECT_EQ(second["shown"], "none");
    EXPECT_EQ(second["amplitude_deg"] + second["azimuth_arcmin"] + second["major_arcsec"], "");
    EXPECT_TRUE(log.lines.empty());
}

TEST_F(History, BeginsALineOfItsOwnAfterOneThatWasCut) {
    settings.SaveSetting("PolarAlign", "LogPath", "C:\\logs");
    std::filesystem::create_directories(folders.real("C:\\logs"));
    history.keep(record());
    const auto file = folders.real("C:\\logs\\Measurements.csv");
    std::filesystem::resize_file(file, std::filesystem::file_size(file) - 20);
    history.keep(record());
    EXPECT_EQ(row(1)["utc"], "2026-11-24T20:00:05Z");
    EXPECT_EQ(row(1)["amplitude_deg"], "0.7500");
}

TEST_F(History, KeepsToTheColumnsOfTheFile) {
    settings.SaveSetting("PolarAlign", "LogPath", "C:\\logs");
    std::filesystem::create_directories(folders.real("C:\\logs"));
    const auto file = folders.real("C:\\logs\\Measurements.csv");
    std::ofstream(file, std::ios::binary)
        << "mine;angle_deg;utc;amplitude_deg\r\nyes;1;2026-11-23T20:00:00Z;0,5\r\n";
    history.keep(record());
    EXPECT_TRUE(test::contentsOf(file).ends_with(";0,5\r\n;120.0000;2026-11-24T20:00:05Z;0.7500\r\n"));
    EXPECT_EQ(history.past().size(), 2u);
    std::ofstream(file, std::ios::binary) << "something else\r\n";
    history.keep(record());
    EXPECT_THAT(test::contentsOf(file), testing::StartsWith("something else\r\n2026-11-24T20:00:05Z,"));
    EXPECT_TRUE(history.past().empty());
}

TEST_F(History, RemembersWhatItKeptAndWhatItCouldnt) {
    settings.SaveSetting("PolarAlign", "LogPath", "C:\\logs");
    EXPECT_TRUE(history.past().empty());
    history.keep(record());
    std::filesystem::create_directories(folders.real("C:\\logs"));
    history.keep(record());
    const auto past = history.past();
    ASSERT_EQ(past.size(), 2u);
    for (const auto& one : past) {
        EXPECT_EQ(one.telescope, "The \"big\" mount");
        EXPECT_EQ(one.when, time.utc());
        EXPECT_EQ(one.amplitude, 0.75);
        EXPECT_EQ(one.angle, 120);
        EXPECT_EQ(one.latitude, 50);
        EXPECT_EQ(one.sigma, 2.55);
        EXPECT_EQ(one.agreement, "consistent");
        EXPECT_FALSE(one.leastSquares);
    }
}

TEST_F(History, SaysThatItCouldnt) {
    settings.SaveSetting("PolarAlign", "LogPath", "C:\\nowhere");
    history.keep(record());
    EXPECT_THAT(log.lines,
                testing::ElementsAre("The measurement couldn't be kept in C:\\nowhere\\Measurements.csv"));
}

}  // namespace
}  // namespace vantrel::app
