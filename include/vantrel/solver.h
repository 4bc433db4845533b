// Vantrel's plate solver for other programs: where on the sky does this picture point?
//
//     const vantrel::FieldSolver solver;                        // the built-in star catalogue
//     const vantrel::FieldSolution field =
//         solver.solve({.width = w, .height = h, .pixels = counts}, {.raDeg = 83.6, .decDeg = 22, .scale
//         = 2.1});
//     if (field.solved) use(field.raDeg, field.decDeg); else tell(field.reason);
//
// Link with -lvantrel-solver (pkg-config: vantrel-solver). Angles are degrees, positions ICRS (J2000). C++20
// and nothing beyond its standard library.
#pragma once

#include <array>
#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>

#if defined(__GNUC__)
#define VANTREL_API __attribute__((visibility("default")))
#else
#define VANTREL_API
#endif

namespace vantrel {

/// The pixels of a picture, which stay the caller's: row after row from the top, width * height of them, in
/// any unit that grows with brightness. "Not a number" where a pixel has no value.
struct FieldPicture {
    std::size_t width = 0;
    std::size_t height = 0;
    std::span<const float> pixels;
};

/// What is known beforehand. Without a position, or with a radius wider than about the picture's diagonal,
/// star patterns of the whole sky are searched; the first such search makes them, which takes seconds.
struct FieldHint {
    std::optional<double> raDeg = {};  ///< about where the picture points; both or neither
    std::optional<double> decDeg = {};
    std::optional<double> scale = {};  ///< arcseconds per pixel, within 15 %; else any field 0.3 to 30 wide
    std::optional<double> radiusDeg = {};  ///< how far off the position may be; by default the picture's
                                           ///< diagonal, at least 1.5
    double year = 2026;                    ///< of the exposure, as 2026.5, for the stars' own motions
};

/// With t = rotation, h = scaleX / 3600 and v = scaleY / 3600 the matrix (h cos t, -v sin t; h sin t, v cos
/// t) turns an offset of columns and rows, which count downwards, into degrees towards east and north. An
/// upright picture (north up, east left) has rotation 180. Meaningless but for `reason` and `starsFound` when
/// not solved.
struct FieldSolution {
    bool solved = false;
    std::string reason;            ///< why not, in one line of English
    std::size_t starsFound = 0;    ///< in the picture
    double raDeg = 0, decDeg = 0;  ///< of column (width - 1) / 2 and row (height - 1) / 2, counted from 0
    double scaleX = 0;             ///< arcseconds per pixel along a row, positive
    double scaleY = 0;             ///< along a column; negative when the picture is mirrored
    double rotationDeg = 0;        ///< -180 to 180
    std::array<double, 4> cd{};    ///< the matrix as fitted: CD1_1, CD1_2, CD2_1, CD2_2, degrees per pixel
    double centreErrorArcsec = 0;  ///< standard deviation of the centre along each axis; 0 if unknown
    double rotationErrorDeg = 0;   ///< likewise
    std::size_t matched = 0;       ///< stars that the fit rests on
    double residualArcsec = 0;     ///< their mean distance from where the fit puts them
};

/// Copies share the catalogue. One object may solve in several threads at a time.
class VANTREL_API FieldSolver {
  public:
    /// The star catalogue that is installed with the library and, where that has too few stars, the one that
    /// vantrel-catalog has made for the user. Throws std::runtime_error when it isn't there.
    FieldSolver();
    /// Another one, by its folder and number: 0 GSC-1.1, 1 USNO-SA2.0, 3 GSC-ACT, 4 Tycho-2, 5 USNO-A2.0,
    /// 6 UCAC2, 7 USNO-B; UCAC4 and .290 and .1476 files are found under any number. Throws
    /// std::runtime_error when the folder holds none that can be read. Patterns are of the built-in one.
    FieldSolver(const std::filesystem::path& folder, int number);

    /// Where the patterns of the whole sky are kept between programs; by default the user's cache folder,
    /// in it "vantrel". Empty keeps them for this object and its copies alone.
    void keepPatternsIn(const std::filesystem::path& folder);

    /// Throws std::invalid_argument for pixels that don't make the picture, half a position, or hints out of
    /// range, and std::runtime_error when the catalogue can't be read any more. Not to find the place is no
    /// error.
    FieldSolution solve(const FieldPicture& picture, const FieldHint& hint = {}) const;

  private:
    struct Parts;
    std::shared_ptr<Parts> parts_;
};

}  // namespace vantrel
