#include <cmath>
#include <random>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <zlib.h>

#include "hosts/indi/blob.h"
#include "hosts/indi/device_id.h"
#include "hosts/indi/fake_indi.h"
#include "hosts/indi/numbers.h"
#include "hosts/indi/property.h"
#include "hosts/indi/xml_stream.h"
#include "platform/queued_event_loop.h"

namespace vantrel::hosts::indi {
namespace {

/// name[attribute=value](text){children}
std::string shown(const XmlElement& element) {
    std::string text = element.name;
    for (const auto& [name, value] : element.attributes) text += "[" + name + "=" + value + "]";
    if (!element.text.empty()) text += "(" + element.text + ")";
    if (!element.children.empty()) text += "{";
    for (const XmlElement& child : element.children) text += shown(child);
    if (!element.children.empty()) text += "}";
    return text;
}

struct Blobs : BlobText {
    std::string story;
    void begin(const XmlElement& vector, const XmlElement& blob) override {
        story += "begin " + vector.attribute("device") + " " + blob.attribute("size") + ":";
    }
    void text(std::string_view base64) override { story += base64; }
    void end() override { story += ":end "; }
};

/// The elements, or what is wrong, of a stream that comes in pieces of so many bytes.
std::string read(const std::string& stream, std::size_t piece, Blobs* blobs = nullptr) {
    std::string elements;
    XmlStream xml([&](const XmlElement& element) { elements += shown(element) + ";"; }, blobs);
    try {
        for (std::size_t i = 0; i < stream.size(); i += piece)
            xml.feed(std::string_view(stream).substr(i, piece));
    } catch (const StreamError& error) {
        return elements + "! " + error.what();
    }
    return elements + (xml.insideElement() ? "..." : "");
}

constexpr const char* kNotXml = "! it sends something else than XML";
constexpr const char* kUnended = "! it sends elements that don't end";

TEST(XmlStream, CutsTheStreamIntoElementsHoweverItComes) {
    const struct {
        const char* why;
        const char* stream;
        std::string elements;
    } cases[] = {
        {"several, with blanks between", "<a/>\n <b ></b >\n<c />", "a;b;c;"},
        {"text without the blanks around it",
         "<setNumberVector device='M'>\n <oneNumber name=\"RA\">\n 5.5\n </oneNumber>\n</setNumberVector>",
         "setNumberVector[device=M]{oneNumber[name=RA](5.5)};"},
        {"entities", "<m message=\"a &lt; b &amp; &quot;c&quot; &#176;&#x2033;\">&apos;x&apos; &gt;</m>",
         "m[message=a < b & \"c\" °″]('x' >);"},
        {"entities that aren't", "<m a=\"& &; &nosuch; &#xD800; &#99999999; &#0;\">&</m>",
         "m[a=& &; &nosuch; &#xD800; &#99999999; &#0;](&);"},
        {"either kind of quotes, with the other inside", "<m a='say \"hi\"' b=\"it's > that\"/>",
         "m[a=say \"hi\"][b=it's > that];"},
        {"blanks around =", "<m a = \"1\"\n\tb= '2'/>", "m[a=1][b=2];"},
        {"declarations and comments", "<?xml version=\"1.0\"?><!-- it's <a> --><m/><!----><m/>", "m;m;"},
        {"what isn't UTF-8 is Latin-1", "<m a=\"\xB0\xC3\xA9\">\xFC\xC2</m>", "m[a=°Ã©](üÂ);"},
        {"an element that is still to end", "<m><one", "..."},
        {"an end that isn't its own", "<m></n>", kUnended},
        {"no name", "<m/>< />", std::string("m;") + kNotXml},
        {"an attribute without quotes", "<m a=1></m>", "! it sends an attribute without a value"},
        {"a document type", "<!DOCTYPE m [<!ENTITY a \"b\">]><m>&a;</m>",
         "! it sends XML that this program doesn't take"},
        {"too deep", "<a><b><c><d><e/></d></c></b></a>", "! it sends elements that are nested too deep"},
    };
    for (const auto& [why, stream, elements] : cases)
        for (const std::size_t piece : {1U, 2U, 7U, 1000U})
            EXPECT_EQ(read(stream, piece), elements) << why << " by " << piece;
}

TEST(XmlStream, ElementsHaveALargestSize) {
    const std::string endless[] = {std::string("<m a=\"") + std::string(1'000'000, 'x'),
                                   "<m>" + std::string(1'000'000, 'x'), "<!--" + std::string(1'000'000, 'x')};
    for (const std::string& stream : endless)
        EXPECT_EQ(read(stream, 4096), "! it sends an element that is too large") << stream.substr(0, 10);
    std::string long_;
    for (int i = 0; i < 200'000; ++i) long_ += "<n/>";
    EXPECT_EQ(read(long_, 4096).size(), 400'000U) << "the limit is for each element";
}

TEST(XmlStream, TheTextOfBlobsGoesThroughAsItComes) {
    const std::string stream =
        "<setBLOBVector device=\"C\"><oneBLOB size=\"4\">\nQUJD\nRA==\n</oneBLOB><oneBLOB "
        "size=\"0\"/></setBLOBVector><m/>";
    for (const std::size_t piece : {1U, 5U, 1000U}) {
        Blobs blobs;
        EXPECT_EQ(read(stream, piece, &blobs), "setBLOBVector[device=C]{oneBLOB[size=4]oneBLOB[size=0]};m;");
        EXPECT_EQ(blobs.story, "begin C 4:\nQUJD\nRA==\n:end begin C 0::end ");
    }
    EXPECT_EQ(read(stream, 1000), "setBLOBVector[device=C]{oneBLOB[size=4]oneBLOB[size=0]};m;");
}

TEST(XmlStream, ABlobMayBeLargerThanAnyElement) {
    Blobs blobs;
    const std::string text(4 * XmlStream::kLargestElement, 'A');
    read("<setBLOBVector><oneBLOB>" + text + "</oneBLOB></setBLOBVector>", 100'000, &blobs);
    EXPECT_EQ(blobs.story.size(), text.size() + std::string("begin  ::end ").size());
}

// ---- numbers and properties

XmlElement parsed(const std::string& xml) {
    XmlElement result;
    XmlStream([&](XmlElement element) { result = std::move(element); }).feed(xml);
    return result;
}

TEST(Numbers, AreReadAsTheyMayBeWritten) {
    const std::pair<const char*, double> cases[] = {{"8.9880672241548307255", 8.988067224154831},
                                                    {" \n-90\n ", -90},
                                                    {"1e3", 1000},
                                                    {"10:30:00", 10.5},
                                                    {"-0:30:36", -0.51},
                                                    {"-0:30", -0.5},
                                                    {"12 34 56.7", 12.582416666666667},
                                                    {"7;15", 7.25},
                                                    {"+5.", 5}};
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
                                                           {"[::1]", "[::1]:7624"}};
    for (const auto& [text, read] : servers) {
        const auto server = readServerAddress(text);
        EXPECT_EQ(server ? server->text() : "", read) << text;
    }
    for (const char* none :
         {"", "host:", "host:0", "host:65536", "host:12x", "a b", "::1", "[::1", "[::1]7", "a/b"})
        EXPECT_FALSE(readServerAddress(none)) << none;
    const auto id = readProgId("indi:pi:7624/A/B 2");
    ASSERT_TRUE(id);
    EXPECT_EQ(id->device, "A/B 2");
    EXPECT_EQ(id->progId(), "Indi:pi:7624/A/B 2");
    EXPECT_EQ(readProgId("Indi:[::1]:7/M").value().progId(), "Indi:[::1]:7/M");
    for (const char* text : {"", "Indi", "Indi:", "Indi:pi:7624", "Indi:pi:7624/", "Indi:/M", "Alpaca:pi/M",
                             "ScopeSim.Telescope"})
        EXPECT_FALSE(readProgId(text)) << text;
}

// ---- pictures

std::string textOf(const std::vector<std::byte>& bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

/// What a text stands for, decoded in pieces of so many characters; "!" when it isn't base64, "..." behind
/// what is incomplete.
std::string decoded(const std::string& base64, std::size_t piece) {
    Base64Decoder decoder;
    std::vector<std::byte> bytes;
    for (std::size_t i = 0; i < base64.size(); i += piece)
        if (!decoder.decode(std::string_view(base64).substr(i, piece), bytes)) return "!";
    return textOf(bytes) + (decoder.complete() ? "" : "...");
}

// The vectors of RFC 4648, section 10, and what may go wrong.
TEST(Base64, IsDecodedPieceByPiece) {
    const std::pair<const char*, const char*> cases[] = {
        {"", ""},
        {"Zm8=", "fo"},
        {"Zm9v", "foo"},
        {"Zm9vYmFy", "foobar"},
        {"\nZm9v\r\nYmFy\n  ", "foobar"},
        {"Zg=\n=\n", "f"},
        {"Zm9vYg=", "foo..."},
        {"Zg==Zg==", "!"},
        {"Z===", "!"},
        {"Zg=a", "!"},
        {"Zm-v", "!"},
        {"Zm9v\xFF", "!"},
    };
    for (const auto& [base64, text] : cases)
        for (const std::size_t piece : {1U, 2U, 3U, 4U, 5U, 100U})
            EXPECT_EQ(decoded(base64, piece), text) << base64 << " by " << piece;
}

class BlobTest : public testing::Test {
  protected:
    std::string receive(const std::string& text, const std::string& attributes,
                        std::size_t limit = 1'000'000) {
        std::string story;
        BlobReceiver receiver(
            time_, {.accept = [&](const Blob& blob) -> std::optional<std::size_t> {
                        return blob.format == ".unwanted" ? std::nullopt : std::optional(limit);
                    },
                    .finished = [&](const Blob& blob) { story += blob.format + " " + textOf(blob.bytes); },
                    .spoiled = [&](const std::string& why) { story += "! " + why; }});
        XmlStream stream([](const XmlElement&) {}, &receiver);
        const std::string xml =
            "<setBLOBVector device=\"C\"><oneBLOB " + attributes + ">" + text + "</oneBLOB></setBLOBVector>";
        for (std::size_t i = 0; i < xml.size(); i += 1000) stream.feed(std::string_view(xml).substr(i, 1000));
        EXPECT_FALSE(receiver.underWay());
        return story;
    }
    static std::string packed(const std::string& text) {
        std::string result(::compressBound(text.size()), '\0');
        uLongf size = result.size();
        ::compress(reinterpret_cast<Bytef*>(result.data()), &size,
                   reinterpret_cast<const Bytef*>(text.data()), text.size());
        result.resize(size);
        return result;
    }

    platform::VirtualTime time_{platform::Instant{}};
};

TEST_F(BlobTest, ArrivesOrSaysWhyNot) {
    const auto base64 = test::FakeIndi::base64;
    const std::string incomplete = "! the picture is incomplete",
                      large = "! the picture is larger than the camera's sensor allows";
    const struct {
        const char* why;
        std::string text, attributes, story;
        std::size_t limit = 100;
    } cases[] = {
        {"plain", base64("FITS!"), "size=\"5\" format=\".fits\" len=\"5\"", ".fits FITS!"},
        {"packed by tiles, filled up with zeros", base64("FITS!" + std::string(20, '\0')),
         "size=\"90\" format=\".fits.fz\" len=\"5\"", ".fits.fz FITS!"},
        {"packed whole", base64(packed("FITS!")), "size=\"5\" format=\".fits.z\" len=\"13\"", ".fits FITS!"},
        {"shorter than it says", base64("FITS"), "size=\"5\" format=\".fits\" len=\"5\"", incomplete},
        {"cut in a group",
         "RklU"
         "UyE",
         "format=\".fits\"", incomplete},
        {"packed and cut", base64(packed("FITS!").substr(0, 9)), "format=\".fits.z\"", incomplete},
        {"not packed at all", base64("FITS!"), "format=\".fits.z\"", "! the picture can't be unpacked"},
        {"not base64", "RklU*", "format=\".fits\"", "! the picture isn't base64"},
        {"too large by its own words", base64("FITS!"), "size=\"101\" format=\".fits\"", large},
        {"that nobody wants", "****", "format=\".unwanted\"", ""},
        {"absurd", base64("FITS!"), "size=\"99999999999999999999\" format=\".fits\"", ".fits FITS!"},
        {"too large without a word", base64(std::string(101, 'x')), "format=\".fits\"", large},
        {"a few bytes that become too many", base64(packed(std::string(5'000'000, 'x'))),
         "format=\".fits.z\"", "! the picture can't be unpacked"},
    };
    for (const auto& [why, text, attributes, story, limit] : cases)
        EXPECT_EQ(receive(text, attributes, limit), story) << why;
}

TEST_F(BlobTest, ALongPackedOneComesInPieces) {
    std::string text;
    std::minstd_rand random(1);
    for (int i = 0; i < 400'000; ++i) text += static_cast<char>('a' + random() % 7);
    EXPECT_EQ(receive(test::FakeIndi::base64(packed(text)), "format=\".fits.z\""), ".fits " + text);
    EXPECT_EQ(receive(test::FakeIndi::base64(text), "format=\".fits\""), ".fits " + text);
}

}  // namespace
}  // namespace vantrel::hosts::indi
