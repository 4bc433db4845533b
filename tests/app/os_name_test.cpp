#include "app/os_name.h"

#include <gtest/gtest.h>

namespace vantrel::app {
namespace {

using platform::SystemVersion;

SystemVersion home(int minor, const char* pack = "") {
    return {.platformId = 1, .major = 4, .minor = minor, .servicePackText = pack};
}
SystemVersion professional(int major, int minor, std::uint32_t product, int suite = 0) {
    return {.platformId = 2, .major = major, .minor = minor, .suiteMask = suite, .productType = product};
}
SystemVersion withPack(SystemVersion version, int major, int minor = 0) {
    version.servicePackMajor = major;
    version.servicePackMinor = minor;
    return version;
}

TEST(GetOSName, NamesEverySystemOfTheTable) {
    const std::pair<SystemVersion, const char*> rows[] = {
        {home(0), "Windows 95"},
        {home(0, " C "), "Windows 95 OSR2"},
        {home(0, "B"), "Windows 95 OSR2"},
        {home(10), "Windows 98"},
        {home(10, " A "), "Windows 98 SE"},
        {home(90), "Windows ME"},
        {{.platformId = 1, .major = 3}, ""},
        {professional(5, 0, 1, 2), "Windows 2000 Advanced"},
        {professional(5, 0, 1, 128), "Windows 2000 Data center"},
        {professional(5, 0, 1), "Windows 2000"},
        {withPack(professional(5, 0, 3), 4), ""},
        {withPack(professional(5, 1, 1), 2), "Windows XP Professional Service Pack 2"},
        {withPack(professional(5, 1, 1), 2, 1), "Windows XP Professional Service Pack 2.1"},
        {withPack(professional(5, 1, 1), 0, 1), "Windows XP Professional"},
        {professional(5, 1, 1, 512), "Windows XP Home"},
        {professional(5, 1, 1, 1), "Windows XP"},
        {professional(5, 2, 3), "Windows Server 2003 Standard"},
        {professional(5, 2, 3, 2), "Windows Server 2003 Enterprise"},
        {professional(5, 2, 3, 128), "Windows Server 2003 Data center"},
        {professional(5, 2, 3, 1024), "Windows Server 2003 Web Edition"},
        {professional(5, 2, 3, 1), "Windows Server 2003"},
        {professional(5, 2, 1), ""},
        {withPack(professional(6, 0, 1), 1), "Windows Vista Ultimate Edition Service Pack 1"},
        {professional(6, 0, 3), "Windows Server 2008 Home Premium Edition"},
        {professional(6, 0, 28), "Windows Vista Ultimate Edition (N)"},
        {professional(6, 0, 0xABCDABCD), "Windows Vista Not activated product"},
        {professional(6, 0, 11), "Windows Vista "},
        {professional(6, 1, 1), ""},
        {{.platformId = 3, .major = 5}, ""},
    };
    for (const auto& [version, name] : rows)
        EXPECT_EQ(GetOSName(version), name)
            << version.platformId << ": " << version.major << "." << version.minor;
    EXPECT_EQ(GetOSName(std::nullopt), "Error");
}

}  // namespace
}  // namespace vantrel::app
