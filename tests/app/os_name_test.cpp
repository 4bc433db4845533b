#include "app/os_name.h"

#include <gtest/gtest.h>

namespace vantrel::app {
namespace {

using platform::SystemVersion;

TEST(GetOSName, NamesEverySystemOfTheTable) {
    const struct {
        SystemVersion version;
        const char* name;
    } rows[] = {
        {{.platformId = 1, .major = 4, .minor = 0}, "Windows 95"},
        {{.platformId = 1, .major = 4, .minor = 0, .servicePackText = " C "}, "Windows 95 OSR2"},
        {{.platformId = 1, .major = 4, .minor = 0, .servicePackText = "B"}, "Windows 95 OSR2"},
        {{.platformId = 1, .major = 4, .minor = 10}, "Windows 98"},
        {{.platformId = 1, .major = 4, .minor = 10, .servicePackText = " A "}, "Windows 98 SE"},
        {{.platformId = 1, .major = 4, .minor = 90}, "Windows ME"},
        {{.platformId = 1, .major = 3}, ""},
        {{.platformId = 2, .major = 5, .suiteMask = 2, .productType = 1}, "Windows 2000 Advanced"},
        {{.platformId = 2, .major = 5, .suiteMask = 128, .productType = 1}, "Windows 2000 Data center"},
        {{.platformId = 2, .major = 5, .productType = 1}, "Windows 2000"},
        {{.platformId = 2, .major = 5, .servicePackMajor = 4, .productType = 3}, ""},
        {{.platformId = 2, .major = 5, .minor = 1, .servicePackMajor = 2, .productType = 1},
         "Windows XP Professional Service Pack 2"},
        {{.platformId = 2,
          .major = 5,
          .minor = 1,
          .servicePackMajor = 2,
          .servicePackMinor = 1,
          .productType = 1},
         "Windows XP Professional Service Pack 2.1"},
        {{.platformId = 2, .major = 5, .minor = 1, .servicePackMinor = 1, .productType = 1},
         "Windows XP Professional"},
        {{.platformId = 2, .major = 5, .minor = 1, .suiteMask = 512, .productType = 1}, "Windows XP Home"},
        {{.platformId = 2, .major = 5, .minor = 1, .suiteMask = 1, .productType = 1}, "Windows XP"},
        {{.platformId = 2, .major = 5, .minor = 2, .productType = 3}, "Windows Server 2003 Standard"},
        {{.platformId = 2, .major = 5, .minor = 2, .suiteMask = 2, .productType = 3},
         "Windows Server 2003 Enterprise"},
        {{.platformId = 2, .major = 5, .minor = 2, .suiteMask = 128, .productType = 3},
         "Windows Server 2003 Data center"},
        {{.platformId = 2, .major = 5, .minor = 2, .suiteMask = 1024, .productType = 3},
         "Windows Server 2003 Web Edition"},
        {{.platformId = 2, .major = 5, .minor = 2, .suiteMask = 1, .productType = 3}, "Windows Server 2003"},
        {{.platformId = 2, .major = 5, .minor = 2, .productType = 1}, ""},
        {{.platformId = 2, .major = 6, .servicePackMajor = 1, .productType = 1},
         "Windows Vista Ultimate Edition Service Pack 1"},
        {{.platformId = 2, .major = 6, .productType = 3}, "Windows Server 2008 Home Premium Edition"},
        {{.platformId = 2, .major = 6, .productType = 28}, "Windows Vista Ultimate Edition (N)"},
        {{.platformId = 2, .major = 6, .productType = 0xABCDABCD}, "Windows Vista Not activated product"},
        {{.platformId = 2, .major = 6, .productType = 11}, "Windows Vista "},
        {{.platformId = 2, .major = 6, .minor = 1, .productType = 1}, ""},
        {{.platformId = 3, .major = 5}, ""},
    };
    for (const auto& row : rows)
        EXPECT_EQ(GetOSName(row.version), row.name)
            << row.version.platformId << ": " << row.version.major << "." << row.version.minor;
    EXPECT_EQ(GetOSName(std::nullopt), "Error");
}

}  // namespace
}  // namespace vantrel::app
