#pragma once

namespace zorvik::platform {

// In points. A value; any thread.
struct Size {
    double width = 0;
    double height = 0;
    friend bool operator==(const Size&, const Size&) = default;
};

// A place and a size in points, y growing downward. A value; any thread.
struct Rect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;
    friend bool operator==(const Rect&, const Rect&) = default;
};

// Points kept free at each edge. A value; any thread.
struct UIEdgeInsets {
    double top = 0;
    double left = 0;
    double bottom = 0;
    double right = 0;
    friend bool operator==(const UIEdgeInsets&, const UIEdgeInsets&) = default;
};

}  // namespace zorvik::platform
