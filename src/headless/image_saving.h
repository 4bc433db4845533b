// Saving what an imaging program shows, for scripts.
#pragma once

#include <string>

#include "imaging/open_documents.h"
#include "platform/folder_map.h"

namespace vantrel::headless {

/// Writes the image in front, marks included, as FITS. `path` has a drive letter or backslashes, or is a path
/// of this machine. Throws CommandError when no image is shown or the file can't be written.
void saveShownImage(const imaging::OpenDocuments& documents, const platform::FolderMap& folders,
                    const std::string& path);

}  // namespace vantrel::headless
