#include "OrvaneServiceHelper/OrvaneServiceHelper.h"

#include "Log.h"
#include "OrvaneServiceStrings.h"

std::string OrvaneServiceHelper::getRedirectionPath(const std::string& locationUrl) {
    ORVANE_LOG(DEBUG, "getRedirectionPath() IN locationUrl[%s]", locationUrl.c_str());
    const std::size_t slashes = locationUrl.rfind("//");
    if (slashes == std::string::npos) {
        return locationUrl;
    }
    const std::string hostAndPath = locationUrl.substr(slashes + 2);
    // Without a path there is no "/" and substr throws: a server that redirects to nowhere ends the caller's work.
    const std::string path = hostAndPath.substr(hostAndPath.find('/'));
    ORVANE_LOG(DEBUG, "getRedirectionPath() OUT path[%s]", path.c_str());
    return path;
}

bool OrvaneServiceHelper::addKeyAndValueIntoMultimap(Multimap& map, const std::string& key, const std::string& value) {
    if (key.empty() || value.empty()) {
        return false;
    }
    const auto entry = map.find(key);
    if (entry == map.end()) {
        map.emplace(key, value);
        return true;
    }
    if (entry->second.find(value) != std::string::npos) {
        return false;
    }
    entry->second += OrvaneServiceStrings::OV_SEPERATOR + value;
    return true;
}
