// Base64 (RFC 4648, section 4), decoded piece by piece. Blanks and line ends may stand anywhere.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace vantrel::hosts::indi {

class Base64Decoder {
  public:
    /// Appends what the text stands for, as far as whole groups of four characters have come. False when it
    /// isn't base64.
    bool decode(std::string_view text, std::vector<std::byte>& bytes);

    /// True when nothing of a group is left over: the text was whole.
    bool complete() const { return count_ == 0; }

  private:
    bool take(char c, std::vector<std::byte>& bytes);

    std::uint32_t group_ = 0;
    int count_ = 0;    // characters of the group so far
    int padding_ = 0;  // of them '='
    bool ended_ = false;
};

}  // namespace vantrel::hosts::indi
