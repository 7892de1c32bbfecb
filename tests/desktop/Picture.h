#pragma once

#include <array>
#include <string>
#include <vector>

namespace zorvik::tests {

// A PNG file as pixels, to ask what is where on the screen.
class Picture {
  public:
    // Empty when there is no such file.
    explicit Picture(const std::string& path);

    int width() const { return width_; }
    int height() const { return height_; }
    // Red, green and blue from 0 to 255; black outside.
    std::array<int, 3> at(double x, double y) const;
    // How many pixels of this part are darker than mid grey.
    int darkPixels(double x, double y, double width, double height) const;

  private:
    int width_ = 0;
    int height_ = 0;
    std::vector<unsigned char> pixels_;
};

}  // namespace zorvik::tests
