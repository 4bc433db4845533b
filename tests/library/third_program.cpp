// A program of somebody else: it sees the installed header and library and nothing else of ours. Its picture
// is a file of its own simple kind: width, height, pixels as floats, where it really points.
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <vector>

#include <vantrel/solver.h>

namespace {

int failures = 0;

void expect(bool good, const char* what) {
    if (good) return;
    std::fprintf(stderr, "failed: %s\n", what);
    ++failures;
}

template <typename Error, typename Call>
bool throws(Call&& call) {
    try {
        call();
    } catch (const Error& error) {
        return error.what()[0] != '\0';
    }
    return false;
}

}  // namespace

int main(int, char** argv) {
    std::ifstream file(argv[1], std::ios::binary);
    float head[6] = {};
    file.read(reinterpret_cast<char*>(head), sizeof head);
    const auto width = static_cast<std::size_t>(head[0]), height = static_cast<std::size_t>(head[1]);
    const double ra = static_cast<double>(head[2]), dec = static_cast<double>(head[3]);
    const double scale = static_cast<double>(head[4]), turn = static_cast<double>(head[5]);
    std::vector<float> pixels(width * height);
    file.read(reinterpret_cast<char*>(pixels.data()), static_cast<std::streamsize>(4 * pixels.size()));
    expect(file.good(), "the picture is read");
    const vantrel::FieldPicture picture{width, height, pixels};

    vantrel::FieldSolver solver;
    solver.keepPatternsIn(argv[2]);
    vantrel::FieldHint near;
    near.raDeg = ra + 0.4;
    near.decDeg = dec - 0.3;
    near.scale = 1.05 * scale;
    near.year = 2000;
    vantrel::FieldHint nothing;
    nothing.year = 2000;
    for (const vantrel::FieldHint& hint : {near, nothing}) {
        const vantrel::FieldSolution field = solver.solve(picture, hint);
        std::printf("%d %.5f %.5f %.4f %.4f %.3f, errors %.3f\" %.4f, %zu of %zu stars\n", field.solved,
                    field.raDeg, field.decDeg, field.scaleX, field.scaleY, field.rotationDeg,
                    field.centreErrorArcsec, field.rotationErrorDeg, field.matched, field.starsFound);
        expect(field.solved && field.reason.empty(), "the picture is solved");
        expect(std::abs(field.raDeg - ra) < 1e-3 && std::abs(field.decDeg - dec) < 1e-3, "where it points");
        expect(std::abs(field.scaleX / scale - 1) < 2e-3 && std::abs(field.scaleY / scale + 1) < 2e-3,
               "its scales, mirrored");
        expect(std::abs(field.rotationDeg - turn) < 0.05, "its rotation");
        expect(field.centreErrorArcsec > 0 && field.centreErrorArcsec < 1 && field.matched > 20,
               "its errors");
    }
    vantrel::FieldHint wrong = near;
    wrong.decDeg = -dec;
    const vantrel::FieldSolution unsolved = solver.solve(picture, wrong);
    expect(!unsolved.solved && !unsolved.reason.empty() && unsolved.starsFound > 20, "why it isn't solved");
    vantrel::FieldHint half;
    half.raDeg = 3;
    expect(throws<std::invalid_argument>([&] { solver.solve(picture, half); }), "half a position is refused");
    expect(throws<std::invalid_argument>([&] {
               solver.solve({width, height + 1, pixels}, near);
           }),
           "too few pixels are refused");
    expect(throws<std::runtime_error>([&] { vantrel::FieldSolver(argv[2], 5); }),
           "a missing catalogue is told");
    return failures;
}
