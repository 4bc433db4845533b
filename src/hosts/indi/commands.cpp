#include "hosts/indi/commands.h"

namespace vantrel::hosts::indi {
namespace {

std::string escaped(const std::string& text) {
    std::string safe;
    for (const char c : text) {
        switch (c) {
            case '<':
                safe += "&lt;";
                break;
            case '>':
                safe += "&gt;";
                break;
            case '&':
                safe += "&amp;";
                break;
            case '"':
                safe += "&quot;";
                break;
            case '\'':
                safe += "&apos;";
                break;
            default:
                safe += c;
        }
    }
    return safe;
}

std::string attribute(const std::string& name, const std::string& value) {
    return " " + name + "=\"" + escaped(value) + "\"";
}

std::string ofProperty(const std::string& device, const std::string& property) {
    return attribute("device", device) + attribute("name", property);
}

}  // namespace

std::string getProperties() { return "<getProperties version=\"1.7\"/>\n"; }

std::string getProperties(const std::string& device, const std::string& property) {
    return "<getProperties version=\"1.7\"" + ofProperty(device, property) + "/>\n";
}

std::string newVector(const std::string& kind, const std::string& device, const std::string& property,
                      const TextValues& values) {
    std::string xml = "<new" + kind + "Vector" + ofProperty(device, property) + ">\n";
    for (const auto& [name, value] : values)
        xml += "  <one" + kind + attribute("name", name) + ">" + escaped(value) + "</one" + kind + ">\n";
    return xml + "</new" + kind + "Vector>\n";
}

std::string enableBlobsOnly(const std::string& device, const std::string& property) {
    // A server carries what the connection has asked for.
    return getProperties(device, property) + "<enableBLOB" + ofProperty(device, property) +
           ">Only</enableBLOB>\n";
}

std::string pingRequest(const std::string& uid) { return "<pingRequest" + attribute("uid", uid) + "/>\n"; }

std::string pingReply(const std::string& uid) { return "<pingReply" + attribute("uid", uid) + "/>\n"; }

}  // namespace vantrel::hosts::indi
