#include "hosts/alpaca/image_json.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "hosts/alpaca/device_error.h"

namespace vantrel::hosts::alpaca {

namespace {

/// Without its fraction, at the limits of its type where it is beyond them.
std::int32_t wholeNumber(double value) {
    using Limits = std::numeric_limits<std::int32_t>;
    return static_cast<std::int32_t>(std::clamp(value, double{Limits::min()}, double{Limits::max()}));
}

/// The numbers of the nested arrays in the order in which they come, and how many stand in each.
class PixelColumns {
  public:
    explicit PixelColumns(const ImageLimits& limits) : limits_(limits) {}

    void open() {
        if (++depth_ > 3) refusePicture("it isn't flat");
        counts_[depth_ - 1] = 0;
        if (depth_ > deepest_) {
            if (!whole_.empty() || !real_.empty()) refusePicture("its columns differ");
            deepest_ = depth_;
        }
    }

    /// True when the outermost array ended.
    bool close() {
        if (depth_ == 0) refusePicture("its brackets don't match");
        std::optional<std::size_t>& length = lengths_[depth_ - 1];
        if (!length) length = counts_[depth_ - 1];
        if (*length != counts_[depth_ - 1]) refusePicture("its columns differ");
        --depth_;
        if (depth_ > 0) count();
        return depth_ == 0;
    }

    bool isOpen() const { return depth_ > 0; }

    void take(double value) {
        if (depth_ < 2 || depth_ != deepest_) refusePicture("its columns differ");
        count();
        const std::int32_t number = wholeNumber(value);
        if (real_.empty() && number == value) {
            whole_.push_back(number);
            return;
        }
        if (real_.empty()) {
            real_.assign(whole_.begin(), whole_.end());
            whole_ = {};
        }
        real_.push_back(static_cast<float>(value));
    }

    platform::ImageArray image() const {
        if (whole_.empty() && real_.empty()) refusePicture("it has no pixels");
        ColumnImage columns;
        columns.width = lengths_[0].value();
        columns.height = lengths_[1].value();
        columns.planes = lengths_[2].value_or(1);
        const auto bytes = [](const auto& numbers) {
            return std::string_view(reinterpret_cast<const char*>(numbers.data()),
                                    numbers.size() * sizeof numbers[0]);
        };
        columns.element = real_.empty() ? Element::kInt32 : Element::kSingle;
        columns.data = real_.empty() ? bytes(whole_) : bytes(real_);
        return inRows(columns);
    }

  private:
    void count() {
        const std::size_t most[] = {limits_.width, limits_.height, ImageLimits::kPlanes};
        if (++counts_[depth_ - 1] > most[depth_ - 1]) refusePicture("it is larger than the sensor");
    }

    ImageLimits limits_;
    std::size_t depth_ = 0;
    std::size_t deepest_ = 0;
    std::array<std::size_t, 3> counts_ = {};                  // in the arrays that are open
    std::array<std::optional<std::size_t>, 3> lengths_ = {};  // of the first array of a depth, and so of all
    std::vector<std::int32_t> whole_;
    std::vector<float> real_;  // all numbers, as soon as one isn't whole
};

/// Hears the parser and keeps what matters. Nothing is nested deeper than a picture.
class ImageAnswer : public nlohmann::json_sax<nlohmann::json> {
  public:
    explicit ImageAnswer(const ImageLimits& limits) : columns_(limits) {}

    bool null() override {
        if (columns_.isOpen()) refusePicture("a pixel is missing");
        return true;
    }
    bool boolean(bool /*value*/) override { return null(); }
    bool number_integer(number_integer_t value) override { return number(static_cast<double>(value)); }
    bool number_unsigned(number_unsigned_t value) override { return number(static_cast<double>(value)); }
    bool number_float(number_float_t value, const string_t& /*text*/) override { return number(value); }
    bool string(string_t& value) override {
        if (columns_.isOpen()) refusePicture("a pixel is no number");
        if (key_ == "ErrorMessage") errorMessage_ = value;
        return true;
    }
    bool binary(binary_t& /*value*/) override { return false; }
    bool start_object(std::size_t /*elements*/) override {
        if (inside_) refusePicture("it isn't flat");
        inside_ = true;
        return true;
    }
    bool key(string_t& value) override {
        key_ = value;
        return true;
    }
    bool end_object() override { return true; }
    bool start_array(std::size_t /*elements*/) override {
        if (!inside_ || key_ != "Value" || complete_) refusePicture("it isn't flat");
        columns_.open();
        return true;
    }
    bool end_array() override {
        complete_ = columns_.close();
        return true;
    }
    bool parse_error(std::size_t /*position*/, const std::string& /*token*/,
                     const nlohmann::detail::exception& /*error*/) override {
        refusePicture("it is cut short or no JSON");
    }

    platform::ImageArray image() const {
        if (errorNumber_ != 0) throw DeviceError(errorNumber_, errorMessage_);
        return columns_.image();
    }

  private:
    bool number(double value) {
        if (columns_.isOpen())
            columns_.take(value);
        else if (key_ == "ErrorNumber")
            errorNumber_ = wholeNumber(value);
        return true;
    }

    PixelColumns columns_;
    std::string key_;
    bool inside_ = false;
    bool complete_ = false;
    int errorNumber_ = 0;
    std::string errorMessage_;
};

}  // namespace

platform::ImageArray parseImageJson(std::string_view message, const ImageLimits& limits) {
    ImageAnswer answer(limits);
    nlohmann::json::sax_parse(message, &answer);
    return answer.image();
}

}  // namespace vantrel::hosts::alpaca
