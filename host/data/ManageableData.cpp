#include "data/ManageableData.h"

#include <algorithm>
#include <map>
#include <utility>

struct ManageableData::Representation {
    std::vector<std::string> rootIds;
    std::map<std::pair<std::string, std::string>, std::string> values; ///< by root key and key

    void add(const std::string& key) {
        if (std::find(rootIds.begin(), rootIds.end(), key) == rootIds.end()) {
            rootIds.push_back(key);
        }
    }
};

ManageableData::ManageableData() : m_representation(std::make_unique<Representation>()) {}

ManageableData::ManageableData(const ManageableData& other)
    : m_representation(std::make_unique<Representation>(*other.m_representation)) {}

ManageableData& ManageableData::operator=(const ManageableData& other) {
    if (this != &other) {
        m_representation = std::make_unique<Representation>(*other.m_representation);
    }
    return *this;
}

ManageableData::ManageableData(ManageableData&& other) noexcept = default;
ManageableData& ManageableData::operator=(ManageableData&& other) noexcept = default;
ManageableData::~ManageableData() = default;

void ManageableData::addRootId(const std::string& key, DataItemIfc*) {
    m_representation->add(key);
}

void ManageableData::setRootId(const std::string& key, DataItemIfc*) {
    m_representation->values.clear();
    m_representation->rootIds = {key};
}

void ManageableData::populate(const std::string& rootKey, const std::string& key, const std::string& value) {
    m_representation->add(rootKey);
    m_representation->values[{rootKey, key}] = value;
}

bool ManageableData::interogate(const std::string& rootKey, const std::string& key, std::string& value) const {
    const auto entry = m_representation->values.find({rootKey, key});
    if (entry == m_representation->values.end()) {
        return false;
    }
    value = entry->second;
    return true;
}

bool ManageableData::interogate(const std::string& key, std::string& value) const {
    return interogate(key, key, value);
}

void ManageableData::getRootIds(std::vector<std::string>& keys) const {
    keys = m_representation->rootIds;
}
