// Stands in for libcurl, CFITSIO and the readers of pictures in short-lived programs, which mostly need none:
// with all that they need in turn, loading them takes longer than solving an image. Each function loads its
// library when it is first called.

#include <cstdarg>
#include <stdexcept>
#include <string>

#include <curl/curl.h>
#include <dlfcn.h>
#include <fitsio.h>
#include <jpeglib.h>
#include <libraw/libraw.h>
#include <png.h>
#include <tiffio.h>

#undef curl_easy_setopt
#undef curl_easy_getinfo

namespace {

class LateLibrary {
  public:
    explicit LateLibrary(const char* name) : library_(dlopen(name, RTLD_NOW | RTLD_LOCAL)) {
        if (library_ == nullptr) fail();
    }

    template <typename Function>
    Function function(const char* name) const {
        void* const found = dlsym(library_, name);
        if (found == nullptr) fail();
        return reinterpret_cast<Function>(found);
    }

  private:
    [[noreturn]] static void fail() {
        const char* reason = dlerror();
        throw std::runtime_error(reason != nullptr ? reason : "a library can't be loaded");
    }

    void* library_;
};

const LateLibrary& curl() {
    static const LateLibrary library(VANTREL_CURL_NAME);
    return library;
}

const LateLibrary& cfitsio() {
    static const LateLibrary library(VANTREL_CFITSIO_NAME);
    return library;
}

const LateLibrary& libjpeg() {
    static const LateLibrary library(VANTREL_JPEG_NAME);
    return library;
}

const LateLibrary& libpng() {
    static const LateLibrary library(VANTREL_PNG_NAME);
    return library;
}

const LateLibrary& libtiff() {
    static const LateLibrary library(VANTREL_TIFF_NAME);
    return library;
}

const LateLibrary& libraw() {
    static const LateLibrary library(VANTREL_RAW_NAME);
    return library;
}

}  // namespace

// The names of CFITSIO's functions are macros, which the text must be of.
#define VANTREL_TEXT(name) VANTREL_TEXT_OF(name)
#define VANTREL_TEXT_OF(name) #name
#define VANTREL_REAL(library, name) \
    static const auto real = library().function<decltype(&(name))>(VANTREL_TEXT(name))
#define VANTREL_FORWARD(library, result, name, parameters, arguments) \
    result name parameters {                                          \
        VANTREL_REAL(library, name);                                  \
        return real arguments;                                        \
    }

VANTREL_FORWARD(curl, CURLcode, curl_global_init, (long flags), (flags))
VANTREL_FORWARD(curl, const char*, curl_easy_strerror, (CURLcode code), (code))
VANTREL_FORWARD(curl, CURL*, curl_easy_init, (), ())
VANTREL_FORWARD(curl, void, curl_easy_cleanup, (CURL * handle), (handle))
VANTREL_FORWARD(curl, CURLM*, curl_multi_init, (), ())
VANTREL_FORWARD(curl, CURLMcode, curl_multi_cleanup, (CURLM * multi), (multi))
VANTREL_FORWARD(curl, CURLMcode, curl_multi_add_handle, (CURLM * multi, CURL* handle), (multi, handle))
VANTREL_FORWARD(curl, CURLMcode, curl_multi_remove_handle, (CURLM * multi, CURL* handle), (multi, handle))
VANTREL_FORWARD(curl, CURLMcode, curl_multi_perform, (CURLM * multi, int* running), (multi, running))
VANTREL_FORWARD(curl, CURLMsg*, curl_multi_info_read, (CURLM * multi, int* left), (multi, left))
VANTREL_FORWARD(curl, CURLMcode, curl_multi_poll,
                (CURLM * multi, curl_waitfd* more, unsigned count, int milliseconds, int* ready),
                (multi, more, count, milliseconds, ready))
VANTREL_FORWARD(curl, curl_slist*, curl_slist_append, (curl_slist * list, const char* text), (list, text))
VANTREL_FORWARD(curl, void, curl_slist_free_all, (curl_slist * list), (list))

// The library says of each option whether it is a pointer or a number; both are as wide here.
static_assert(sizeof(void*) == sizeof(long) && sizeof(void*) == sizeof(curl_off_t));

CURLcode curl_easy_setopt(CURL* handle, CURLoption option, ...) {
    VANTREL_REAL(curl, curl_easy_setopt);
    va_list values;
    va_start(values, option);
    void* const value = va_arg(values, void*);
    va_end(values);
    return real(handle, option, value);
}

CURLcode curl_easy_getinfo(CURL* handle, CURLINFO info, ...) {
    VANTREL_REAL(curl, curl_easy_getinfo);
    va_list values;
    va_start(values, info);
    void* const value = va_arg(values, void*);
    va_end(values);
    return real(handle, info, value);
}

VANTREL_FORWARD(cfitsio, void, fits_get_errstatus, (int status, char* text), (status, text))
VANTREL_FORWARD(cfitsio, void, fits_clear_errmsg, (), ())
VANTREL_FORWARD(cfitsio, int, fits_open_diskfile, (fitsfile * *file, const char* name, int mode, int* status),
                (file, name, mode, status))
VANTREL_FORWARD(cfitsio, int, fits_create_diskfile, (fitsfile * *file, const char* name, int* status),
                (file, name, status))
VANTREL_FORWARD(cfitsio, int, fits_close_file, (fitsfile * file, int* status), (file, status))
VANTREL_FORWARD(cfitsio, int, fits_movabs_hdu, (fitsfile * file, int number, int* type, int* status),
                (file, number, type, status))
VANTREL_FORWARD(cfitsio, int, fits_get_img_paramll,
                (fitsfile * file, int most, int* bitpix, int* axes, LONGLONG* sizes, int* status),
                (file, most, bitpix, axes, sizes, status))
VANTREL_FORWARD(cfitsio, int, fits_is_compressed_image, (fitsfile * file, int* status), (file, status))
VANTREL_FORWARD(cfitsio, int, fits_read_subset,
                (fitsfile * file, int type, long* from, long* to, long* each, void* none, void* values,
                 int* anyNone, int* status),
                (file, type, from, to, each, none, values, anyNone, status))
VANTREL_FORWARD(cfitsio, int, fits_update_key,
                (fitsfile * file, int type, const char* keyword, void* value, const char* comment,
                 int* status),
                (file, type, keyword, value, comment, status))
VANTREL_FORWARD(cfitsio, int, fits_update_key_dbl,
                (fitsfile * file, const char* keyword, double value, int digits, const char* comment,
                 int* status),
                (file, keyword, value, digits, comment, status))
VANTREL_FORWARD(cfitsio, int, fits_update_key_str,
                (fitsfile * file, const char* keyword, const char* value, const char* comment, int* status),
                (file, keyword, value, comment, status))
VANTREL_FORWARD(cfitsio, int, fits_delete_key, (fitsfile * file, const char* keyword, int* status),
                (file, keyword, status))
VANTREL_FORWARD(cfitsio, int, fits_create_imgll,
                (fitsfile * file, int bitpix, int axes, LONGLONG* sizes, int* status),
                (file, bitpix, axes, sizes, status))
VANTREL_FORWARD(cfitsio, int, fits_write_img,
                (fitsfile * file, int type, LONGLONG first, LONGLONG count, void* values, int* status),
                (file, type, first, count, values, status))

VANTREL_FORWARD(libjpeg, jpeg_error_mgr*, jpeg_std_error, (jpeg_error_mgr * errors), (errors))
VANTREL_FORWARD(libjpeg, void, jpeg_CreateDecompress, (j_decompress_ptr jpeg, int version, size_t size),
                (jpeg, version, size))
VANTREL_FORWARD(libjpeg, void, jpeg_destroy_decompress, (j_decompress_ptr jpeg), (jpeg))
VANTREL_FORWARD(libjpeg, void, jpeg_stdio_src, (j_decompress_ptr jpeg, FILE* file), (jpeg, file))
VANTREL_FORWARD(libjpeg, int, jpeg_read_header, (j_decompress_ptr jpeg, boolean image), (jpeg, image))
VANTREL_FORWARD(libjpeg, boolean, jpeg_start_decompress, (j_decompress_ptr jpeg), (jpeg))
VANTREL_FORWARD(libjpeg, JDIMENSION, jpeg_read_scanlines,
                (j_decompress_ptr jpeg, JSAMPARRAY lines, JDIMENSION most), (jpeg, lines, most))

VANTREL_FORWARD(libpng, int, png_image_begin_read_from_file, (png_imagep image, const char* name),
                (image, name))
VANTREL_FORWARD(libpng, int, png_image_finish_read,
                (png_imagep image, png_const_colorp behind, void* values, png_int_32 stride, void* colours),
                (image, behind, values, stride, colours))

VANTREL_FORWARD(libpng, int, png_image_write_to_file,
                (png_imagep image, const char* name, int eight, const void* values, png_int_32 stride,
                 const void* colours),
                (image, name, eight, values, stride, colours))

VANTREL_FORWARD(libtiff, TIFF*, TIFFOpen, (const char* name, const char* mode), (name, mode))
VANTREL_FORWARD(libtiff, void, TIFFClose, (TIFF * tiff), (tiff))
VANTREL_FORWARD(libtiff, TIFFErrorHandler, TIFFSetErrorHandler, (TIFFErrorHandler handler), (handler))
VANTREL_FORWARD(libtiff, TIFFErrorHandler, TIFFSetWarningHandler, (TIFFErrorHandler handler), (handler))
VANTREL_FORWARD(libtiff, int, TIFFIsTiled, (TIFF * tiff), (tiff))
VANTREL_FORWARD(libtiff, tmsize_t, TIFFScanlineSize, (TIFF * tiff), (tiff))
VANTREL_FORWARD(libtiff, int, TIFFReadScanline, (TIFF * tiff, void* line, uint32_t row, uint16_t sample),
                (tiff, line, row, sample))
VANTREL_FORWARD(libtiff, int, TIFFReadRGBAImageOriented,
                (TIFF * tiff, uint32_t width, uint32_t height, uint32_t* raster, int orientation, int stop),
                (tiff, width, height, raster, orientation, stop))

int TIFFGetField(TIFF* file, uint32_t tag, ...) {
    VANTREL_REAL(libtiff, TIFFVGetField);
    va_list values;
    va_start(values, tag);
    const int found = real(file, tag, values);
    va_end(values);
    return found;
}

int TIFFGetFieldDefaulted(TIFF* file, uint32_t tag, ...) {
    VANTREL_REAL(libtiff, TIFFVGetFieldDefaulted);
    va_list values;
    va_start(values, tag);
    const int found = real(file, tag, values);
    va_end(values);
    return found;
}

VANTREL_FORWARD(libraw, libraw_data_t*, libraw_init, (unsigned int flags), (flags))
VANTREL_FORWARD(libraw, void, libraw_close, (libraw_data_t * file), (file))
VANTREL_FORWARD(libraw, const char*, libraw_strerror, (int status), (status))
VANTREL_FORWARD(libraw, int, libraw_open_file, (libraw_data_t * file, const char* name), (file, name))
VANTREL_FORWARD(libraw, int, libraw_unpack, (libraw_data_t * file), (file))
VANTREL_FORWARD(libraw, int, libraw_COLOR, (libraw_data_t * file, int row, int column), (file, row, column))
