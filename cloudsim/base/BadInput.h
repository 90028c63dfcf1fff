#pragma once

#include <stdexcept>

namespace cloudsim {

/// What the user gave cannot be used; the text is one line for a person.
class BadInput : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

} // namespace cloudsim
