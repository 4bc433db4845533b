#include "correction/stars/defective_lines.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "correction/stars/statistics.h"

namespace vantrel::correction {
namespace {

constexpr int kNear = 6, kFar = 10;           // how far away the lines are that one is compared with
constexpr int kMostTogether = kNear - 1;      // lines side by side
constexpr int kMostAllAlong = 2 * kFar;       // when they are so from one end to the other
constexpr int kFewestLines = 3 * (kFar + 2);  // of an image: any is compared with others then
constexpr int kGroup = 8;                     // pixels of a stretch that are summed at first
constexpr double kApart = 0.8;                // deviations of a pixel
constexpr int kLongest = 72;  // pixels: what a star, even one that trails, may cover of a line

/// The pixels seen as lines side by side: as columns, or as rows.
template <typename Pixel>
struct Lines {
    Pixel* pixels;
    int count, length;
    std::ptrdiff_t nextLine, nextPixel;

    Pixel& at(int line, int place) const { return pixels[line * nextLine + place * nextPixel]; }

    int stretch() const { return std::clamp(length / 24, 16, 128); }
    int stretches() const { return length / stretch(); }
    int fewestStretches() const { return std::min(stretches(), std::max(3, 1 + kLongest / stretch())); }
};

/// Some of a line's pixels.
struct Part {
    int line = 0, from = 0, to = 0;
};

/// The mean of the middle two: one of the four may be defective itself, or lie under a star.
template <typename Value>
Value middleOf(Value a, Value b, Value c, Value d) {
    const Value lowest = std::min(std::min(a, b), std::min(c, d));
    const Value highest = std::max(std::max(a, b), std::max(c, d));
    return (a + b + c + d - lowest - highest) / 2;
}

/// What a line is to show by those on both sides of it; near the frame's edge by those further inside, and
/// how they rise.
template <typename ValueOf>
auto expected(int line, int count, ValueOf&& valueOf) {
    if (line >= kFar && line + kFar < count)
        return middleOf(valueOf(line - kFar), valueOf(line - kNear), valueOf(line + kNear),
                        valueOf(line + kFar));
    const int inwards = line < kFar ? 1 : -1;
    const auto continued = [&](int away) {
        return 2 * valueOf(line + inwards * away) - valueOf(line + 2 * inwards * away);
    };
    return middleOf(continued(kNear), continued(kNear + 2), continued(kFar), continued(kFar + 2));
}

/// The sums of a group of pixels in the middle of this stretch, of all lines.
template <typename Pixel>
std::vector<float> sumsOf(const Lines<Pixel>& lines, int stretch) {
    const int from = stretch * lines.stretch() + (lines.stretch() - kGroup) / 2;
    std::vector<float> sums(static_cast<std::size_t>(lines.count));
    if (lines.nextPixel == 1) {
        for (int line = 0; line < lines.count; ++line)
            for (int place = from; place < from + kGroup; ++place)
                sums[static_cast<std::size_t>(line)] += static_cast<float>(lines.at(line, place));
        return sums;
    }
    for (int place = from; place < from + kGroup; ++place) {
        const Pixel* pixel = &lines.at(0, place);
        for (std::size_t line = 0; line < sums.size(); ++line) sums[line] += static_cast<float>(pixel[line]);
    }
    return sums;
}

/// How far the middle one of these pixels lies from what is beside it.
template <typename Pixel>
double offsetOf(const Lines<Pixel>& lines, const Part& part) {
    std::vector<double> offsets;
    for (int place = part.from; place < part.to; ++place) {
        const auto valueOf = [&](int line) { return static_cast<double>(lines.at(line, place)); };
        const double offset = valueOf(part.line) - expected(part.line, lines.count, valueOf);
        if (std::isfinite(offset)) offsets.push_back(offset);
    }
    return offsets.empty() ? 0 : medianOf(std::move(offsets));
}

/// 1 where the middle one of a line's pixels in a stretch lies above what is beside it, -1 where it lies
/// below.
template <typename Pixel, typename NoiseAt>
int sideOf(const Lines<Pixel>& lines, int line, int stretch, NoiseAt&& noiseAt) {
    const int from = stretch * lines.stretch();
    const double offset = offsetOf(lines, {line, from, from + lines.stretch()});
    const double apart = kApart * noiseAt(line, from);
    return (offset > apart) - (offset < -apart);
}

/// The lines that lie above those beside them, or below, for enough stretches. A quick look at some pixels of
/// each stretch says where to look at all of them.
template <typename Pixel, typename NoiseAt>
std::vector<int> defectiveLines(const Lines<Pixel>& lines, NoiseAt&& noiseAt) {
    constexpr float kGroupApart = 0.9F * kGroup;                   // deviations of a pixel
    constexpr int kSameNoise = 32;                                 // lines
    std::vector<int> runs(static_cast<std::size_t>(lines.count));  // stretches; negative below
    std::vector<char> isDefective(runs.size());
    const auto isConfirmed = [&](int line, int last, int side) {
        int stretch = last;
        while (stretch > last - lines.fewestStretches() && sideOf(lines, line, stretch, noiseAt) == side)
            --stretch;
        return stretch == last - lines.fewestStretches();
    };
    for (int stretch = 0; stretch < lines.stretches(); ++stretch) {
        const std::vector<float> sums = sumsOf(lines, stretch);
        const auto sumOf = [&](int line) { return sums[static_cast<std::size_t>(line)]; };
        float apart = 0;
        for (int line = 0; line < lines.count; ++line) {
            if (line % kSameNoise == 0)
                apart = kGroupApart * static_cast<float>(noiseAt(line, stretch * lines.stretch()));
            const auto i = static_cast<std::size_t>(line);
            const float offset = sums[i] - expected(line, lines.count, sumOf);
            const int side = (offset > apart) - (offset < -apart);
            runs[i] = side == 0 ? 0 : runs[i] * side > 0 ? runs[i] + side : side;
            if (std::abs(runs[i]) >= lines.fewestStretches() && !isDefective[i])
                isDefective[i] = isConfirmed(line, stretch, side);
        }
    }
    std::vector<int> found;
    for (std::size_t line = 0; line < isDefective.size(); ++line)
        if (isDefective[line]) found.push_back(static_cast<int>(line));
    return found;
}

/// The parts of a line that are defective, by all of its pixels. They end somewhere in the stretch after the
/// last one that shows it.
template <typename Pixel, typename NoiseAt>
std::vector<Part> defectiveParts(const Lines<Pixel>& lines, int line, NoiseAt&& noiseAt) {
    constexpr int kMostMissed = 1;  // stretches that a star beside the line spoils
    const int length = lines.stretch();
    std::vector<Part> parts;
    int side = 0, first = 0, last = 0, count = 0;
    const auto finish = [&] {
        if (count >= lines.fewestStretches())
            parts.push_back({line, std::max(0, (first - 1) * length),
                             last + 2 >= lines.stretches() ? lines.length : (last + 2) * length});
    };
    for (int stretch = 0; stretch < lines.stretches(); ++stretch) {
        const int found = sideOf(lines, line, stretch, noiseAt);
        if (found == 0) continue;
        if (found == side && stretch - last <= 1 + kMostMissed) {
            last = stretch;
            ++count;
            continue;
        }
        finish();
        side = found;
        first = last = stretch;
        count = 1;
    }
    finish();
    return parts;
}

/// Lines side by side, from the first to the last one, and the pixels of them that are defective.
struct Strip {
    int first = 0, last = 0;
    int from = 0, to = 0;
};

/// Defective lines that lie side by side and overlap, as the one next to a defective line may be defective
/// itself. Left out are many that aren't defective all along: a track that crosses them at a small angle.
std::vector<Strip> stripsOf(const std::vector<Part>& parts) {
    std::vector<Strip> strips;
    for (auto part = parts.begin(); part != parts.end();) {
        Strip strip = {part->line, part->line, part->from, part->to};
        int shortest = part->to - part->from;
        for (++part; part != parts.end() && part->line <= strip.last + 1 && part->from < strip.to &&
                     part->to > strip.from;
             ++part) {
            shortest = std::min(shortest, part->to - part->from);
            strip = {strip.first, part->line, std::min(strip.from, part->from), std::max(strip.to, part->to)};
        }
        const bool allAlong = 2 * shortest > strip.to - strip.from;
        if (strip.last - strip.first < (allAlong ? kMostAllAlong : kMostTogether)) strips.push_back(strip);
    }
    return strips;
}

/// Whether a line ends from one pixel to the next in most of its stretches. Light doesn't, least of all a
/// track's that wanders from line to line.
template <typename Pixel, typename NoiseAt>
bool isSharp(const Lines<Pixel>& lines, int line, int beside, const Strip& strip, NoiseAt&& noiseAt) {
    constexpr double kDark = 0.2;    // of what is beside it
    constexpr double kMostOf = 0.7;  // the stretches: stars lie on the others
    if (beside < 0 || beside >= lines.count) return true;
    int dark = 0, all = 0;
    for (int from = strip.from; from + lines.stretch() <= strip.to; from += lines.stretch(), ++all) {
        const auto offset = [&](int of) {
            return std::abs(offsetOf(lines, {of, from, from + lines.stretch()}));
        };
        dark += offset(beside) < std::max(kApart * noiseAt(line, from), kDark * offset(line));
    }
    return dark >= kMostOf * all;
}

template <typename Pixel, typename NoiseAt>
std::vector<Strip> defectiveStrips(const Lines<Pixel>& lines, NoiseAt&& noiseAt) {
    if (lines.count < kFewestLines || lines.length < kLongest) return {};
    std::vector<Part> parts;
    for (const int line : defectiveLines(lines, noiseAt))
        for (const Part& part : defectiveParts(lines, line, noiseAt)) parts.push_back(part);
    std::vector<Strip> strips = stripsOf(parts);
    std::erase_if(strips, [&](const Strip& strip) {
        return !isSharp(lines, strip.first, strip.first - 1, strip, noiseAt) ||
               !isSharp(lines, strip.last, strip.last + 1, strip, noiseAt);
    });
    return strips;
}

template <typename Pixel>
void fillIn(const Lines<Pixel>& lines, const std::vector<Strip>& strips) {
    for (const auto& [first, last, from, to] : strips) {
        const int before = first > 0 ? first - 1 : last + 1;
        const int after = last + 1 < lines.count ? last + 1 : first - 1;
        for (int place = from; place < to; ++place) {
            const auto low = static_cast<double>(lines.at(before, place));
            const auto high = static_cast<double>(lines.at(after, place));
            for (int line = first; line <= last; ++line) {
                const double share = static_cast<double>(line - first + 1) / (last - first + 2);
                lines.at(line, place) = static_cast<Pixel>(low + share * (high - low));
            }
        }
    }
}

template <typename Pixel>
Lines<Pixel> columnsOf(Pixel* pixels, const platform::ImageArray& image) {
    const auto width = static_cast<int>(image.width()), height = static_cast<int>(image.height());
    return {pixels, width, height, 1, width};
}

template <typename Pixel>
Lines<Pixel> rowsOf(Pixel* pixels, const platform::ImageArray& image) {
    const auto width = static_cast<int>(image.width()), height = static_cast<int>(image.height());
    return {pixels, height, width, width, 1};
}

}  // namespace

platform::ImageArray withoutDefectiveLines(const platform::ImageArray& image, const SkyLevel& sky) {
    std::vector<Strip> columns, rows;
    std::visit(
        [&](const auto& pixels) {
            columns = defectiveStrips(columnsOf(pixels.data(), image),
                                      [&](int x, int y) { return sky.at(x, y).noise; });
            rows = defectiveStrips(rowsOf(pixels.data(), image),
                                   [&](int y, int x) { return sky.at(x, y).noise; });
        },
        image.pixels());
    if (columns.empty() && rows.empty()) return image;
    platform::ImageArray mended = image;
    std::visit(
        [&](auto& pixels) {
            fillIn(columnsOf(pixels.data(), image), columns);
            fillIn(rowsOf(pixels.data(), image), rows);
        },
        mended.pixels());
    return mended;
}

}  // namespace vantrel::correction
