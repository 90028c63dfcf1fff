#pragma once

#include "data/ManagedItemGetter.h"

/// Reads a configuration item through a member operation of its owner, which outlives it.
template <class T>
class StringItemGetter : public ManagedItemGetter {
public:
    using Operation = std::string (T::*)();

    StringItemGetter(T* owner, Operation operation) : m_owner(owner), m_operation(operation) {}

    std::string get(const std::string&) override { return (m_owner->*m_operation)(); }

private:
    T* m_owner;
    Operation m_operation;
};
