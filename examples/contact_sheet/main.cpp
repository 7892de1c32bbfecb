// zorvik-demo-contact-sheet: lays pictures side by side, each with a line of words below it.
#include <cairo.h>
#include <pango/pangocairo.h>

#include <algorithm>
#include <cmath>
#include <iostream>
#include <string>
#include <vector>

namespace {

constexpr const char* usage =
    "usage: zorvik-demo-contact-sheet OUTPUT.png TITLE [PICTURE.png WORDS]...\n"
    "  TITLE may be empty, the words are one line each then; six pictures at most stand in a "
    "row.\n";

constexpr int pictureWidth = 234;
constexpr int pictureHeight = 506;
constexpr int gap = 24;
constexpr int titleHeight = 44;
constexpr int wordsHeight = 52;  // two lines
constexpr int mostColumns = 6;

struct Color {
    double red, green, blue;
};
constexpr Color paper{0.925, 0.937, 0.949};
constexpr Color ink{0.09, 0.13, 0.18};
constexpr Color edge{0.78, 0.81, 0.85};

struct Picture {
    std::string path;
    std::string words;
};

void setColor(cairo_t* context, const Color& color) {
    cairo_set_source_rgb(context, color.red, color.green, color.blue);
}

void drawWords(cairo_t* context, const std::string& words, const char* font, double x, double y,
               int width) {
    PangoLayout* layout = pango_cairo_create_layout(context);
    PangoFontDescription* description = pango_font_description_from_string(font);
    pango_layout_set_font_description(layout, description);
    pango_font_description_free(description);
    pango_layout_set_text(layout, words.c_str(), -1);
    pango_layout_set_width(layout, width * PANGO_SCALE);
    pango_layout_set_height(layout, wordsHeight * PANGO_SCALE);
    pango_layout_set_ellipsize(layout, PANGO_ELLIPSIZE_END);
    pango_layout_set_wrap(layout, PANGO_WRAP_WORD_CHAR);
    setColor(context, ink);
    cairo_move_to(context, x, y);
    pango_cairo_show_layout(context, layout);
    g_object_unref(layout);
}

// False when the file is no picture.
bool drawPicture(cairo_t* context, const Picture& picture, double x, double y) {
    cairo_surface_t* surface = cairo_image_surface_create_from_png(picture.path.c_str());
    if (cairo_surface_status(surface) != CAIRO_STATUS_SUCCESS) {
        cairo_surface_destroy(surface);
        return false;
    }
    const double width = cairo_image_surface_get_width(surface);
    const double height = cairo_image_surface_get_height(surface);
    const double scale = std::min(pictureWidth / width, pictureHeight / height);
    const double shownWidth = std::round(width * scale);
    const double shownHeight = std::round(height * scale);
    x += std::floor((pictureWidth - shownWidth) / 2);
    cairo_save(context);
    cairo_rectangle(context, x, y, shownWidth, shownHeight);
    cairo_clip(context);
    cairo_translate(context, x, y);
    cairo_scale(context, scale, scale);
    cairo_set_source_surface(context, surface, 0, 0);
    cairo_pattern_set_filter(cairo_get_source(context), CAIRO_FILTER_BEST);
    cairo_paint(context);
    cairo_restore(context);
    setColor(context, edge);
    cairo_set_line_width(context, 1);
    cairo_rectangle(context, x - 0.5, y - 0.5, shownWidth + 1, shownHeight + 1);
    cairo_stroke(context);
    cairo_surface_destroy(surface);
    return true;
}

}  // namespace

int main(int count, char** arguments) {
    if (count < 5 || count % 2 == 0) {
        std::cerr << usage;
        return 2;
    }
    const std::string title = arguments[2];
    std::vector<Picture> pictures;
    for (int i = 3; i + 1 < count; i += 2)
        pictures.push_back({arguments[i], arguments[i + 1]});

    const int number = static_cast<int>(pictures.size());
    const int rows = (number + mostColumns - 1) / mostColumns;
    const int columns = (number + rows - 1) / rows;
    const int top = title.empty() ? gap : gap + titleHeight;
    // Without a title the words are captions, one line each.
    const int cellHeight = pictureHeight + (title.empty() ? gap + 8 : wordsHeight + gap);
    cairo_surface_t* sheet = cairo_image_surface_create(
        CAIRO_FORMAT_RGB24, gap + columns * (pictureWidth + gap), top + rows * cellHeight);
    cairo_t* context = cairo_create(sheet);
    setColor(context, paper);
    cairo_paint(context);
    if (!title.empty())
        drawWords(context, title, "Sans Bold 15", gap, gap, columns * (pictureWidth + gap) - gap);
    bool isWhole = true;
    for (int i = 0; i < number; ++i) {
        const Picture& picture = pictures[static_cast<std::size_t>(i)];
        const int x = gap + i % columns * (pictureWidth + gap);
        const int y = top + i / columns * cellHeight;
        if (!drawPicture(context, picture, x, y)) {
            std::cerr << picture.path << " is no picture\n";
            isWhole = false;
        }
        drawWords(context, picture.words, "Sans 10", x, y + pictureHeight + 8, pictureWidth);
    }
    cairo_destroy(context);
    const bool isWritten = cairo_surface_write_to_png(sheet, arguments[1]) == CAIRO_STATUS_SUCCESS;
    cairo_surface_destroy(sheet);
    if (!isWritten) std::cerr << arguments[1] << " cannot be written\n";
    return isWhole && isWritten ? 0 : 1;
}
