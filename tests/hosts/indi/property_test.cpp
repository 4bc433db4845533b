#include "hosts/indi/property.h"

#include <cmath>

#include <gtest/gtest.h>

#include "hosts/indi/device_id.h"
#include "hosts/indi/numbers.h"

namespace vantrel::hosts::indi {
namespace {

XmlElement parsed(const std::string& xml) {
    XmlElement result;
    XmlStream([&](XmlElement element) { result = std::move(element); }).feed(xml);
    return result;
}

TEST(Numbers, AreReadAsTheyMayBeWritten) {
    const std::pair<const char*, double> cases[] = {{"8.9880672241548307255", 8.988067224154831},
                                                    {" \n-90\n ", -90},
                                                    {"+5", 5},
                                                    {"1e3", 1000},
                                                    {"10:30:00", 10.5},
                                                    {"-0:30:36", -0.51},
                                                    {"-0:30", -0.5},
                                                    {"12 34 56.7", 12.582416666666667},
                                                    {"7;15", 7.25},
                                                    {".5", 0.5},
                                                    {"5.", 5}};
    for (const auto& [text, value] : cases) {
        ASSERT_TRUE(readNumber(text)) << text;
        EXPECT_NEAR(*readNumber(text), value, 1e-12) << text;
    }
    for (const char* text : {"", "-", "nan", "inf", "-inf", "1e999", "1,5", "0x10", "5 m", "1:2:3:4",
                             "1:", ":1", "1:-2", "--1", "1::2", "five"})
        EXPECT_FALSE(readNumber(text)) << text;
}

TEST(Numbers, AreWrittenSoThatTheyReadTheSame) {
    for (const double value : {0.0, 1.0, -0.1, 8.988067224154831, 1e-7, 359.99999999999994, 1e20, 0.01})
        EXPECT_EQ(readNumber(writeNumber(value)), value) << writeNumber(value);
    EXPECT_EQ(writeNumber(1e-7), "0.0000001");
    EXPECT_EQ(writeNumber(20), "20");
}

TEST(Property, IsDefinedAndKeptUpToDate) {
    auto property = definedProperty(
        parsed("<defNumberVector device=\"M\" name=\"EQ\" state=\"Idle\" timestamp=\"t0\">"
               "<defNumber name=\"RA\" label=\"R.A.\" min=\"0\" max=\"24\">\n5:30\n</defNumber><defNumber "
               "name=\"DEC\">1</defNumber></defNumberVector>"));
    ASSERT_TRUE(property);
    EXPECT_EQ(property->number("RA"), 5.5);
    EXPECT_EQ(property->element("RA")->maximum, 24);
    EXPECT_EQ(property->number("ALT"), std::nullopt);
    update(*property,
           parsed("<setNumberVector state=\"Busy\" timestamp=\"t1\"><oneNumber "
                  "name=\"DEC\">-2</oneNumber></setNumberVector>"),
           7);
    EXPECT_EQ(property->number("RA"), 5.5);
    EXPECT_EQ(property->number("DEC"), -2);
    EXPECT_EQ(property->state, PropertyState::kBusy);
    EXPECT_EQ(property->timestamp, "t1");
    EXPECT_EQ(property->updated, 7);
    EXPECT_EQ(property->wasBusy, 7);
    update(*property,
           parsed("<setNumberVector state=\"Alert\"><oneNumber name=\"DEC\">nan</oneNumber><oneNumber "
                  "name=\"X\">1</oneNumber></setNumberVector>"),
           8);
    EXPECT_EQ(property->number("DEC"), -2) << "nonsense changes nothing";
    EXPECT_EQ(property->elements.size(), 2U);
    EXPECT_EQ(property->wasBusy, 7);
    EXPECT_EQ(property->wasRefused, 8);
    update(*property, parsed("<setNumberVector state=\"Fine\"/>"), 9);
    EXPECT_EQ(property->state, PropertyState::kAlert) << "nor does a state that is none";
}

TEST(Property, SwitchesAreOnOrOff) {
    auto property =
        definedProperty(parsed("<defSwitchVector device=\"M\" name=\"S\"><defSwitch name=\"A\">On</defSwitch>"
                               "<defSwitch name=\"B\">Off</defSwitch></defSwitchVector>"));
    ASSERT_TRUE(property);
    EXPECT_TRUE(property->on("A"));
    EXPECT_FALSE(property->on("B"));
    EXPECT_FALSE(property->on("C"));
}

TEST(Property, WhatCanNotBeUsedIsNone) {
    std::string many = "<defTextVector device=\"M\" name=\"T\">";
    for (int i = 0; i < 1000; ++i) many += "<defText name=\"x\"/>";
    for (const std::string& xml : {std::string("<defTextVector device=\"M\"/>"),
                                   std::string("<defColourVector name=\"C\"/>"), many + "</defTextVector>"})
        EXPECT_FALSE(definedProperty(parsed(xml))) << xml.substr(0, 50);
}

TEST(DeviceId, ReadsServersAndProgIds) {
    const std::pair<const char*, const char*> servers[] = {{"localhost", "localhost:7624"},
                                                           {" pi.local:7625 ", "pi.local:7625"},
                                                           {"192.168.1.7", "192.168.1.7:7624"},
                                                           {"[fe80::1]:7000", "[fe80::1]:7000"},
                                                           {"[::1]", "[::1]:7624"},
                                                           {"", ""},
                                                           {"host:", ""},
                                                           {"host:0", ""},
                                                           {"host:65536", ""},
                                                           {"host:12x", ""},
                                                           {"a b", ""},
                                                           {"::1", ""},
                                                           {"[::1", ""},
                                                           {"[::1]7", ""},
                                                           {"a/b", ""}};
    for (const auto& [text, read] : servers) {
        const auto server = readServerAddress(text);
        EXPECT_EQ(server ? server->text() : "", read) << text;
    }
    const auto id = readProgId("indi:pi:7624/A/B 2");
    ASSERT_TRUE(id);
    EXPECT_EQ(id->device, "A/B 2");
    EXPECT_EQ(id->progId(), "Indi:pi:7624/A/B 2");
    EXPECT_EQ(readProgId("Indi:[::1]:7/M").value().progId(), "Indi:[::1]:7/M");
    for (const char* text : {"", "Indi", "Indi:", "Indi:pi:7624", "Indi:pi:7624/", "Indi:/M", "Alpaca:pi/M",
                             "ScopeSim.Telescope"})
        EXPECT_FALSE(readProgId(text)) << text;
}

}  // namespace
}  // namespace vantrel::hosts::indi
