#pragma once

#include <string>

/// One parameter of a Method: a name, a direction and a value of one of three kinds.
class Parameter {
public:
    enum directions : int {
        DIRECTION_IN = 0,  ///< towards the receiver of a request
        DIRECTION_OUT = 1, ///< back to its sender
    };

    enum class Kind { STRING, BOOL, INT };

    std::string name;
    directions direction = DIRECTION_IN;
    Kind kind = Kind::STRING;
    std::string stringValue; ///< when kind is STRING
    bool boolValue = false;  ///< when kind is BOOL
    int intValue = 0;        ///< when kind is INT; 32 bits on the wire
};
