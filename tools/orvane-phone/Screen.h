#pragma once

#include "orvane-phone/ViewModel.h"

#include <string>
#include <vector>

/// Draws the telephone as text of a given width and height.
class Screen {
public:
    struct Size {
        int columns = 80;
        int rows = 24;
    };
    struct Style {
        bool colours = true;
        bool lineArt = true; ///< characters beyond ASCII for rules and dots
    };
    static constexpr Size smallest{40, 10};

    /// One line for each row, each as wide as the screen. A screen below the smallest is drawn as the smallest.
    static std::vector<std::string> draw(const ViewModel& model, const std::string& title, Size size, Style style);

    /// A screenful for a person who reads on: what there is, and the latest calls.
    static std::string summary(const ViewModel& model, const std::string& title);
};
