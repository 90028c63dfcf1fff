#pragma once

#include <istream>
#include <ostream>

class Method;

/// Text form of a Method. Stateless: any thread may call it.
class ProtocolAdapterIfc {
public:
    virtual ~ProtocolAdapterIfc() = default;

    /// Reads one message; false when the text is none, and `method` is then unspecified.
    virtual bool decode(std::istream& stream, Method& method) = 0;

    /// Writes one message; false when the stream did not take it.
    virtual bool encode(std::ostream& stream, const Method& method) = 0;
};
