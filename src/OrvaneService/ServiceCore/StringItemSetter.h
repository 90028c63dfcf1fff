#pragma once

#include "data/ManagedItemSetter.h"

/// Writes a configuration item through a member operation of its owner, which outlives it.
template <class T>
class StringItemSetter : public ManagedItemSetter {
public:
    using Operation = bool (T::*)(const std::string& value, std::string& error);

    StringItemSetter(T* owner, Operation operation) : m_owner(owner), m_operation(operation) {}

    /// `other` is not passed on.
    bool set(const std::string& value, const std::string&, std::string& error) override {
        return (m_owner->*m_operation)(value, error);
    }

private:
    T* m_owner;
    Operation m_operation;
};
