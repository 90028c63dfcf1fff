#pragma once

#include "framework/Parameter.h"

#include <memory>
#include <string>
#include <vector>

/// A message between services: a name, a type and parameters in the order in which they were added. A value type;
/// one object belongs to one thread at a time.
class Method {
public:
    enum methodTypes : int { REQUEST = 0, RESPONSE = 1 };

    /// An empty request, to be filled by a protocol adapter.
    Method();
    Method(const std::string& name, methodTypes type);
    Method(const Method& other);
    Method& operator=(const Method& other);
    Method(Method&& other) noexcept;
    Method& operator=(Method&& other) noexcept;
    ~Method();

    const std::string& getName() const;
    methodTypes getType() const;
    const std::vector<Parameter>& getParameters() const;

    void addStringParameter(const std::string& name, const std::string& value, Parameter::directions direction);
    void addBoolParameter(const std::string& name, const bool& value, Parameter::directions direction);
    void addIntParameter(const std::string& name, int value, Parameter::directions direction);

    /// Each getter wants name, kind and direction to match; the first match wins. On false `value` is left alone.
    bool getStringParameter(const std::string& name, std::string& value, Parameter::directions direction) const;
    bool getBoolParameter(const std::string& name, bool& value, Parameter::directions direction) const;
    bool getIntParameter(const std::string& name, int& value, Parameter::directions direction) const;

private:
    struct Representation;
    std::unique_ptr<Representation> m_representation;
};
