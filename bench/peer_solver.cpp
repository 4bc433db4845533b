// Solves one picture with the StellarSolver library, so that solver_table.py can hold it beside ours: the
// same files, the same hints, the same line of JSON.
//
//   peer-solver FILE RA_DEG DEC_DEG ARCSEC_PER_PIXEL
//
// Its own profile for one thread and its index files where Debian puts them.

#include <QCoreApplication>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include <fitsio.h>
#include <stellarsolver.h>

namespace {

constexpr double kScaleTolerance = 0.15;  // as vantrel-solve takes it

struct Picture {
    std::vector<float> pixels;
    FITSImage::Statistic shape;
};

Picture read(const char* path) {
    Picture picture;
    fitsfile* file = nullptr;
    int status = 0;
    long size[2] = {0, 0};
    fits_open_image(&file, path, READONLY, &status);
    fits_get_img_size(file, 2, size, &status);
    picture.pixels.resize(static_cast<std::size_t>(size[0]) * static_cast<std::size_t>(size[1]));
    fits_read_img(file, TFLOAT, 1, static_cast<LONGLONG>(picture.pixels.size()), nullptr,
                  picture.pixels.data(), nullptr, &status);
    fits_close_file(file, &status);
    if (status != 0) {
        std::fprintf(stderr, "%s can't be read\n", path);
        std::exit(2);
    }
    picture.shape.dataType = TFLOAT;
    picture.shape.bytesPerPixel = sizeof(float);
    picture.shape.width = static_cast<std::uint16_t>(size[0]);
    picture.shape.height = static_cast<std::uint16_t>(size[1]);
    picture.shape.samples_per_channel = static_cast<std::uint32_t>(picture.pixels.size());
    picture.shape.size = static_cast<std::int64_t>(picture.pixels.size() * sizeof(float));
    return picture;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 5) {
        std::fprintf(stderr, "usage: peer-solver FILE RA_DEG DEC_DEG ARCSEC_PER_PIXEL\n");
        return 2;
    }
    const QCoreApplication application(argc, argv);
    const Picture picture = read(argv[1]);
    const double scale = std::atof(argv[4]);
    StellarSolver solver(SSolver::SOLVE, picture.shape,
                         reinterpret_cast<const std::uint8_t*>(picture.pixels.data()));
    solver.setParameterProfile(SSolver::Parameters::SINGLE_THREAD_SOLVING);
    solver.setIndexFolderPaths({"/usr/share/astrometry"});
    solver.setSearchPositionInDegrees(std::atof(argv[2]), std::atof(argv[3]));
    solver.setSearchScale(scale * (1 - kScaleTolerance), scale * (1 + kScaleTolerance),
                          SSolver::ARCSEC_PER_PIX);
    const bool solved = solver.solve() && solver.solvingDone();
    const FITSImage::Solution found = solved ? solver.getSolution() : FITSImage::Solution{};
    std::printf("{\"solved\": %s, \"ra_deg\": %.9f, \"dec_deg\": %.9f}\n", solved ? "true" : "false",
                found.ra, found.dec);
    return solved ? 0 : 1;
}
