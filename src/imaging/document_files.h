// Open images on their way to the disk.
#pragma once

#include <string>

#include "imaging/imaging_program.h"

namespace vantrel::imaging {

/// Saves the image, marks included, as FITS; a file that is there is replaced, folders are not made. A name
/// without an ending gets ".fit". Throws std::runtime_error that names the path. saveInBackground lets the
/// window live on meanwhile.
void saveDocument(ImageDocument& document, const platform::FolderMap& folders, const std::string& path);
void saveInBackground(const OpenDocuments::Ref& document, const ImagingBench& bench, const std::string& path);

/// The header's value under the keyword; empty when there is none.
platform::Value headerValue(const ImageDocument& document, const std::string& keyword);

/// Puts the card in the place of the one with its keyword, or behind the others.
void setHeaderCard(ImageDocument& document, fits::FitsCard card);

/// The same with a value as programs put it. Throws std::runtime_error for a keyword that FITS doesn't allow
/// and for values other than texts, numbers and booleans.
void setHeaderValue(ImageDocument& document, const std::string& keyword, const platform::Value& value);

}  // namespace vantrel::imaging
