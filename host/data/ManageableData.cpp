#include "data/ManageableData.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

struct ManageableData::Representation {
    using Values = std::vector<std::pair<std::string, std::string>>; ///< by key, hardly ever more than one

    std::vector<std::string> rootIds;
    std::unordered_map<std::string, Values> items; ///< by root id

    Values& add(const std::string& rootKey) {
        const auto [item, isNew] = items.try_emplace(rootKey);
        if (isNew) {
            rootIds.push_back(rootKey);
        }
        return item->second;
    }

    template <typename Pairs>
    static auto find(Pairs& values, const std::string& key) {
        return std::find_if(values.begin(), values.end(), [&key](const auto& value) { return value.first == key; });
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
    m_representation->items.clear();
    m_representation->rootIds.clear();
    m_representation->add(key);
}

void ManageableData::populate(const std::string& rootKey, const std::string& key, const std::string& value) {
    Representation::Values& values = m_representation->add(rootKey);
    const auto present = Representation::find(values, key);
    if (present == values.end()) {
        values.emplace_back(key, value);
    } else {
        present->second = value;
    }
}

bool ManageableData::interogate(const std::string& rootKey, const std::string& key, std::string& value) const {
    const auto item = m_representation->items.find(rootKey);
    if (item == m_representation->items.end()) {
        return false;
    }
    const auto present = Representation::find(item->second, key);
    if (present == item->second.end()) {
        return false;
    }
    value = present->second;
    return true;
}

bool ManageableData::interogate(const std::string& key, std::string& value) const {
    return interogate(key, key, value);
}

void ManageableData::getRootIds(std::vector<std::string>& keys) const {
    keys = m_representation->rootIds;
}
