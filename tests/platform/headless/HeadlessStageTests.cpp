#include "platform/headless/HeadlessStage.h"

#include <gtest/gtest.h>

#include <string>

#include "platform/headless/HeadlessScheduler.h"

namespace zorvik::platform::headless {

TEST(HeadlessStageTest, TextBreaksAtSpacesAndCountsCharacters) {
    HeadlessScheduler scheduler;
    HeadlessStage stage(scheduler);
    const struct {
        std::string text;
        double maximumWidth;
        double characters;
        double lines;
    } cases[] = {
        {"", 0, 0, 1},          {"one two", 0, 7, 1},      {"one two", 35, 7, 1},
        {"one two", 34, 3, 2},  {"a bb ccc dd", 30, 6, 2}, {"abcdefgh", 20, 4, 2},
        {"a abcdef", 20, 4, 3}, {"one\ntwo", 0, 3, 2},     {"\xE2\x82\xB9 100", 0, 5, 1},
        {"narrow", 1, 1, 6},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.text);
        const Size size = stage.measureText(row.text, 10, row.maximumWidth);
        EXPECT_DOUBLE_EQ(size.width, row.characters * 5);
        EXPECT_DOUBLE_EQ(size.height, row.lines * 12);
    }
}

}  // namespace zorvik::platform::headless
