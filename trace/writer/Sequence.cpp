#include "trace/writer/Sequence.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <optional>
#include <string_view>
#include <vector>

#include "platform/foundation/Data.h"
#include "platform/foundation/Value.h"

namespace zorvik::trace {

namespace {

// Lengths in the drawing's units, at 100 % points.
constexpr std::array laneOrder{Lane::host, Lane::facade,       Lane::screen,
                               Lane::page, Lane::coreServices, Lane::upiApp};
constexpr double timeWidth = 70;
constexpr double laneWidth = 158;
constexpr double width = timeWidth + laneWidth * static_cast<double>(laneOrder.size());
constexpr double headHeight = 34;
constexpr double lineHeight = 16;
constexpr double characterWidth = 6.9;  // at most, on average
constexpr std::size_t lineLength = 44;
constexpr double shortestPause = 1;  // seconds that are worth a word

struct Message {
    Lane from;
    Lane to;
    std::string text;
    bool isAnswer = false;
    double seconds = 0;
};

const char* nameOf(Lane lane) {
    constexpr const char* names[] = {"Host",          "Facade",  "Screen",    "Page",
                                     "Core services", "UPI app", "Main queue"};
    return names[static_cast<std::size_t>(lane)];
}

double centreOf(Lane lane) {
    const auto place = std::ranges::find(laneOrder, lane) - laneOrder.begin();
    return timeWidth + laneWidth * (static_cast<double>(place) + 0.5);
}

std::string textOf(const Entry& entry, const std::string& key) {
    const auto found = entry.data.find(key);
    return found == entry.data.end() ? "" : platform::description(found->second);
}

std::string withoutQuery(const std::string& url) {
    return url.substr(0, url.find('?'));
}

bool isOfWeb(const std::string& url) {
    return url.starts_with("http:") || url.starts_with("https:") || url.starts_with("about:");
}

// The messages among the entries; what only the component's makers need is left out.
class Reader {
  public:
    explicit Reader(const Log::Contents& contents) : contents_(contents) {}

    std::vector<Message> messages() const {
        std::vector<Message> messages;
        for (const Entry& entry : contents_.entries) {
            auto message = messageOf(entry);
            if (!message) continue;
            message->seconds = entry.seconds;
            messages.push_back(*std::move(message));
        }
        return messages;
    }

  private:
    const Entry* causeOf(const Entry& entry) const {
        const EntryId first = contents_.dropped + 1;
        return entry.cause < first || entry.cause >= entry.id
                   ? nullptr
                   : &contents_.entries[entry.cause - first];
    }

    // Facade or screen: who is at work where the core services are asked.
    Lane askerOf(const Entry& entry) const {
        for (const Entry* cause = causeOf(entry); cause != nullptr; cause = causeOf(*cause)) {
            if (cause->lane == Lane::facade || cause->lane == Lane::host) return Lane::facade;
            if (cause->lane != Lane::mainQueue && cause->lane != Lane::coreServices) {
                return Lane::screen;
            }
        }
        return Lane::facade;
    }

    std::optional<Message> callOf(const Entry& entry) const {
        switch (entry.lane) {
            case Lane::facade:
                return Message{Lane::host, Lane::facade, entry.title + "()"};
            case Lane::coreServices:
                return Message{askerOf(entry), entry.lane, entry.title};
            case Lane::host:
                if (entry.data.empty()) return std::nullopt;
                return Message{Lane::facade, entry.lane,
                               entry.title + " " + platform::description(entry.data)};
            default:
                return std::nullopt;
        }
    }

    std::string answerTo(const Entry& entry) const {
        if (entry.data.contains("error")) return "failed: " + textOf(entry, "error");
        const std::string status = textOf(entry, "order status");
        return status.empty() ? "done" : "order status " + status;
    }

    std::optional<Message> questionOf(const Entry& entry) const {
        const std::string url = textOf(entry, "url");
        if (!isOfWeb(url)) return Message{Lane::upiApp, Lane::screen, "returns by " + url};
        if (textOf(entry, "decision") != "cancelled") return std::nullopt;
        return Message{Lane::page, Lane::screen, "answers by its redirect to " + withoutQuery(url)};
    }

    std::string returnOf(const Entry& entry) const {
        const Entry* const opening = causeOf(entry);
        if (opening == nullptr || opening->kind != EntryKind::open) return "the customer is back";
        char text[64];
        std::snprintf(text, sizeof text, "the customer is back after %.3g s",
                      entry.seconds - opening->seconds);
        return text;
    }

    std::optional<Message> messageOf(const Entry& entry) const {
        switch (entry.kind) {
            case EntryKind::call:
                return callOf(entry);
            case EntryKind::answer:
                return Message{entry.lane, askerOf(entry), answerTo(entry), true};
            case EntryKind::show:
                return Message{Lane::facade, Lane::screen, "presents it"};
            case EntryKind::hide:
                return Message{Lane::facade, Lane::screen, "dismisses it"};
            case EntryKind::load:
                return Message{Lane::screen, Lane::page,
                               "loads " + withoutQuery(textOf(entry, "url"))};
            case EntryKind::finished:
                return Message{Lane::page, Lane::screen, "has loaded", true};
            case EntryKind::failed:
                return Message{Lane::page, Lane::screen, entry.title, true};
            case EntryKind::message:
                return Message{Lane::page, Lane::screen, "posts " + textOf(entry, "name")};
            case EntryKind::post:
                return Message{Lane::screen, Lane::page, "posts " + textOf(entry, "message")};
            case EntryKind::open:
                return Message{Lane::screen, Lane::upiApp,
                               "opens " + withoutQuery(textOf(entry, "url"))};
            case EntryKind::opened:
                if (textOf(entry, "opened") == "true") return std::nullopt;
                return Message{Lane::upiApp, Lane::screen, entry.title, true};
            case EntryKind::active:
                return Message{Lane::upiApp, Lane::screen, returnOf(entry)};
            case EntryKind::question:
                return questionOf(entry);
            default:
                return std::nullopt;
        }
    }

    const Log::Contents& contents_;
};

// Lines no longer than lineLength, broken where a reader would.
std::vector<std::string> linesOf(std::string text) {
    std::vector<std::string> lines;
    while (text.size() > lineLength) {
        std::size_t end = text.find_last_of(" ,:&?/", lineLength - 1);
        end = end == std::string::npos || end < lineLength / 3 ? lineLength : end + 1;
        while (end > 1 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U)
            --end;
        lines.push_back(text.substr(0, end));
        text.erase(0, end);
    }
    lines.push_back(std::move(text));
    return lines;
}

// XML 1.0 has no way to write most control characters.
std::string escaped(const std::string& text) {
    std::string result;
    for (const char character : platform::readableText(text)) {
        if (character == '<') {
            result += "&lt;";
        } else if (character == '&') {
            result += "&amp;";
        } else if (static_cast<unsigned char>(character) < ' ') {
            result += ' ';
        } else {
            result += character;
        }
    }
    return result;
}

std::string number(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.1f", value);
    return text;
}

// Draws downwards, one message below the other.
class Drawing {
  public:
    void pause(double seconds) {
        char label[64];
        std::snprintf(label, sizeof label, "%.3g s go by", seconds);
        y_ += 26;
        body_ += "<path class=\"pause\" d=\"M" + number(timeWidth) + " " + number(y_) + "H" +
                 number(width - 16) + "\"/>";
        text("pause-text", width - 24, y_ + 4, label, "end");
        y_ += 6;
    }

    void message(const Message& message, int count) {
        const double from = centreOf(message.from);
        const double to = centreOf(message.to);
        const auto lines = linesOf(message.text);
        y_ += 12;
        if (message.seconds != shownSeconds_) time(message.seconds, lines.size());
        double half = 0;
        for (const std::string& line : lines)
            half = std::max(half, static_cast<double>(line.size()) * characterWidth / 2);
        const double middle = std::clamp((from + to) / 2, timeWidth + half, width - half - 8);
        for (const std::string& line : lines) {
            y_ += lineHeight;
            text("text", middle, y_, line, "middle");
        }
        y_ += 2 * half > std::abs(to - from) - 24 ? 15 : 9;  // clear of the number
        const double side = to > from ? 1 : -1;
        body_ += std::string("<path class=\"") + (message.isAnswer ? "answer" : "call") +
                 "\" d=\"M" + number(from + 11 * side) + " " + number(y_) + "H" +
                 number(to - 8 * side) + "\"/>";
        body_ += "<path class=\"head\" d=\"M" + number(to - side) + " " + number(y_) + "l" +
                 number(-9 * side) + " -5v10z\"/>";
        body_ += "<circle class=\"number\" cx=\"" + number(from) + "\" cy=\"" + number(y_) +
                 "\" r=\"10\"/>";
        text("number-text", from, y_ + 4, std::to_string(count), "middle");
    }

    std::string finish(const std::string& title) {
        const double bottom = y_ + 26;
        const double height = bottom + headHeight + 12;
        std::string svg = "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 " +
                          number(width) + " " + number(height) + "\" width=\"" + number(width) +
                          "\" height=\"" + number(height) + "\" role=\"img\">\n<title>" +
                          escaped(title) + "</title>\n<style>" + style + "</style>\n";
        svg += "<rect class=\"ground\" width=\"100%\" height=\"100%\" rx=\"10\"/>\n";
        for (const Lane lane : laneOrder) {
            svg += "<path class=\"life\" d=\"M" + number(centreOf(lane)) + " " +
                   number(12 + headHeight) + "V" + number(bottom) + "\"/>\n";
        }
        svg += body_;
        for (const double top : {12.0, bottom}) {
            for (const Lane lane : laneOrder) {
                svg += "<rect class=\"lane\" x=\"" + number(centreOf(lane) - laneWidth / 2 + 10) +
                       "\" y=\"" + number(top) + "\" width=\"" + number(laneWidth - 20) +
                       "\" height=\"" + number(headHeight) + "\" rx=\"8\"/>";
                svg += "<text class=\"lane-text\" x=\"" + number(centreOf(lane)) + "\" y=\"" +
                       number(top + 22) + "\" text-anchor=\"middle\">" + nameOf(lane) + "</text>\n";
            }
        }
        return svg + "</svg>\n";
    }

  private:
    static constexpr const char* style = R"(
text{font:12px system-ui,"Segoe UI","Noto Sans",sans-serif;fill:#1b2028}
.ground{fill:#fff}.life{stroke:#c3cad5;stroke-dasharray:3 4;fill:none}
.lane{fill:#eaf0fb;stroke:#9db4dc}.lane-text{font-weight:600;font-size:13px}
.call,.answer{stroke:#1f54d6;stroke-width:1.6;fill:none}.answer{stroke-dasharray:5 4}
.head,.number{fill:#1f54d6}.number-text{fill:#fff;font-weight:600;font-size:11px}
.text{paint-order:stroke;stroke:#fff;stroke-width:5px;stroke-linejoin:round}
.time,.pause-text{fill:#565f6e;font-size:11px}.pause{stroke:#8a93a3;stroke-dasharray:1 5;stroke-width:2}
.pause-text{paint-order:stroke;stroke:#fff;stroke-width:8px}
@media(prefers-color-scheme:dark){text{fill:#e8ebf0}.ground{fill:#161a21}.life{stroke:#434c5a}
.lane{fill:#222b3b;stroke:#4b6292}.call,.answer{stroke:#8fb4ff}.head,.number{fill:#8fb4ff}
.number-text{fill:#10141b}.text,.pause-text{stroke:#161a21}.time,.pause-text{fill:#a6afbd}}
)";

    void text(const char* kind, double x, double y, const std::string& content,
              const char* anchor) {
        body_ += std::string("<text class=\"") + kind + "\" x=\"" + number(x) + "\" y=\"" +
                 number(y) + "\" text-anchor=\"" + anchor + "\">" + escaped(content) + "</text>\n";
    }

    // Beside the arrow, which comes below its lines of text.
    void time(double seconds, std::size_t lines) {
        shownSeconds_ = seconds;
        char label[32];
        std::snprintf(label, sizeof label, "%.2f s", seconds);
        text("time", 14, y_ + static_cast<double>(lines) * lineHeight + 13, label, "start");
    }

    std::string body_;
    double y_ = 12 + headHeight + 4;
    double shownSeconds_ = -1;
};

}  // namespace

std::string sequenceOf(const Log::Contents& contents) {
    Drawing drawing;
    int count = 0;
    double last = 0;
    for (const Message& message : Reader(contents).messages()) {
        if (message.seconds - last >= shortestPause) drawing.pause(message.seconds - last);
        last = message.seconds;
        drawing.message(message, ++count);
    }
    return drawing.finish("A checkout in " + std::to_string(count) + " steps");
}

}  // namespace zorvik::trace
