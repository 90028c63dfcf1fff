#pragma once

/// Owner mark of a root id in ManageableData; services pass none.
class DataItemIfc {
public:
    virtual ~DataItemIfc() = default;
};
