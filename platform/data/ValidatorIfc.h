#pragma once

#include <string>
#include <utility>
#include <vector>

/// Validation of configuration groups by the service that owns the items. Called on the thread that delivers the
/// configuration, without any lock of the data manager or the store.
///
/// setValidation, addItemForValidationAsPartOfGroup, isGroupNeedingValidation, clearValidation and allowInvalidData
/// are for a service that keeps its own list of what is to be validated. One that does not leaves them empty and
/// answers false: each of its groups goes to validateGroupAndSetData.
class ValidatorIfc {
public:
    virtual ~ValidatorIfc() = default;

    virtual void setValidation(bool enabled) = 0;
    virtual void addItemForValidationAsPartOfGroup(const std::string& item, const std::string& group) = 0;
    virtual bool isGroupNeedingValidation(const std::string& group) = 0;

    /// Pairs of tag and current value of the group's items.
    virtual std::vector<std::pair<std::string, std::string>> getListValidData(const std::string& group) = 0;

    virtual void clearValidation() = 0;

    /// The items of `group` have gone through their setters and take effect as a whole. False, with `error`
    /// filled, refuses the group. May take as long as the service needs to come down and its threads to end.
    virtual bool validateGroupAndSetData(std::string& error, const std::string& group) = 0;

    virtual void allowInvalidData(bool allowed) = 0;
};
