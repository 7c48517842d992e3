#include "Tallyfoot/Recording/KnownApplications.h"

#include "Tallyfoot/Recording/StoreKeys.h"

#include <algorithm>

namespace tallyfoot {

namespace {

Coder encoded(const ApplicationInfo& appInfo) {
    Coder coder(ApplicationInfo::archiveClassName);
    appInfo.encode(coder);
    return coder;
}

auto withName(std::string_view appName) {
    return [appName](const std::shared_ptr<const ApplicationInfo>& known) { return known->appName() == appName; };
}

} // namespace

std::vector<std::shared_ptr<const ApplicationInfo>> KnownApplications::list() const {
    List list;
    const auto stored = userDefaults_.object(storekeys::applications);
    const auto* data = stored ? stored->as<PropertyList::Data>() : nullptr;
    if (data == nullptr) return list;
    const auto coders = archiver_.unarchivedArray(data->bytes);
    if (!coders) return list;
    for (const auto& coder : *coders) list.push_back(std::make_shared<const ApplicationInfo>(coder));
    return list;
}

void KnownApplications::setCurrent(const ApplicationInfo& appInfo) {
    userDefaults_.setObject(storekeys::currentApplication,
                            {PropertyList::Data{archiver_.archivedData(encoded(appInfo))}});
    userDefaults_.synchronize();
    auto known = list();
    const auto place = std::find_if(known.begin(), known.end(), withName(appInfo.appName()));
    auto entry = std::make_shared<const ApplicationInfo>(appInfo);
    if (place != known.end())
        *place = std::move(entry);
    else
        known.push_back(std::move(entry));
    store(known);
}

void KnownApplications::remove(std::string_view appName) {
    auto known = list();
    const auto place = std::find_if(known.begin(), known.end(), withName(appName));
    if (place == known.end()) return;
    known.erase(place);
    store(known);
}

void KnownApplications::store(const List& list) {
    std::vector<Coder> coders;
    for (const auto& appInfo : list) coders.push_back(encoded(*appInfo));
    userDefaults_.setObject(storekeys::applications, {PropertyList::Data{archiver_.archivedData(coders)}});
    userDefaults_.synchronize();
}

} // namespace tallyfoot
