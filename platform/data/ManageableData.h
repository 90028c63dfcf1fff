#pragma once

#include <memory>
#include <string>
#include <vector>

class DataItemIfc;

/// A set of configuration items on its way to or from the store: root ids (the items' keys) in the order in which
/// they were added, and values. A value type without locks; one object belongs to one thread at a time.
class ManageableData {
public:
    ManageableData();
    ManageableData(const ManageableData& other);
    ManageableData& operator=(const ManageableData& other);
    ManageableData(ManageableData&& other) noexcept;
    ManageableData& operator=(ManageableData&& other) noexcept;
    ~ManageableData();

    /// Names one more item, without a value. A key that is there already stays once.
    void addRootId(const std::string& key, DataItemIfc* owner);

    /// Names this item alone: what was there before goes.
    void setRootId(const std::string& key, DataItemIfc* owner);

    /// Gives the item `rootKey` a value under `key`; adds the root id if it is not there.
    void populate(const std::string& rootKey, const std::string& key, const std::string& value);

    /// Value of an item; false, and `value` left alone, when the item has none.
    bool interogate(const std::string& rootKey, const std::string& key, std::string& value) const;
    /// The same with `key` equal to the root key.
    bool interogate(const std::string& key, std::string& value) const;

    /// Replaces `keys` by the root ids in their order.
    void getRootIds(std::vector<std::string>& keys) const;

private:
    struct Representation;
    std::unique_ptr<Representation> m_representation;
};
