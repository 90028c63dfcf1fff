#pragma once

#include "framework/ProtocolAdapterIfc.h"

/// Messages as one JSON object: {"name":"ageMissedCall","type":0,"parameters":[{"name":"id","kind":"string",
/// "direction":0,"value":"4711"}]}; kinds "string", "bool" and "int" (32 bits).
class JsonProtocolAdapter : public ProtocolAdapterIfc {
public:
    static constexpr const char* protocol = "json";

    /// False for anything but an object, a missing name, a type other than 0 and 1, an unknown kind, a value of the
    /// wrong kind or out of range. Unknown members are passed over.
    bool decode(std::istream& stream, Method& method) override;
    bool encode(std::ostream& stream, const Method& method) override;
};
