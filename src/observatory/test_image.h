// The star field on which the operator tests the solver.
#pragma once

#include <filesystem>

#include "observatory/telescopes/camera.h"

namespace vantrel::observatory {

inline constexpr const char* kTestImageName = "VTL_Test_Image.fit";

/// Draws the catalogue's stars around NGC 3532 as "VTL_Test_Image.fit" into the folder, unless a file of that
/// name is there. The scale is 1.7 arcsec per pixel; the header holds the target position, but no solution.
/// The same catalogue, opened only when it is needed, gives the same file. Throws what opening it throws, and
/// FitsError when the file can't be written.
void provideTestImage(const std::filesystem::path& folder, const sky::CatalogSource& openCatalog);

}  // namespace vantrel::observatory
