#include "platesolve/pinpoint_catalogs.h"

#include <algorithm>
#include <array>

namespace vantrel::platesolve {
namespace {

struct Catalog {
    int number;
    const char* name;
};

constexpr std::array<Catalog, 9> kCatalogs{{{0, "GSC-1.1"},
                                            {1, "USNO-SA2.0"},
                                            {3, "GSC-ACT"},
                                            {4, "Tycho-2"},
                                            {5, "USNO-A2.0"},
                                            {6, "UCAC2"},
                                            {7, "USNO-B"},
                                            {8, "USNO-B-Net"},
                                            {9, "NOMAD-Net"}}};

}  // namespace

std::string ppCatName(int number) {
    const auto found = std::find_if(kCatalogs.begin(), kCatalogs.end(),
                                    [&](const Catalog& catalog) { return catalog.number == number; });
    return found == kCatalogs.end() ? "" : found->name;
}

bool isInternetCatalog(int number) { return number == 8 || number == 9; }

void LoadComboCat(platform::ComboBox& list) {
    for (const Catalog& catalog : kCatalogs) list.addItem(catalog.name, catalog.number);
}

void getCatName(platform::ComboBox& list, int number) { list.setText(ppCatName(number)); }

}  // namespace vantrel::platesolve
