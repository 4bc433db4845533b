#include "app/os_name.h"

#include <array>
#include <utility>

#include "platform/text.h"

namespace vantrel::app {
namespace {

using platform::SystemVersion;

constexpr int kHome = 1;          // platform ids
constexpr int kProfessional = 2;  // (the two families)
constexpr std::uint32_t kWorkstation = 1;
constexpr std::uint32_t kServer = 3;

constexpr std::array<std::pair<std::uint32_t, const char*>, 29> kVistaEditions{{
    {0, "An unknown product"},
    {1, "Ultimate Edition"},
    {2, "Home Basic Edition"},
    {3, "Home Premium Edition"},
    {4, "Enterprise Edition"},
    {5, "Home Basic Edition (N)"},
    {6, "Business Edition"},
    {7, "Server Standard Edition (full installation)"},
    {8, "Server Datacenter Edition (full installation)"},
    {9, "Small Business Server"},
    {10, "Server Enterprise Edition (full installation)"},
    {12, "Server Datacenter Edition (core installation)"},
    {13, "Server Standard Edition (core installation)"},
    {14, "Server Enterprise Edition (core installation)"},
    {15, "Server Enterprise Edition for Itanium-based Systems"},
    {16, "Business Edition (N)"},
    {17, "Web Server Edition"},
    {18, "Cluster Server Edition"},
    {19, "Home Server Edition"},
    {20, "Storage Server Express Edition"},
    {21, "Storage Server Standard Edition"},
    {22, "Storage Server Workgroup Edition"},
    {23, "Storage Server Enterprise Edition"},
    {24, "Server for Small Business Edition"},
    {25, "Small Business Server Premium Edition"},
    {26, "Home Premium Edition (N)"},
    {27, "Enterprise Edition (N)"},
    {28, "Ultimate Edition (N)"},
    {0xABCDABCD, "Not activated product"},
}};

std::string homeName(const SystemVersion& version) {
    const std::string pack = platform::trimmed(version.servicePackText);
    const char letter = pack.empty() ? ' ' : pack.front();
    if (version.major != 4) return "";
    switch (version.minor) {
        case 0:
            return letter == 'B' || letter == 'C' ? "Windows 95 OSR2" : "Windows 95";
        case 10:
            return letter == 'A' ? "Windows 98 SE" : "Windows 98";
        case 90:
            return "Windows ME";
        default:
            return "";
    }
}

std::string windows2000(const SystemVersion& version) {
    if (version.productType != kWorkstation) return "";
    switch (version.suiteMask) {
        case 2:
            return "Windows 2000 Advanced";
        case 128:
            return "Windows 2000 Data center";
        default:
            return "Windows 2000";
    }
}

std::string windowsXP(const SystemVersion& version) {
    if (version.productType != kWorkstation) return "";
    switch (version.suiteMask) {
        case 0:
            return "Windows XP Professional";
        case 512:
            return "Windows XP Home";
        default:
            return "Windows XP";
    }
}

std::string server2003(const SystemVersion& version) {
    if (version.productType != kServer) return "";
    switch (version.suiteMask) {
        case 0:
            return "Windows Server 2003 Standard";
        case 2:
            return "Windows Server 2003 Enterprise";
        case 128:
            return "Windows Server 2003 Data center";
        case 1024:
            return "Windows Server 2003 Web Edition";
        default:
            return "Windows Server 2003";
    }
}

std::string vista(const SystemVersion& version) {
    std::string name = version.productType == kServer ? "Windows Server 2008 " : "Windows Vista ";
    for (const auto& [code, edition] : kVistaEditions)
        if (code == version.productType) name += edition;
    return name;
}

std::string professionalName(const SystemVersion& version) {
    const std::pair<int, int> number{version.major, version.minor};
    if (number == std::pair{5, 0}) return windows2000(version);
    if (number == std::pair{5, 1}) return windowsXP(version);
    if (number == std::pair{5, 2}) return server2003(version);
    if (number == std::pair{6, 0}) return vista(version);
    return "";
}

std::string servicePack(const SystemVersion& version) {
    if (version.servicePackMajor <= 0) return "";
    std::string suffix = " Service Pack " + std::to_string(version.servicePackMajor);
    if (version.servicePackMinor >= 1) suffix += "." + std::to_string(version.servicePackMinor);
    return suffix;
}

}  // namespace

std::string GetOSName(const std::optional<SystemVersion>& version) {
    if (!version) return "Error";
    if (version->platformId == kHome) return homeName(*version);
    if (version->platformId != kProfessional) return "";
    const std::string name = professionalName(*version);
    return name.empty() ? "" : name + servicePack(*version);
}

}  // namespace vantrel::app
