// The reference catalogues that PinPoint knows, by its numbers.
#pragma once

#include <string>

#include "platform/controls.h"

namespace vantrel::platesolve {

/// The number that is chosen while none is stored: GSC-ACT.
inline constexpr int kDefaultCatalog = 3;

/// Empty for a number that belongs to no catalogue.
std::string ppCatName(int number);

/// True for the two catalogues that are looked up over the internet instead of in a folder.
bool isInternetCatalog(int number);

/// Fills the list with every catalogue, its number as item data.
void LoadComboCat(platform::ComboBox& list);

/// Shows the catalogue's name as the list's text.
void getCatName(platform::ComboBox& list, int number);

}  // namespace vantrel::platesolve
