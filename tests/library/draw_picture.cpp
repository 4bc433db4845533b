// Draws the picture that third_program.cpp solves.
#include <fstream>
#include <vector>

#include "sky/compact_catalog.h"
#include "support/star_field.h"

int main(int, char** argv) {
    using namespace vantrel;
    test::StarField field;
    field.width = 640;
    field.height = 480;
    field.wcs = test::wcsFor(640, 480, {75, 33}, 6, 20, true);
    const auto counts = test::drawField(sky::CompactCatalog::openBuiltIn().get(), field);
    const std::vector<float> pixels(counts.begin(), counts.end());
    const float head[] = {640, 480, 75, 33, 6, 20};
    std::ofstream file(argv[1], std::ios::binary);
    file.write(reinterpret_cast<const char*>(head), sizeof head);
    file.write(reinterpret_cast<const char*>(pixels.data()), static_cast<std::streamsize>(4 * pixels.size()));
    return file ? 0 : 1;
}
