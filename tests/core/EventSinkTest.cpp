#include "core/development/EventSink.h"

#include <gtest/gtest.h>

#include <limits>
#include <sstream>
#include <thread>

#include "platform/foundation/JSONSerialization.h"

namespace zorvik::development {

using platform::Dictionary;

TEST(JSONLinesEventSinkTest, EachEventIsOneWholeLineWhateverItCarries) {
    platform::Value deep = "bottom";
    for (std::size_t i = 0; i <= platform::JSONSerialization::maximumDepth; ++i)
        deep = platform::Array({deep});
    const Dictionary kept{{"kept", 7}, {"text", "caf\uFFFD \"quoted\"\n"}, {"key\uFFFD", 1}};
    std::ostringstream stream;
    JSONLinesEventSink sink(stream);
    {
        std::vector<std::jthread> threads;
        for (const platform::Value& odd :
             {platform::Value(std::numeric_limits<double>::infinity()), deep}) {
            threads.emplace_back([&sink, odd] {
                const Dictionary data{
                    {"kept", 7}, {"text", "caf\xe9 \"quoted\"\n"}, {"key\xff", 1}, {"odd", odd}};
                for (int i = 0; i < 25; ++i)
                    sink.record({"EVENT", std::nullopt, "token", "", data, "1", "shop"});
            });
        }
    }
    std::istringstream lines(stream.str());
    int count = 0;
    for (std::string line; std::getline(lines, line); ++count) {
        const auto value = platform::JSONSerialization::jsonObject(line, {});
        ASSERT_TRUE(value) << line;
        const Dictionary event = *value.value().dictionary();
        Dictionary data = *event.at("additionalData").dictionary();
        EXPECT_EQ(data.erase("odd"), 1U);
        EXPECT_EQ(data, kept);
        EXPECT_EQ(event.at("event"), platform::Value("EVENT"));
        EXPECT_EQ(event.at("orderId"), platform::Value(nullptr)) << "missing, not left out";
    }
    EXPECT_EQ(count, 50);
}

}  // namespace zorvik::development
