// Cone searches for a field of one degree in catalogues of full size. The trees (some gigabytes, most of it
// holes) are written to the folder in VANTREL_BENCH_TREES, where they stay, or to a temporary one.
#include <cstdio>
#include <cstdlib>

#include <benchmark/benchmark.h>
#include <stdlib.h>

#include "catalogs/distributions.h"
#include "full_size_trees.h"

namespace vantrel::bench {
namespace {

using catalogs::CatalogFolder;
using catalogs::FoundCatalog;

struct Tree {
    const char* name;
    std::function<void(const fs::path&)> write;
    FoundCatalog (*open)(const CatalogFolder&);
};

const std::vector<Tree>& trees() {
    static const std::vector<Tree> all = {
        {"gsc", writeGuideStars, catalogs::openGuideStars},
        {"tycho2", writeTycho2, catalogs::openTycho2},
        {"usno_a", writeUsnoA, catalogs::openUsnoA},
        {"usno_b", writeUsnoB, catalogs::openUsnoB},
        {"ucac2", writeUcac2, catalogs::openUcac2},
        {"ucac4", writeUcac4, catalogs::openUcac4},
        {"cells_1476", [](const fs::path& root) { writeCells(root, "1476", 8000); },
         catalogs::openCellDatabase},
        {"cells_290", [](const fs::path& root) { writeCells(root, "290", 4000); },
         catalogs::openCellDatabase},
    };
    return all;
}

void opening(benchmark::State& state, const Tree& tree, const fs::path& root) {
    for (auto _ : state) benchmark::DoNotOptimize(tree.open(CatalogFolder(root)));
}

void search(benchmark::State& state, const FoundCatalog& catalog, const Field& field, std::size_t maxStars) {
    std::size_t found = 0;
    for (auto _ : state)
        found = catalog
                    ->cone({.raDeg = field.ra,
                            .decDeg = field.dec,
                            .radiusDeg = 0.71,
                            .epochYear = 2027,
                            .maxStars = maxStars})
                    .size();
    state.counters["stars"] = static_cast<double>(found);
}

void registerAll(const fs::path& folder) {
    for (const Tree& tree : trees()) {
        const fs::path root = folder / tree.name;
        if (!fs::exists(root)) {
            std::printf("writing %s\n", root.c_str());
            tree.write(root);
        }
        const FoundCatalog catalog = tree.open(CatalogFolder(root));
        benchmark::RegisterBenchmark((std::string("open/") + tree.name).c_str(), opening, tree, root)
            ->Unit(benchmark::kMillisecond);
        for (const Field& field : kFields) {
            const std::string name = std::string(tree.name) + "/" + field.name;
            benchmark::RegisterBenchmark((name + "/all").c_str(), search, catalog, field, 0)
                ->Unit(benchmark::kMillisecond);
            benchmark::RegisterBenchmark((name + "/500").c_str(), search, catalog, field, 500)
                ->Unit(benchmark::kMillisecond);
        }
    }
}

}  // namespace
}  // namespace vantrel::bench

int main(int argc, char** argv) {
    namespace fs = std::filesystem;
    const char* named = std::getenv("VANTREL_BENCH_TREES");
    std::string pattern = fs::temp_directory_path() / "vantrel-trees-XXXXXX";
    const fs::path folder = named != nullptr ? fs::path(named) : fs::path(::mkdtemp(pattern.data()));
    benchmark::Initialize(&argc, argv);
    vantrel::bench::registerAll(folder);
    benchmark::RunSpecifiedBenchmarks();
    if (named == nullptr) fs::remove_all(folder);
    return 0;
}
