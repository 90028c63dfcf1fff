#pragma once

#include "orvane-phone/ViewModel.h"

#include <string>

/// Draws the telephone as text of a given width and height.
class Screen {
public:
    struct Size {
        int columns = 80;
        int rows = 24;
    };

    /// One screenful, a line for each row, with colours if wanted.
    static std::string draw(const ViewModel& model, const std::string& title, Size size, bool colours);

    /// The text in exactly that many columns, cut or filled; counts characters of UTF-8, not bytes.
    static std::string fit(const std::string& text, int columns);

    /// ISO 8601 UTC as local date and time, "20.11. 14:05"; the text itself when it is none.
    static std::string localTime(const std::string& isoTime);
};
