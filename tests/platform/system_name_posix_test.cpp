#include <fstream>

#include <gtest/gtest.h>
#include <sys/utsname.h>

#include "platform/system_name.h"
#include "support/temp_folder.h"

namespace vantrel::platform {
namespace {

TEST(SystemName, IsTheDistributionsElseTheKernels) {
    utsname kernel{};
    ASSERT_EQ(::uname(&kernel), 0);
    const std::string otherwise = std::string(kernel.sysname) + " " + kernel.release;
    const struct {
        const char* why;
        const char* file;
        const char* text;
        std::string name;
    } rows[] = {
        {"in quotes", "etc/os-release", "NAME=Starry\nPRETTY_NAME=\"Starry Linux 3 (night)\"\nID=starry\n",
         "Starry Linux 3 (night)"},
        {"in the other quotes", "etc/os-release", "PRETTY_NAME='Starry 3'\n", "Starry 3"},
        {"one word", "etc/os-release", "PRETTY_NAME=Starry", "Starry"},
        {"with marks", "etc/os-release", "PRETTY_NAME=\"The \\\"Starry\\\" one\"\n", "The \"Starry\" one"},
        {"only the vendor's file", "usr/lib/os-release", "PRETTY_NAME=Starry\n", "Starry"},
        {"without the line", "etc/os-release", "NAME=Starry\n", otherwise},
        {"empty", "etc/os-release", "PRETTY_NAME=\"\"\n", otherwise},
        {"no file", "etc/other", "", otherwise},
    };
    for (const auto& row : rows) {
        const test::TempFolder root;
        std::filesystem::create_directories((root / row.file).parent_path());
        std::ofstream(root / row.file) << row.text;
        EXPECT_EQ(systemName(root.path()), row.name) << row.why;
    }
}

}  // namespace
}  // namespace vantrel::platform
