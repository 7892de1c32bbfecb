#include "trace/writer/Html.h"

#include <string_view>

#include "platform/foundation/Data.h"
#include "platform/foundation/JSONSerialization.h"
#include "trace/writer/Page.h"

namespace zorvik::trace {

using platform::Dictionary;

namespace {

const char* nameOf(Lane lane) {
    constexpr const char* names[] = {"host",         "facade", "screen",   "page",
                                     "coreServices", "upiApp", "mainQueue"};
    return names[static_cast<std::size_t>(lane)];
}

// JSON that may stand in a script element: nothing in it ends the element.
void appendJson(std::string& text, const Dictionary& dictionary) {
    const auto json = platform::JSONSerialization::data(dictionary);
    for (const char character : json ? json.value() : std::string("{}")) {
        if (character == '<') {
            text += "\\u003c";
        } else {
            text += character;
        }
    }
}

std::string dataOf(const Log::Contents& contents) {
    std::string text = "{\"about\":";
    appendJson(text, {{"dropped", contents.dropped},
                      {"wallSeconds", contents.wallSeconds},
                      {"seconds", contents.seconds}});
    text += ",\"entries\":[";
    const char* separator = "\n";
    for (const Entry& entry : contents.entries) {
        Dictionary dictionary{{"id", entry.id},
                              {"cause", entry.cause},
                              {"seconds", entry.seconds},
                              {"lane", nameOf(entry.lane)},
                              {"kind", nameOf(entry.kind)},
                              {"title", entry.title}};
        if (!entry.data.empty()) dictionary["data"] = entry.data;
        if (entry.png) {
            dictionary["picture"] = "data:image/png;base64," + platform::base64Encode(*entry.png);
        }
        text += separator;
        appendJson(text, dictionary);
        separator = ",\n";
    }
    return text + "\n]}";
}

// Puts a text in the place of a mark that the page holds once.
void fill(std::string& page, std::string_view mark, std::string_view text) {
    const std::size_t place = page.find(mark);
    if (place != std::string::npos) page.replace(place, mark.size(), text);
}

}  // namespace

std::string htmlOf(const Log::Contents& contents) {
    std::string page = pageHtml;
    fill(page, "/* trace.css */", pageStyle);
    fill(page, "/* trace.js */", pageScript);
    fill(page, "{\"recording\":null}", dataOf(contents));
    return page;
}

}  // namespace zorvik::trace
