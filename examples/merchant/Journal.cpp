#include "examples/merchant/Journal.h"

#include <iostream>
#include <mutex>
#include <sstream>

#include "platform/foundation/Console.h"
#include "platform/foundation/Shortened.h"

namespace zorvik::demo {

namespace {

class PrintingSink : public development::EventSink {
  public:
    void record(const development::RecordedEvent& event) override {
        std::ostringstream text;
        development::JSONLinesEventSink(text).record(event);
        std::string line = text.str();
        if (!line.empty()) line.pop_back();
        printLabelled("event", line);
    }
};

}  // namespace

void printLabelled(const std::string& label, const std::string& line) {
    static std::mutex mutex;
    const std::scoped_lock lock(mutex);
    const std::size_t width = 9;
    std::cout << label << std::string(label.size() < width ? width - label.size() : 1, ' ')
              << platform::shortened(line) << std::endl;
}

std::shared_ptr<development::EventSink> makePrintingSink() {
    return std::make_shared<PrintingSink>();
}

void printConsoleLines() {
    platform::setConsoleSink(
        [](std::string_view line) { printLabelled("console", std::string(line)); });
}

}  // namespace zorvik::demo
