// What is said to an INDI server, as XML.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace vantrel::hosts::indi {

/// Elements of a property and what they are to be set to.
using NumberValues = std::vector<std::pair<std::string, double>>;
using TextValues = std::vector<std::pair<std::string, std::string>>;

/// Asks for everything that there is, or for one property of a device.
std::string getProperties();
std::string getProperties(const std::string& device, const std::string& property);

/// Sets a property; `kind` is "Number", "Text" or "Switch".
std::string newVector(const std::string& kind, const std::string& device, const std::string& property,
                      const TextValues& values);

/// From now on the connection carries the pictures of the property, and nothing else.
std::string enableBlobsOnly(const std::string& device, const std::string& property);

/// Asks the server itself for a sign of life, which repeats the text; servers before 2022 don't know it.
std::string pingRequest(const std::string& uid);
std::string pingReply(const std::string& uid);

}  // namespace vantrel::hosts::indi
