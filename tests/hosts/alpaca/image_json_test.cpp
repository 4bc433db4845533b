#include "hosts/alpaca/image_json.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "hosts/alpaca/device_error.h"
#include "support/refusal.h"

namespace vantrel::hosts::alpaca {
namespace {

using platform::ImageArray;
using testing::HasSubstr;

using Words = std::vector<std::uint16_t>;
using Ints = std::vector<std::int32_t>;
using Reals = std::vector<float>;

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
        {"<html>", "no JSON"},
        {R"({"Value":[[1,2],[3)", "cut short"},
        {R"({"Value":[[1,2],[3,4]])", "cut short"},
        {R"({"Value":[[1,2],[3,4]]}{"Value":[[1]]})", "no JSON"},
        {R"({"Value":[[1,2],[3]]})", "its columns differ"},
        {R"({"Value":[[],[1,2]]})", "its columns differ"},
        {R"({"Value":[[1],[[2]]]})", "its columns differ"},
        {R"({"Value":[[[1]],[2]]})", "its columns differ"},
        {R"({"Value":[1,2]})", "its columns differ"},
        {R"({"Value":[[[[1]]]]})", "it isn't flat"},
        {R"({"Value":[[1,null]]})", "a pixel is missing"},
        {R"({"Value":[[1,"2"]]})", "a pixel is no number"},
        {R"({"Value":[[{"x":1}]]})", "it isn't flat"},
        {R"({"Value":[[1]],"Value":[[1]]})", "it isn't flat"},
        {R"({"Value":[]})", "it has no pixels"},
        {R"({"Value":[[],[]]})", "it has no pixels"},
        {R"({})", "it has no pixels"},
        {R"([[1,2],[3,4]])", "it isn't flat"},
        {R"({"Value":[[1],[1],[1],[1]]})", "larger than the sensor"},
        {R"({"Value":[[1,2,3,4,5]]})", "larger than the sensor"},
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
