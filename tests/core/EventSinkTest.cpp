#include "core/development/EventSink.h"

#include <gmock/gmock.h>

#include <cstdio>
#include <limits>
#include <sstream>
#include <thread>

#include "platform/foundation/JSONSerialization.h"

namespace zorvik::development {
namespace {

using platform::Array;
using platform::Dictionary;
using platform::JSONSerialization;
using platform::Value;

std::vector<Dictionary> linesOf(const std::string& text) {
    std::vector<Dictionary> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        const auto value = JSONSerialization::jsonObject(line, {});
        EXPECT_TRUE(value) << line;
        if (value) lines.push_back(*value.value().dictionary());
    }
    return lines;
}

RecordedEvent eventWith(Dictionary additionalData) {
    return {"EVENT", std::nullopt, "token", "", std::move(additionalData), "1", "shop"};
}

TEST(JSONLinesEventSinkTest, AnEventIsOneLineWithNullForWhatIsMissing) {
    std::ostringstream stream;
    JSONLinesEventSink sink(stream);
    const Dictionary data{
        {"names", Array{"a \"quoted\"\nname", "🛍"}}, {"count", 2}, {"on", true}};
    sink.record(eventWith(data));
    const auto lines = linesOf(stream.str());
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0], (Dictionary{{"event", "EVENT"},
                                    {"orderId", nullptr},
                                    {"token", "token"},
                                    {"subMerchantId", ""},
                                    {"additionalData", data},
                                    {"sdkVersion", "1"},
                                    {"appCode", "shop"}}));
}

TEST(JSONLinesEventSinkTest, WhatJsonCannotWriteIsDescribedAndTheRestStays) {
    Value deep = "bottom";
    for (std::size_t i = 0; i <= JSONSerialization::maximumDepth; ++i) {
        Array outer;
        outer.push_back(std::move(deep));
        deep = std::move(outer);
    }
    std::ostringstream stream;
    JSONLinesEventSink sink(stream);
    sink.record(eventWith({{"text", "caf\xe9"},
                           {"key\xff", 1},
                           {"number", std::numeric_limits<double>::infinity()},
                           {"deep", deep},
                           {"kept", 7}}));
    const auto lines = linesOf(stream.str());
    ASSERT_EQ(lines.size(), 1U);
    const Dictionary* data = lines[0].at("additionalData").dictionary();
    ASSERT_TRUE(data);
    EXPECT_EQ(data->at("text"), Value("caf\uFFFD"));
    EXPECT_EQ(data->at("key\uFFFD"), Value(1));
    EXPECT_TRUE(data->at("number").string());
    EXPECT_EQ(data->at("kept"), Value(7));
}

TEST(JSONLinesEventSinkTest, LinesOfSeveralThreadsDoNotMixAndAFileIsAppendedTo) {
    const std::string path = testing::TempDir() + "zorvik-events-" + std::to_string(getpid());
    for (int run = 0; run < 2; ++run) {
        const auto sink = JSONLinesEventSink::appendingTo(path);
        ASSERT_TRUE(sink);
        std::vector<std::jthread> threads;
        for (int thread = 0; thread < 4; ++thread) {
            threads.emplace_back([&] {
                for (int i = 0; i < 25; ++i)
                    sink->record(eventWith({{"i", i}}));
            });
        }
    }
    std::ostringstream text;
    text << std::ifstream(path).rdbuf();
    std::remove(path.c_str());
    EXPECT_EQ(linesOf(text.str()).size(), 200U);
}

TEST(JSONLinesEventSinkTest, AFileThatCannotBeOpenedIsToldOf) {
    EXPECT_EQ(JSONLinesEventSink::appendingTo("/nonexistent/folder/events"), nullptr);
}

}  // namespace
}  // namespace zorvik::development
