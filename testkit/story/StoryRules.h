#pragma once

#include <span>
#include <string>

#include "testkit/Story.h"

namespace zorvik::testkit {

// A rule every story keeps, in words, and what in a story breaks it: "" while it holds.
struct StoryRule {
    const char* name;
    std::string (*broken)(const Story& story, Story::Moment moment);
};

// What a checkout promises, whatever comes in whatever order.
std::span<const StoryRule> storyRules();

}  // namespace zorvik::testkit
