#include "observatory/sky/fits_image.h"

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <sstream>
#include <system_error>

#include <fcntl.h>
#include <fitsio.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include "observatory/sky/guarded_call.h"

namespace vantrel::observatory {

namespace {

constexpr std::size_t kBlock = 2880;
constexpr std::size_t kCard = 80;
constexpr std::size_t kMaxHeaderBytes = 400 * kBlock;
/// Larger images are refused: no camera makes them, and a hostile header must not claim all memory.
constexpr std::int64_t kMaxPixels = 400'000'000;
constexpr std::int64_t kMaxSide = 100'000;
constexpr std::int64_t kMaxPlanes = 16;
constexpr std::int64_t kMaxUnpackedBytes = 2'000'000'000;
/// Deflated data (RFC 1951) take at least a byte for 1032 of theirs, and no way of packing images takes less
/// than a byte for about twice as many pixels, unless nothing is on them.
constexpr std::int64_t kMaxInflation = 1032;
constexpr std::int64_t kMaxPixelsInByte = 2 * kMaxInflation;
constexpr const char* kTooSmall = "claims to hold more than a file of its size can";

[[noreturn]] void fail(const std::filesystem::path& path, const std::string& why) {
    throw FitsError(path.string() + ": " + why);
}

std::string errorText(int error) { return std::generic_category().message(error); }

class File {
  public:
    explicit File(const std::filesystem::path& path)
        : path_(path), descriptor_(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {
        if (descriptor_ < 0) fail(path, errorText(errno));
        struct stat status {};
        const bool regular = ::fstat(descriptor_, &status) == 0 && S_ISREG(status.st_mode);
        size_ = static_cast<std::size_t>(status.st_size);
        if (!regular) {
            ::close(descriptor_);
            fail(path, "not a file");
        }
    }
    /// Takes over an open descriptor; the path is for messages.
    File(const std::filesystem::path& path, int descriptor) : path_(path), descriptor_(descriptor) {}
    ~File() { ::close(descriptor_); }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    std::size_t size() const { return size_; }

    void read(std::size_t offset, std::span<std::byte> out) const {
        while (!out.empty()) {
            const auto got = ::pread(descriptor_, out.data(), out.size(), static_cast<off_t>(offset));
            if (got < 0 && errno == EINTR) continue;
            if (got <= 0) fail(path_, got < 0 ? errorText(errno) : "ends before its last pixel");
            offset += static_cast<std::size_t>(got);
            out = out.subspan(static_cast<std::size_t>(got));
        }
    }

  private:
    std::filesystem::path path_;
    int descriptor_;
    std::size_t size_ = 0;
};

struct Layout {
    std::int64_t bitpix = 0;
    std::int64_t width = 0;
    std::int64_t height = 0;
    std::int64_t planes = 1;
};

void checkLayout(const std::filesystem::path& path, const Layout& layout) {
    if (layout.width < 1 || layout.height < 1 || layout.planes < 1) fail(path, "holds no image");
    if (layout.width > kMaxSide || layout.height > kMaxSide || layout.planes > kMaxPlanes ||
        layout.width * layout.height > kMaxPixels) {
        fail(path, "the image is too large");
    }
}

bool isBottomUp(const FitsHeader& header) {
    const auto order = header.text("ROWORDER");
    return order && order->size() >= 6 && (order->at(0) == 'B' || order->at(0) == 'b');
}

/// CFITSIO's own explanation of a status code.
std::string libraryError(int status) {
    if (status == MEMORY_ALLOCATION) return "damaged: it asks for more memory than an image takes";
    char text[FLEN_STATUS] = "";
    fits_get_errstatus(status, text);
    fits_clear_errmsg();
    return text;
}

/// An open CFITSIO file that is closed again whatever happens.
class LibraryFile {
  public:
    LibraryFile(const std::filesystem::path& path, int mode) : path_(path) {
        check(fits_open_diskfile(&file_, path.c_str(), mode, &status_));
    }
    static LibraryFile create(const std::filesystem::path& path) { return LibraryFile(path); }
    ~LibraryFile() {
        int ignored = 0;
        if (file_ != nullptr) fits_close_file(file_, &ignored);
        fits_clear_errmsg();
    }
    LibraryFile(const LibraryFile&) = delete;
    LibraryFile& operator=(const LibraryFile&) = delete;

    fitsfile* get() const { return file_; }
    int* status() { return &status_; }
    void check(int status) {
        if (status != 0) fail(path_, libraryError(status));
    }
    void close() {
        fitsfile* file = file_;
        file_ = nullptr;
        check(fits_close_file(file, &status_));
    }

  private:
    explicit LibraryFile(const std::filesystem::path& path) : path_(path) {
        check(fits_create_diskfile(&file_, path.c_str(), &status_));
    }

    std::filesystem::path path_;
    fitsfile* file_ = nullptr;
    int status_ = 0;
};

std::string cardImages(LibraryFile& file) {
    std::string images;
    int count = 0;
    file.check(fits_get_hdrspace(file.get(), &count, nullptr, file.status()));
    for (int i = 1; i <= count; ++i) {
        char card[FLEN_CARD] = "";
        file.check(fits_read_record(file.get(), i, card, file.status()));
        std::string image(card);
        image.resize(kCard, ' ');
        images += image;
    }
    return images;
}

FitsHeader libraryHeader(LibraryFile& file) {
    FitsHeader header;
    const std::string images = cardImages(file);
    for (std::size_t at = 0; at < images.size(); at += kCard) {
        header.addCardImage(std::string_view(images).substr(at, kCard));
    }
    return header;
}

/// Moves to the first header-data unit that holds an image of two or three axes.
Layout findImage(LibraryFile& file, const std::filesystem::path& path) {
    int units = 0;
    file.check(fits_get_num_hdus(file.get(), &units, file.status()));
    for (int unit = 1; unit <= std::min(units, 1000); ++unit) {
        int type = 0;
        file.check(fits_movabs_hdu(file.get(), unit, &type, file.status()));
        const bool compressed = fits_is_compressed_image(file.get(), file.status()) != 0;
        if (type != IMAGE_HDU && !compressed) continue;
        int bitpix = 0;
        int axes = 0;
        LONGLONG sizes[3] = {0, 0, 1};
        file.check(fits_get_img_paramll(file.get(), 3, &bitpix, &axes, sizes, file.status()));
        if (axes == 2 || axes == 3) return {bitpix, sizes[0], sizes[1], sizes[2]};
    }
    fail(path, "holds no image");
}

/// Files that unpack to more than any camera's image, or than they can hold, are refused before a byte of
/// them is unpacked. (The last four bytes of a gzip file are the size of its content, RFC 1952.) Returns the
/// most bytes of FITS that the file can be.
std::int64_t checkUnpackedSize(const std::filesystem::path& path) {
    const File file(path);
    if (file.size() < 18) fail(path, "not a FITS file");
    std::byte magic[2];
    file.read(0, magic);
    const auto bytes = static_cast<std::int64_t>(file.size());
    if (magic[0] != std::byte{0x1f} || magic[1] != std::byte{0x8b}) return bytes;
    unsigned char tail[4];
    file.read(file.size() - 4, std::as_writable_bytes(std::span(tail)));
    const std::int64_t size = tail[0] + (tail[1] << 8) + (tail[2] << 16) + (std::int64_t{tail[3]} << 24);
    if (size > kMaxUnpackedBytes) fail(path, "the image is too large");
    if (size > kMaxInflation * bytes) fail(path, kTooSmall);
    return kMaxInflation * bytes;
}

std::string guarded(const std::filesystem::path& path, const std::function<std::string()>& call) {
    try {
        return callGuarded(call, path.string() + ": damaged");
    } catch (const GuardedCallFailed& e) {
        throw FitsError(e.what());
    }
}

std::uint16_t swapped(std::uint16_t v) { return static_cast<std::uint16_t>((v << 8) | (v >> 8)); }
std::uint32_t swapped(std::uint32_t v) { return __builtin_bswap32(v); }
std::uint64_t swapped(std::uint64_t v) { return __builtin_bswap64(v); }

/// Adds (or sets, for the first plane) big-endian values to a row. One simple loop each, which compilers turn
/// into vector code.
template <typename Stored, typename Raw>
void convert(const std::byte* from, std::span<float> out, bool add, float scale, float zero) {
    static_assert(sizeof(Stored) == sizeof(Raw));
    const auto value = [&](std::size_t i) {
        Raw raw;
        std::memcpy(&raw, from + i * sizeof raw, sizeof raw);
        if constexpr (sizeof raw > 1) raw = swapped(raw);
        return static_cast<float>(std::bit_cast<Stored>(raw)) * scale + zero;
    };
    if (add) {
        for (std::size_t i = 0; i < out.size(); ++i) out[i] += value(i);
    } else {
        for (std::size_t i = 0; i < out.size(); ++i) out[i] = value(i);
    }
}

}  // namespace

class FitsImage::Source {
  public:
    virtual ~Source() = default;
    /// File rows from `first` on, in file order.
    virtual void read(std::size_t first, std::span<float> out) const = 0;
};

class FitsImage::MemorySource : public Source {
  public:
    MemorySource(std::size_t width, std::vector<float> pixels) : width_(width), pixels_(std::move(pixels)) {}
    void read(std::size_t first, std::span<float> out) const override {
        std::copy_n(pixels_.begin() + static_cast<std::ptrdiff_t>(first * width_), out.size(), out.begin());
    }

  private:
    std::size_t width_;
    std::vector<float> pixels_;
};

/// Pixels that the library unpacked into a file in memory.
class FitsImage::UnpackedSource : public Source {
  public:
    UnpackedSource(const std::filesystem::path& path, int memory) : file_(path, memory) {}
    void setWidth(std::size_t width) { width_ = width; }
    void read(std::size_t first, std::span<float> out) const override {
        file_.read(first * width_ * sizeof(float), std::as_writable_bytes(out));
    }

  private:
    File file_;
    std::size_t width_ = 0;
};

class FitsImage::PlainFileSource : public Source {
  public:
    explicit PlainFileSource(const std::filesystem::path& path) : file_(path) {}

    /// Reads the primary header; false when it isn't that of a plain image (CFITSIO may know what it is).
    bool readHeader(const std::filesystem::path& path, FitsHeader& header) {
        char block[kBlock];
        std::size_t at = 0;
        for (;; at += kBlock) {
            if (at + kBlock > file_.size() || at > kMaxHeaderBytes) {
                if (at == 0) return false;
                fail(path, "the header has no end");
            }
            file_.read(at, std::as_writable_bytes(std::span(block)));
            if (at == 0 && std::string_view(block, 9) != "SIMPLE  =") return false;
            bool ended = false;
            for (std::size_t c = 0; c < kBlock && !ended; c += kCard) {
                const std::string_view card(block + c, kCard);
                ended = card.starts_with("END     ");
                header.addCardImage(card);
            }
            if (ended) break;
        }
        dataStart_ = at + kBlock;
        const auto axes = header.integer("NAXIS").value_or(0);
        layout_ = {header.integer("BITPIX").value_or(0), header.integer("NAXIS1").value_or(0),
                   header.integer("NAXIS2").value_or(0),
                   axes == 3 ? header.integer("NAXIS3").value_or(0) : 1};
        return axes == 2 || axes == 3;
    }

    void prepare(const std::filesystem::path& path, const FitsHeader& header) {
        checkLayout(path, layout_);
        switch (layout_.bitpix) {
            case 8:
            case 16:
            case 32:
            case 64:
            case -32:
            case -64:
                break;
            default:
                fail(path,
                     std::string("BITPIX ").append(std::to_string(layout_.bitpix)).append(" is unknown"));
        }
        bytesPerPixel_ = static_cast<std::size_t>(std::abs(layout_.bitpix) / 8);
        planeBytes_ = static_cast<std::size_t>(layout_.width * layout_.height) * bytesPerPixel_;
        if (file_.size() - dataStart_ < planeBytes_ * static_cast<std::size_t>(layout_.planes)) {
            fail(path, "ends before its last pixel");
        }
        const auto planes = static_cast<double>(layout_.planes);
        scale_ = static_cast<float>(header.number("BSCALE").value_or(1) / planes);
        zero_ = static_cast<float>(header.number("BZERO").value_or(0) / planes);
        if (!std::isfinite(scale_) || !std::isfinite(zero_)) fail(path, "BSCALE or BZERO is out of range");
    }

    const Layout& layout() const { return layout_; }

    void read(std::size_t first, std::span<float> out) const override {
        const auto width = static_cast<std::size_t>(layout_.width);
        const std::size_t rowBytes = width * bytesPerPixel_;
        const std::size_t rowsAtOnce = std::max<std::size_t>(1, kChunk / rowBytes);
        buffer_.resize(std::min(rowsAtOnce, out.size() / width) * rowBytes);
        for (std::size_t done = 0; done < out.size();) {
            const auto part = out.subspan(done, std::min(rowsAtOnce * width, out.size() - done));
            for (std::size_t plane = 0; plane < static_cast<std::size_t>(layout_.planes); ++plane) {
                const auto bytes = std::span(buffer_).first(part.size() * bytesPerPixel_);
                file_.read(dataStart_ + plane * planeBytes_ + first * rowBytes + done * bytesPerPixel_,
                           bytes);
                convertPart(part, plane > 0);
            }
            done += part.size();
        }
    }

  private:
    static constexpr std::size_t kChunk = 128 * 1024;  // stays in the second-level cache

    void convertPart(std::span<float> out, bool add) const {
        const std::byte* from = buffer_.data();
        switch (layout_.bitpix) {
            case 8:
                convert<std::uint8_t, std::uint8_t>(from, out, add, scale_, zero_);
                break;
            case 16:
                convert<std::int16_t, std::uint16_t>(from, out, add, scale_, zero_);
                break;
            case 32:
                convert<std::int32_t, std::uint32_t>(from, out, add, scale_, zero_);
                break;
            case 64:
                convert<std::int64_t, std::uint64_t>(from, out, add, scale_, zero_);
                break;
            case -32:
                convert<float, std::uint32_t>(from, out, add, scale_, zero_);
                break;
            default:
                convert<double, std::uint64_t>(from, out, add, scale_, zero_);
                break;
        }
    }

    File file_;
    Layout layout_;
    std::size_t dataStart_ = 0;
    std::size_t bytesPerPixel_ = 0;
    std::size_t planeBytes_ = 0;
    float scale_ = 1;
    float zero_ = 0;
    mutable std::vector<std::byte> buffer_;
};

FitsImage::FitsImage(std::size_t width, std::size_t height, std::vector<float> pixels, FitsHeader header)
    : width_(width),
      height_(height),
      header_(std::move(header)),
      source_(std::make_unique<MemorySource>(width, std::move(pixels))) {}

FitsImage FitsImage::of(const platform::ImageArray& array) {
    std::vector<float> pixels;
    std::visit([&](const auto& values) { pixels.assign(values.begin(), values.end()); }, array.pixels());
    return {array.width(), array.height(), std::move(pixels)};
}

FitsImage::~FitsImage() = default;
FitsImage::FitsImage(FitsImage&&) noexcept = default;
FitsImage& FitsImage::operator=(FitsImage&&) noexcept = default;

FitsImage FitsImage::open(const std::filesystem::path& path) {
    FitsImage image;
    auto plain = openPlain(path, image);
    if (plain == nullptr) {
        image.openByLibrary(path);
    } else {
        image.width_ = static_cast<std::size_t>(plain->layout().width);
        image.height_ = static_cast<std::size_t>(plain->layout().height);
        image.floating_ = plain->layout().bitpix < 0;
        image.source_ = std::move(plain);
    }
    image.bottomUp_ = isBottomUp(image.header_);
    return image;
}

std::unique_ptr<FitsImage::PlainFileSource> FitsImage::openPlain(const std::filesystem::path& path,
                                                                 FitsImage& image) {
    auto source = std::make_unique<PlainFileSource>(path);
    FitsHeader header;
    if (!source->readHeader(path, header)) return nullptr;
    source->prepare(path, header);
    image.header_ = std::move(header);
    return source;
}

namespace {

/// What the guarded child tells about the image that it unpacked.
struct Unpacked {
    std::size_t width = 0;
    std::size_t height = 0;
    FitsHeader header;
};

/// Unpacks the image into the memory file as floats, planes averaged, and returns its size and cards.
std::string unpackByLibrary(const std::filesystem::path& path, std::int64_t mostBytes, int memory) {
    LibraryFile file(path, READONLY);
    const std::string primary = cardImages(file);
    const Layout layout = findImage(file, path);
    checkLayout(path, layout);
    if (layout.width * layout.height / kMaxPixelsInByte > mostBytes) fail(path, kTooSmall);
    const auto width = static_cast<std::size_t>(layout.width);
    const auto planes = static_cast<float>(layout.planes);
    float blank = std::numeric_limits<float>::quiet_NaN();
    std::vector<float> row(width);
    std::vector<float> mean(width);
    for (LONGLONG y = 1; y <= layout.height; ++y) {
        std::fill(mean.begin(), mean.end(), 0.0F);
        for (LONGLONG plane = 1; plane <= layout.planes; ++plane) {
            LONGLONG first[3] = {1, y, plane};
            file.check(fits_read_pixll(file.get(), TFLOAT, first, layout.width, &blank, row.data(), nullptr,
                                       file.status()));
            for (std::size_t x = 0; x < width; ++x) mean[x] += row[x] / planes;
        }
        const std::size_t bytes = width * sizeof(float);
        if (::write(memory, mean.data(), bytes) != static_cast<ssize_t>(bytes)) fail(path, errorText(errno));
    }
    return std::to_string(layout.width) + " " + std::to_string(layout.height) + "\n" + cardImages(file) +
           primary;
}

Unpacked unpackedFrom(const std::string& answer) {
    Unpacked unpacked;
    const std::size_t line = answer.find('\n');
    std::istringstream(answer.substr(0, line)) >> unpacked.width >> unpacked.height;
    for (std::size_t at = line + 1; at + kCard <= answer.size(); at += kCard) {
        unpacked.header.addCardImage(std::string_view(answer).substr(at, kCard));
    }
    return unpacked;
}

}  // namespace

/// CFITSIO crashes on some damaged files, so it works in a process of its own.
void FitsImage::openByLibrary(const std::filesystem::path& path) {
    const std::int64_t mostBytes = checkUnpackedSize(path);
    const int memory = ::memfd_create("vantrel-fits", MFD_CLOEXEC);
    if (memory < 0) fail(path, errorText(errno));
    auto source = std::make_unique<UnpackedSource>(path, memory);
    const Unpacked unpacked =
        unpackedFrom(guarded(path, [&] { return unpackByLibrary(path, mostBytes, memory); }));
    width_ = unpacked.width;
    height_ = unpacked.height;
    header_ = unpacked.header;
    floating_ = true;
    source->setWidth(width_);
    source_ = std::move(source);
}

void FitsImage::readRows(std::size_t first, std::span<float> out) const {
    const std::size_t rows = out.size() / width_;
    if (rows * width_ != out.size() || first + rows > height_) {
        throw std::out_of_range("rows outside of the image");
    }
    if (!bottomUp_) {
        source_->read(first, out);
        return;
    }
    source_->read(height_ - first - rows, out);
    for (std::size_t top = 0, bottom = rows; top + 1 < bottom; ++top) {
        --bottom;
        std::swap_ranges(out.begin() + static_cast<std::ptrdiff_t>(top * width_),
                         out.begin() + static_cast<std::ptrdiff_t>((top + 1) * width_),
                         out.begin() + static_cast<std::ptrdiff_t>(bottom * width_));
    }
}

std::optional<TangentWcs> FitsImage::wcs() const {
    return wcsFromHeader(header_, static_cast<double>(height_), bottomUp_);
}

namespace {

/// Writes beside the target and takes its place when complete.
template <typename Write>
void replaceFile(const std::filesystem::path& target, Write&& write) {
    std::filesystem::path partial = target;
    partial += std::string(".").append(std::to_string(::getpid())).append(".part");
    std::error_code error;
    std::filesystem::remove(partial, error);
    try {
        write(partial);
    } catch (...) {
        std::filesystem::remove(partial, error);
        throw;
    }
    std::filesystem::rename(partial, target, error);
    if (error) {
        std::error_code ignored;
        std::filesystem::remove(partial, ignored);
        fail(target, error.message());
    }
}

void writeCard(LibraryFile& file, const FitsCard& card) {
    const char* keyword = card.keyword.c_str();
    const char* comment = card.comment.empty() ? nullptr : card.comment.c_str();
    int* status = file.status();
    if (const auto* flag = std::get_if<bool>(&card.value)) {
        int value = *flag ? 1 : 0;
        fits_update_key(file.get(), TLOGICAL, keyword, &value, comment, status);
    } else if (const auto* whole = std::get_if<std::int64_t>(&card.value)) {
        LONGLONG value = *whole;
        fits_update_key(file.get(), TLONGLONG, keyword, &value, comment, status);
    } else if (const auto* real = std::get_if<double>(&card.value)) {
        fits_update_key_dbl(file.get(), keyword, *real, -15, comment, status);
    } else {
        fits_update_key_str(file.get(), keyword, std::get<std::string>(card.value).c_str(), comment, status);
    }
    file.check(*status);
}

void removeOldWcs(LibraryFile& file) {
    for (const char* keyword :
         {"CDELT1", "CDELT2", "CROTA1", "CROTA2", "PC1_1", "PC1_2", "PC2_1", "PC2_2", "LONPOLE", "LATPOLE",
          "A_ORDER", "B_ORDER", "AP_ORDER", "BP_ORDER", "EPOCH"}) {
        int status = 0;
        fits_delete_key(file.get(), keyword, &status);
    }
    fits_clear_errmsg();
}

void copyWithWcs(const std::filesystem::path& source, bool packed, const std::filesystem::path& target,
                 const TangentWcs& wcs) {
    if (packed) {
        checkUnpackedSize(source);
        LibraryFile from(source, READONLY);
        auto to = LibraryFile::create(target);
        from.check(fits_copy_file(from.get(), to.get(), 1, 1, 1, from.status()));
        to.close();
    } else {
        std::error_code error;
        std::filesystem::copy_file(source, target, error);
        if (error) {
            fail(source, "can't be copied to \"" + target.parent_path().string() + "\": " + error.message());
        }
        std::filesystem::permissions(target, std::filesystem::perms::owner_write,
                                     std::filesystem::perm_options::add, error);
    }
    LibraryFile file(target, READWRITE);
    const Layout layout = findImage(file, target);
    removeOldWcs(file);
    const bool bottomUp = isBottomUp(libraryHeader(file));
    for (const FitsCard& card : wcsCards(wcs, static_cast<double>(layout.height), bottomUp))
        writeCard(file, card);
    file.close();
}

bool isGzip(const std::filesystem::path& path) {
    const File file(path);
    std::byte magic[2] = {};
    if (file.size() >= 2) file.read(0, magic);
    return magic[0] == std::byte{0x1f} && magic[1] == std::byte{0x8b};
}

struct FitsPixelType {
    int image;  // in the file
    int data;   // in memory
};
FitsPixelType fitsPixelType(const std::uint16_t*) { return {USHORT_IMG, TUSHORT}; }
FitsPixelType fitsPixelType(const std::int32_t*) { return {LONG_IMG, TINT}; }
FitsPixelType fitsPixelType(const float*) { return {FLOAT_IMG, TFLOAT}; }

template <typename Pixel>
void writePixels(const std::filesystem::path& path, std::size_t width, std::size_t height,
                 std::span<const Pixel> pixels, const std::vector<FitsCard>& cards) {
    if (pixels.size() != width * height || pixels.empty())
        throw std::invalid_argument("pixels and size disagree");
    const FitsPixelType type = fitsPixelType(pixels.data());
    replaceFile(path, [&](const std::filesystem::path& partial) {
        auto file = LibraryFile::create(partial);
        LONGLONG sizes[2] = {static_cast<LONGLONG>(width), static_cast<LONGLONG>(height)};
        file.check(fits_create_imgll(file.get(), type.image, 2, sizes, file.status()));
        for (const FitsCard& card : cards) writeCard(file, card);
        // CFITSIO takes a pointer to non-const, but only reads from it.
        file.check(fits_write_img(file.get(), type.data, 1, static_cast<LONGLONG>(pixels.size()),
                                  const_cast<Pixel*>(pixels.data()), file.status()));
        file.close();
    });
}

}  // namespace

void writeFits(const std::filesystem::path& path, std::size_t width, std::size_t height,
               std::span<const std::uint16_t> pixels, const std::vector<FitsCard>& cards) {
    writePixels(path, width, height, pixels, cards);
}

void writeFits(const std::filesystem::path& path, const platform::ImageArray& image,
               const std::vector<FitsCard>& cards) {
    std::visit(
        [&](const auto& pixels) {
            writePixels(path, image.width(), image.height(), std::span(pixels), cards);
        },
        image.pixels());
}

std::vector<FitsCard> wcsCards(const TangentWcs& wcs, double height, bool bottomUp) {
    const double down = bottomUp ? -1 : 1;
    return {{"CTYPE1", "RA---TAN", "gnomonic projection"},
            {"CTYPE2", "DEC--TAN", "gnomonic projection"},
            {"CUNIT1", "deg"},
            {"CUNIT2", "deg"},
            {"CRVAL1", wcs.reference.ra, "right ascension of the reference pixel"},
            {"CRVAL2", wcs.reference.dec, "declination of the reference pixel"},
            {"CRPIX1", wcs.referencePixel.x + 1, "reference pixel, column"},
            {"CRPIX2", bottomUp ? height - wcs.referencePixel.y : wcs.referencePixel.y + 1,
             "reference pixel, row"},
            {"CD1_1", wcs.cd[0], "degrees per pixel"},
            {"CD1_2", wcs.cd[1] * down, "degrees per pixel"},
            {"CD2_1", wcs.cd[2], "degrees per pixel"},
            {"CD2_2", wcs.cd[3] * down, "degrees per pixel"},
            {"EQUINOX", 2000.0, "equinox of the world coordinates"},
            {"RADESYS", "ICRS", "frame of the world coordinates"}};
}

void writeWcs(const std::filesystem::path& source, const std::filesystem::path& target,
              const TangentWcs& wcs) {
    std::error_code ignored;
    const bool packed = isGzip(source);
    if (packed && std::filesystem::equivalent(source, target, ignored)) {
        fail(target, "compressed by gzip, its header can't be changed");
    }
    replaceFile(target, [&](const std::filesystem::path& partial) {
        guarded(source, [&] {
            copyWithWcs(source, packed, partial, wcs);
            return std::string();
        });
    });
}

}  // namespace vantrel::observatory
