#include "hosts/indi/blob.h"

#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <zlib.h>

#include "hosts/indi/fake_indi.h"
#include "platform/queued_event_loop.h"

namespace vantrel::hosts::indi {
namespace {

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
        {"Zg==", "f"},
        {"Zm8=", "fo"},
        {"Zm9v", "foo"},
        {"Zm9vYg==", "foob"},
        {"Zm9vYmE=", "fooba"},
        {"Zm9vYmFy", "foobar"},
        {"\nZm9v\r\nYmFy\n  ", "foobar"},
        {"Z m 9 v", "foo"},
        {"Zg=\n=\n", "f"},
        {"Zm9vY", "foo..."},
        {"Zm9vYg=", "foo..."},
        {"Zg==Zg==", "!"},
        {"Z===", "!"},
        {"Zg=a", "!"},
        {"=Zg=", "!"},
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
                        if (blob.device != "C") return std::nullopt;
                        return limit;
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
        {"without lengths", base64("FITS!"), "format=\".fits\"", ".fits FITS!"},
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
        {"absurd", base64("FITS!"), "size=\"99999999999999999999\" format=\".fits\"", ".fits FITS!"},
        {"too large without a word", base64(std::string(101, 'x')), "format=\".fits\"", large},
        {"as large as it may be", base64(std::string(100, 'x')), "format=\".fits\"",
         ".fits " + std::string(100, 'x')},
        {"a few bytes that become too many", base64(packed(std::string(5'000'000, 'x'))),
         "format=\".fits.z\"", "! the picture can't be unpacked"},
        {"no bytes", "", "format=\".fits\"", ".fits "},
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

TEST_F(BlobTest, WhatNobodyWantsIsSkipped) {
    BlobReceiver receiver(time_, {.accept = [](const Blob&) { return std::nullopt; },
                                  .finished = [](const Blob&) { FAIL(); },
                                  .spoiled = [](const std::string&) { FAIL(); }});
    XmlStream stream([](const XmlElement&) {}, &receiver);
    stream.feed("<setBLOBVector><oneBLOB>****</oneBLOB></setBLOBVector>");
}

}  // namespace
}  // namespace vantrel::hosts::indi
