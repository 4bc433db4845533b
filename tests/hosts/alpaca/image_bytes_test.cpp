#include "hosts/alpaca/image_bytes.h"

#include <limits>
#include <numeric>
#include <random>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "hosts/alpaca/device_error.h"
#include "hosts/alpaca/image_json.h"
#include "hosts/alpaca/image_messages.h"
#include "support/refusal.h"

namespace vantrel::hosts::alpaca {
namespace {

using Ints = std::vector<std::int32_t>;
using Reals = std::vector<float>;
using Words = std::vector<std::uint16_t>;
using platform::ImageArray;
using test::imageBytes;
using test::ImageBytesHead;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr ImageLimits kSensor{100, 100};

template <typename Pixels>
Pixels pixelsOf(const ImageArray& image) {
    EXPECT_TRUE(std::holds_alternative<Pixels>(image.pixels())) << image.pixels().index();
    const auto* pixels = std::get_if<Pixels>(&image.pixels());
    return pixels == nullptr ? Pixels{} : *pixels;
}

TEST(ImageBytes, TurnsPicturesOfEverySize) {
    // Around the sizes of the squares in which it is done.
    for (const std::size_t width : {1U, 63U, 64U, 65U, 131U})
        for (const std::size_t height : {1U, 64U, 67U, 128U}) {
            Words columns(width * height);
            std::iota(columns.begin(), columns.end(), std::uint16_t{0});
            // Columns stand one after the other in the message, rows in the picture.
            const ImageArray image = parseImageBytes(
                imageBytes(Element::kUInt16, static_cast<int>(width), static_cast<int>(height), columns),
                {200, 200});
            ASSERT_EQ(image.height(), height);
            for (std::size_t x = 0; x < width; ++x)
                for (std::size_t y = 0; y < height; ++y)
                    ASSERT_EQ(image.at(x, y), columns[x * height + y])
                        << width << "x" << height << " " << x << "," << y;
        }
}

template <typename Number, typename Pixels>
void expectPixels(Element element, const std::vector<Number>& sent, const Pixels& seen) {
    const ImageArray image =
        parseImageBytes(imageBytes(element, 1, static_cast<int>(sent.size()), sent), kSensor);
    EXPECT_EQ(pixelsOf<Pixels>(image), seen) << static_cast<int>(element);
}

TEST(ImageBytes, ReadsEveryTypeIntoTheNarrowestThatHoldsIt) {
    constexpr auto kLeast = std::numeric_limits<std::int32_t>::min();
    constexpr auto kMost = std::numeric_limits<std::int32_t>::max();
    expectPixels<std::uint8_t>(Element::kByte, {0, 1, 255}, Words{0, 1, 255});
    expectPixels<std::int16_t>(Element::kInt16, {-32768, 32767}, Ints{-32768, 32767});
    expectPixels<std::uint16_t>(Element::kUInt16, {0, 65535}, Words{0, 65535});
    expectPixels<std::int32_t>(Element::kInt32, {0, 65536}, Ints{0, 65536});
    expectPixels<std::int32_t>(Element::kInt32, {kLeast, kMost}, Ints{kLeast, kMost});
    expectPixels<std::uint32_t>(Element::kUInt32, {7, 65536}, Ints{7, 65536});
    expectPixels<std::uint32_t>(Element::kUInt32, {0, 4294967295U}, Reals{0, 4294967295.0F});
    expectPixels<std::int64_t>(Element::kInt64, {0, 1LL << 40}, Reals{0, 1099511627776.0F});
    expectPixels<std::uint64_t>(Element::kUInt64, {3, 65535}, Words{3, 65535});
    expectPixels<float>(Element::kSingle, {-1.5F, 0.25F}, Reals{-1.5F, 0.25F});
    expectPixels<double>(Element::kDouble, {-1.5, 1e10}, Reals{-1.5F, 1e10F});
}

TEST(ImageBytes, MixesTheColoursOfAPixel) {
    const ImageBytesHead head{.rank = 3, .height = 1, .planes = 3};
    const std::string message = head.bytes() + test::littleEndian(Words{10, 20, 31, 100, 100, 100});
    EXPECT_THAT(pixelsOf<Words>(parseImageBytes(message, kSensor)), ElementsAre(20, 100));
}

TEST(ImageBytes, BeginsWhereTheHeadSays) {
    const ImageBytesHead head{.start = 47, .height = 1};
    const std::string message = head.bytes() + "???" + test::littleEndian(Words{258, 772}) + "and more";
    EXPECT_THAT(pixelsOf<Words>(parseImageBytes(message, kSensor)), ElementsAre(258, 772));
}

TEST(ImageBytes, HoldsTheDevicesErrors) {
    ImageBytesHead head{.error = 0x500};
    try {
        parseImageBytes(head.bytes() + "The shutter is\nstuck", kSensor);
        FAIL() << "took it";
    } catch (const DeviceError& error) {
        EXPECT_EQ(error.number(), 0x500);
        EXPECT_STREQ(error.what(), "The shutter is stuck");
    }
    head.error = device_error::kValueNotSet;
    EXPECT_EQ(test::refusalOf<DeviceError>([&] { parseImageBytes(head.bytes(), kSensor); }),
              "The device needs a value that hasn't been set yet.");
}

TEST(ImageBytes, RefusesWhatItIsNot) {
    const auto picture = [](const ImageBytesHead& head) {
        return head.bytes() + test::littleEndian(Words{1, 2, 3, 4});
    };
    constexpr auto kMost = std::numeric_limits<std::int32_t>::max();
    const struct {
        std::string message;
        const char* says;
    } cases[] = {
        {"", "it is cut short"},
        {ImageBytesHead{}.bytes().substr(0, 43), "it is cut short"},
        {picture({.version = 2}), "its layout is unknown"},
        {picture({.start = 43}), "it is cut short"},
        {picture({.start = -1}), "it is cut short"},
        {picture({.start = 46}), "it is cut short"},
        {picture({.transmission = 0}), "an unknown type"},
        {picture({.transmission = 10}), "an unknown type"},
        {picture({.rank = 1}), "it isn't flat"},
        {picture({.rank = 3}), "it has no pixels"},
        {picture({.width = 0}), "it has no pixels"},
        {picture({.width = 3}), "it is cut short"},
        {picture({.width = 101}), "larger than the sensor"},
        {picture({.height = kMost}), "larger than the sensor"},
    };
    for (const auto& c : cases)
        EXPECT_THAT(test::refusalOf<std::runtime_error>([&] { parseImageBytes(c.message, kSensor); }),
                    HasSubstr(c.says));
    // However large the sensor claims to be.
    const std::string huge =
        picture({.transmission = 3, .rank = 3, .width = kMost, .height = kMost, .planes = 4});
    EXPECT_THAT(test::refusalOf<std::runtime_error>([&] {
                    parseImageBytes(huge, {std::size_t{kMost}, std::size_t{kMost}});
                }),
                HasSubstr("it is cut short"));
}

// ---- image json

constexpr ImageLimits kSmallSensor{3, 4};

TEST(ImageJson, ReadsNestedColumns) {
    const struct {
        const char* why;
        std::string message;
        ImageArray::Pixels pixels;
    } cases[] = {
        {"two columns of three",
         R"({"Type":2,"Rank":2,"Value":[[1,2,3],[4,5,6]],"ErrorNumber":0,"ErrorMessage":""})",
         Words{1, 4, 2, 5, 3, 6}},
        {"in another order, with blanks",
         "{ \"ErrorNumber\" : 0, \"Value\": [ [1],\n [65535] ],\r\n \"Rank\":2,\"Type\":2, "
         "\"ErrorMessage\":null}",
         Words{1, 65535}},
        {"more than 16 bits", R"({"Value":[[-1],[65536]]})", Ints{-1, 65536}},
        {"whole numbers with a point", R"({"Value":[[1.0],[2e2]]})", Words{1, 200}},
        {"fractions, from the second on", R"({"Value":[[1],[2.5]]})", Reals{1, 2.5}},
        {"beyond 32 bits", R"({"Value":[[1],[5000000000]]})", Reals{1, 5e9F}},
        {"three planes", R"({"Rank":3,"Value":[[[1,2,3]],[[7,8,12]]]})", Words{2, 9}},
        {"an unknown member", R"({"Other":"x","Value":[[1]],"More":true})", Words{1}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(parseImageJson(c.message, kSmallSensor).pixels(), c.pixels) << c.why;
}

TEST(ImageJson, HoldsTheDevicesErrors) {
    for (const char* message : {R"({"ErrorNumber":1280,"ErrorMessage":"No image","Value":null})",
                                R"({"Value":[],"ErrorNumber":1280,"ErrorMessage":"No image"})",
                                R"({"ErrorMessage":"No image","ErrorNumber":1280})"})
        EXPECT_EQ(test::refusalOf<DeviceError>([&] { parseImageJson(message, kSmallSensor); }), "No image")
            << message;
}

TEST(ImageJson, RefusesWhatIsNoPicture) {
    const struct {
        std::string message;
        const char* says;
    } cases[] = {
        {"", "no JSON"},
        {R"({"Value":[[1,2],[3)", "cut short"},
        {R"({"Value":[[1,2],[3,4]]}{"Value":[[1]]})", "no JSON"},
        {R"({"Value":[[1,2],[3]]})", "its columns differ"},
        {R"({"Value":[[],[1,2]]})", "its columns differ"},
        {R"({"Value":[[[1]],[2]]})", "its columns differ"},
        {R"({"Value":[1,2]})", "its columns differ"},
        {R"({"Value":[[[[1]]]]})", "it isn't flat"},
        {R"({"Value":[[1,null]]})", "a pixel is missing"},
        {R"({"Value":[[1,"2"]]})", "a pixel is no number"},
        {R"({"Value":[[1]],"Value":[[1]]})", "it isn't flat"},
        {R"({"Value":[]})", "it has no pixels"},
        {R"({})", "it has no pixels"},
        {R"([[1,2],[3,4]])", "it isn't flat"},
        {R"({"Value":[[1],[1],[1],[1]]})", "larger than the sensor"},
        {R"({"Value":[[[1,2,3,4,5]]]})", "larger than the sensor"},
        {R"({"Value":[[1e999]]})", "no JSON"},
        {R"({"Value":)" + std::string(1'000'000, '['), "it isn't flat"},
        {std::string(1'000'000, '{'), "no JSON"},
    };
    for (const auto& c : cases)
        EXPECT_THAT(test::refusalOf<std::runtime_error>([&] { parseImageJson(c.message, kSmallSensor); }),
                    HasSubstr(c.says))
            << c.message.substr(0, 60);
}

}  // namespace
}  // namespace vantrel::hosts::alpaca
