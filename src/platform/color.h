// Colours as settings and scripts know them: 0x00BBGGRR, or a system colour, marked by the highest bit.
#pragma once

#include <cstdint>

namespace vantrel::platform {

using Color = std::uint32_t;

namespace color {
inline constexpr Color kBlack = 0x000000;
inline constexpr Color kRed = 0x0000FF;
inline constexpr Color kDarkGreen = 0x008000;
inline constexpr Color kWindowBackground = 0x80000005;
inline constexpr Color kWindowText = 0x80000008;
inline constexpr Color kButtonFace = 0x8000000F;
inline constexpr Color kButtonText = 0x80000012;
/// What an indicator that is off looks like: the colours of an inactive caption.
inline constexpr Color kIndicatorOffBack = 0x80000003;
inline constexpr Color kIndicatorOffFore = 0x80000015;
}  // namespace color

}  // namespace vantrel::platform
