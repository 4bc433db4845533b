#include "headless/image_saving.h"

#include <filesystem>

#include "fits/fits_image.h"
#include "fits/fits_writing.h"
#include "headless/json_values.h"

namespace vantrel::headless {

using namespace platform;

namespace {

std::filesystem::path machinePath(const FolderMap& folders, const std::string& path) {
    const bool hasDrive = path.size() >= 2 && path[1] == ':';
    if (hasDrive || path.find('\\') != std::string::npos) return folders.real(path);
    return std::filesystem::absolute(path);
}

}  // namespace

void saveShownImage(const imaging::OpenDocuments& documents, const FolderMap& folders,
                    const std::string& path) {
    const auto shown = documents.current();
    if (!shown) throw CommandError("No imaging program shows an image");
    try {
        fits::writeFits(machinePath(folders, path), *shown->pixels, shown->header);
    } catch (const fits::FitsError& error) {
        throw CommandError(std::string("The image could not be saved: ") + error.what());
    }
}

}  // namespace vantrel::headless
