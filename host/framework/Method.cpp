#include "framework/Method.h"

struct Method::Representation {
    std::string name;
    methodTypes type = REQUEST;
    std::vector<Parameter> parameters;

    const Parameter* find(const std::string& wantedName, Parameter::Kind kind, Parameter::directions direction) const {
        for (const Parameter& parameter : parameters) {
            if (parameter.name == wantedName && parameter.kind == kind && parameter.direction == direction) {
                return &parameter;
            }
        }
        return nullptr;
    }

    Parameter& add(const std::string& newName, Parameter::Kind kind, Parameter::directions direction) {
        Parameter& parameter = parameters.emplace_back();
        parameter.name = newName;
        parameter.kind = kind;
        parameter.direction = direction;
        return parameter;
    }
};

Method::Method() : m_representation(std::make_unique<Representation>()) {}

Method::Method(const std::string& name, methodTypes type) : Method() {
    m_representation->name = name;
    m_representation->type = type;
}

Method::Method(const Method& other) : m_representation(std::make_unique<Representation>(*other.m_representation)) {}

Method& Method::operator=(const Method& other) {
    if (this != &other) {
        m_representation = std::make_unique<Representation>(*other.m_representation);
    }
    return *this;
}

Method::Method(Method&& other) noexcept = default;
Method& Method::operator=(Method&& other) noexcept = default;
Method::~Method() = default;

const std::string& Method::getName() const {
    return m_representation->name;
}

Method::methodTypes Method::getType() const {
    return m_representation->type;
}

const std::vector<Parameter>& Method::getParameters() const {
    return m_representation->parameters;
}

void Method::addStringParameter(const std::string& name, const std::string& value, Parameter::directions direction) {
    m_representation->add(name, Parameter::Kind::STRING, direction).stringValue = value;
}

void Method::addBoolParameter(const std::string& name, const bool& value, Parameter::directions direction) {
    m_representation->add(name, Parameter::Kind::BOOL, direction).boolValue = value;
}

void Method::addIntParameter(const std::string& name, int value, Parameter::directions direction) {
    m_representation->add(name, Parameter::Kind::INT, direction).intValue = value;
}

bool Method::getStringParameter(const std::string& name, std::string& value, Parameter::directions direction) const {
    const Parameter* parameter = m_representation->find(name, Parameter::Kind::STRING, direction);
    if (parameter != nullptr) {
        value = parameter->stringValue;
    }
    return parameter != nullptr;
}

bool Method::getBoolParameter(const std::string& name, bool& value, Parameter::directions direction) const {
    const Parameter* parameter = m_representation->find(name, Parameter::Kind::BOOL, direction);
    if (parameter != nullptr) {
        value = parameter->boolValue;
    }
    return parameter != nullptr;
}

bool Method::getIntParameter(const std::string& name, int& value, Parameter::directions direction) const {
    const Parameter* parameter = m_representation->find(name, Parameter::Kind::INT, direction);
    if (parameter != nullptr) {
        value = parameter->intValue;
    }
    return parameter != nullptr;
}
