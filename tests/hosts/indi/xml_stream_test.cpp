#include "hosts/indi/xml_stream.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

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
        {"nothing", "", ""},
        {"an empty element", "<getProperties version=\"1.7\"/>", "getProperties[version=1.7];"},
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
        {"junk between elements", "hello<m/>there", "m;"},
        {"an end that isn't its own", "<m></n>", kUnended},
        {"an end without a beginning", "</m>", kUnended},
        {"no name", "<m/>< />", std::string("m;") + kNotXml},
        {"an attribute without a value", "<m a></m>", "! it sends an attribute without a value"},
        {"an attribute without quotes", "<m a=1></m>", "! it sends an attribute without a value"},
        {"a document type", "<!DOCTYPE m [<!ENTITY a \"b\">]><m>&a;</m>",
         "! it sends XML that this program doesn't take"},
        {"a section of characters", "<m><![CDATA[x]]></m>", "! it sends XML that this program doesn't take"},
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
    std::string many = "<m>";
    for (int i = 0; i < 500'000; ++i) many += "<n/>";
    EXPECT_EQ(read(many, 4096), "! it sends an element that is too large");
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

}  // namespace
}  // namespace vantrel::hosts::indi
