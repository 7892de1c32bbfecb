#pragma once

#include <cstddef>
#include <initializer_list>
#include <string>
#include <string_view>

#include "testkit/Story.h"

namespace zorvik::testkit {

// How often these lines came, each by what stands before its first colon.
std::size_t total(const Story& story, std::initializer_list<std::string_view> lines);
// "2 for 1 causes: what"
std::string counted(std::size_t count, std::size_t causes, std::string_view what);

// A rule: which console lines come for which others.
std::string linesFollow(const Story& story, Story::Moment moment);

}  // namespace zorvik::testkit
