#include "tests/desktop/Picture.h"

#include <png.h>

namespace zorvik::tests {

Picture::Picture(const std::string& path) {
    png_image image = {};
    image.version = PNG_IMAGE_VERSION;
    if (png_image_begin_read_from_file(&image, path.c_str()) == 0) return;
    image.format = PNG_FORMAT_RGB;
    pixels_.resize(PNG_IMAGE_SIZE(image));
    if (png_image_finish_read(&image, nullptr, pixels_.data(), 0, nullptr) == 0) return;
    width_ = static_cast<int>(image.width);
    height_ = static_cast<int>(image.height);
}

std::array<int, 3> Picture::at(double x, double y) const {
    const int column = static_cast<int>(x);
    const int row = static_cast<int>(y);
    if (column < 0 || row < 0 || column >= width_ || row >= height_) return {0, 0, 0};
    const auto place = static_cast<std::size_t>(3 * (row * width_ + column));
    return {pixels_[place], pixels_[place + 1], pixels_[place + 2]};
}

int Picture::darkPixels(double x, double y, double width, double height) const {
    int count = 0;
    for (double row = y; row < y + height; ++row) {
        for (double column = x; column < x + width; ++column) {
            if (at(column, row)[1] < 128) ++count;
        }
    }
    return count;
}

}  // namespace zorvik::tests
