#include "sky/catalog_writer.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <system_error>
#include <utility>

#include "platform/durable_file.h"
#include "platform/mapped_file.h"
#include "platform/paths.h"
#include "sky/compact_catalog.h"
#include "sky/star_catalog.h"
#include "sky/vector3.h"

namespace vantrel::sky {

namespace {

namespace fs = std::filesystem;

constexpr double kTabledMotionMas = 50;
constexpr std::uint32_t kSteps = 4096;

std::uint32_t cellsIn(std::uint32_t band, const CatalogLayout& layout) {
    const double height = layout.bandHeightDeg();
    const double low = -90 + height * band;
    const double nearest = low >= 0 ? low : std::min(0.0, low + height);
    const double cells = std::ceil(360 / height * std::cos(nearest * kDegree) - 1e-9);
    return static_cast<std::uint32_t>(std::max(1.0, cells));
}

template <typename T>
void put(std::string& out, T value) {
    char bytes[sizeof value];
    std::memcpy(bytes, &value, sizeof value);
    out.append(bytes, sizeof value);
}

std::int16_t motionOf(double mas) {
    return static_cast<std::int16_t>(std::lround(std::clamp(mas, -32767.0, 32767.0)));
}

std::uint32_t checksumOf(const fs::path& file) {
    return crc32(platform::MappedFile(file).bytes().subspan(kCompactHeaderBytes));
}

}  // namespace

struct CatalogWriter::Placed {
    std::uint32_t cell = 0;  ///< counted over all bands
    std::uint32_t word = 0;  ///< the record
    std::int16_t motionRa = 0;
    std::int16_t motionDec = 0;
    bool moves = false;

    bool operator<(const Placed& other) const {
        return cell != other.cell ? cell < other.cell : (word >> 24U) < (other.word >> 24U);
    }
};

CatalogWriter::CatalogWriter(fs::path file, const CatalogLayout& layout, double epochYear)
    : file_(std::move(file)),
      part_(platform::withEnding(file_, ".part")),
      layout_(layout),
      epochYear_(epochYear),
      out_(part_, std::ios::binary | std::ios::trunc) {
    std::uint32_t cells = 0;
    std::string head(kCompactHeaderBytes, '\0');
    for (std::uint32_t band = 0; band < layout_.bands; ++band) {
        firstCells_.push_back(cells);
        cells += cellsIn(band, layout_);
        put(head, static_cast<std::uint16_t>(cellsIn(band, layout_)));
    }
    cellSizes_.resize(cells);
    head.append(cells, '\0');
    out_ << head;
    check();
}

CatalogWriter::~CatalogWriter() {
    if (finished_) return;
    out_.close();
    std::error_code ignored;
    fs::remove(part_, ignored);
}

void CatalogWriter::check() const {
    if (!out_) throw CatalogError(file_.string() + " can't be written");
}

CatalogWriter::Placed CatalogWriter::placed(const MovingStar& star, std::uint32_t firstBand,
                                            std::uint32_t endBand) const {
    const auto part = [](double value, std::uint32_t first, std::uint32_t end) {
        const auto whole =
            std::clamp(static_cast<std::uint32_t>(std::clamp(value, 0.0, end - 1e-9)), first, end - 1);
        const auto step = static_cast<std::uint32_t>(std::clamp((value - whole) * kSteps, 0.0, kSteps - 1.0));
        return std::pair(whole, step);
    };
    const auto [band, y] = part((star.decDeg + 90) / layout_.bandHeightDeg(), firstBand, endBand);
    const std::uint32_t cells = cellsIn(band, layout_);
    const auto [cell, x] = part(star.raDeg / 360 * cells, 0, cells);
    const double step =
        std::clamp(std::round((star.magnitude - layout_.magnitudeZero) / layout_.magnitudeStep), 0.0, 255.0);
    Placed result{firstCells_[band] + cell, x | (y << 12U) | (static_cast<std::uint32_t>(step) << 24U),
                  motionOf(star.motionRaMas), motionOf(star.motionDecMas)};
    result.moves = std::hypot(star.motionRaMas, star.motionDecMas) >= kTabledMotionMas;
    return result;
}

void CatalogWriter::add(std::span<const MovingStar> stars, std::uint32_t bands) {
    const std::uint32_t end = nextBand_ + bands;
    std::vector<Placed> all;
    all.reserve(stars.size());
    for (const MovingStar& star : stars) all.push_back(placed(star, nextBand_, end));
    nextBand_ = end;
    std::stable_sort(all.begin(), all.end());
    for (const Placed& star : all) {
        if (cellSizes_[star.cell] == layout_.mostInCell)
            ++leftOut_;
        else
            write(star);
    }
    check();
}

void CatalogWriter::write(const Placed& star) {
    if (starCount_ == std::numeric_limits<std::uint32_t>::max())
        throw CatalogError(file_.string() + " can't hold so many stars");
    ++cellSizes_[star.cell];
    out_.write(reinterpret_cast<const char*>(&star.word), sizeof star.word);
    const auto index = static_cast<std::int64_t>(starCount_++);
    if (!star.moves) return;
    std::int64_t gap = index - std::exchange(lastMoving_, index);
    for (; gap >= 255; gap -= 255) gaps_ += static_cast<char>(255);
    gaps_ += static_cast<char>(gap);
    put(motions_, star.motionRa);
    put(motions_, star.motionDec);
    ++moving_;
}

void CatalogWriter::finish() {
    out_ << gaps_ << motions_;
    out_.seekp(static_cast<std::streamoff>(kCompactHeaderBytes + 2ULL * layout_.bands));
    out_.write(reinterpret_cast<const char*>(cellSizes_.data()),
               static_cast<std::streamsize>(cellSizes_.size()));
    out_.flush();
    check();

    std::string head(kCompactMagic);
    for (const std::uint32_t value : {std::uint32_t{1}, static_cast<std::uint32_t>(starCount_),
                                      static_cast<std::uint32_t>(cellSizes_.size()), layout_.bands})
        put(head, value);
    put(head, layout_.bandHeightDeg());
    put(head, epochYear_);
    put(head, static_cast<float>(layout_.magnitudeZero));
    put(head, static_cast<float>(layout_.magnitudeStep));
    for (const std::uint32_t value :
         {moving_, static_cast<std::uint32_t>(gaps_.size()), std::uint32_t{12}, checksumOf(part_)})
        put(head, value);
    out_.seekp(0);
    out_ << head;
    out_.close();
    check();
    std::error_code error;
    platform::takePlace(part_, file_, error);
    if (error) throw CatalogError(file_.string() + " can't be written: " + error.message());
    finished_ = true;
}

}  // namespace vantrel::sky
