#pragma once

namespace zorvik::platform {

// A colour of components from 0 to 1. A value; any thread.
struct UIColor {
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 1;

    static constexpr UIColor white() { return {1, 1, 1, 1}; }
    static constexpr UIColor clear() { return {0, 0, 0, 0}; }
    static constexpr UIColor systemBlue() { return {0, 122.0 / 255, 1, 1}; }

    friend bool operator==(const UIColor&, const UIColor&) = default;
};

}  // namespace zorvik::platform
