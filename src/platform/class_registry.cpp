#include "platform/class_registry.h"

#include "platform/text.h"

namespace vantrel::platform {

void ClassRegistry::install(const std::string& progId, AutomationClass automationClass) {
    classes_.insert_or_assign(toLower(progId), Entry{progId, std::move(automationClass)});
}

void ClassRegistry::uninstall(const std::string& progId) { classes_.erase(toLower(progId)); }

const ClassRegistry::Entry* ClassRegistry::find(const std::string& progId) const {
    const auto found = classes_.find(toLower(progId));
    return found == classes_.end() ? nullptr : &found->second;
}

bool ClassRegistry::isInstalled(const std::string& progId) const { return find(progId) != nullptr; }

std::vector<std::string> ClassRegistry::installed(const std::string& deviceType) const {
    std::vector<std::string> progIds;
    for (const auto& [key, entry] : classes_)
        if (deviceType.empty() || equalIgnoringCase(entry.automationClass.deviceType, deviceType))
            progIds.push_back(entry.progId);
    return progIds;
}

ObjectRef ClassRegistry::create(const std::string& progId) {
    const Entry* entry = find(progId);
    if (entry == nullptr) throw runTimeError(error_number::kCannotCreateObject);
    return entry->automationClass.create();
}

std::string ClassRegistry::serverPath(const std::string& progId) const {
    const Entry* entry = find(progId);
    return entry == nullptr ? std::string() : entry->automationClass.serverPath;
}

std::string ClassRegistry::profileDescription(const std::string& deviceType,
                                              const std::string& progId) const {
    const Entry* entry = find(progId);
    if (entry == nullptr || !equalIgnoringCase(entry->automationClass.deviceType, deviceType)) return {};
    return entry->automationClass.description;
}

}  // namespace vantrel::platform
