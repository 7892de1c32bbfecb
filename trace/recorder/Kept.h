#pragma once

#include <cstddef>
#include <string>

#include "platform/foundation/Value.h"

namespace zorvik::trace {

// What a recording keeps of a text: UTF-8, order tokens and personal data shortened, and no more
// than `most` bytes of it, with a note of what is missing.
std::string keptText(const std::string& text, std::size_t most = 4'000);
// The same of one line for a title.
std::string keptTitle(const std::string& text);
// The same of every text in a value, which JSON can write then: what nests too deeply is cut, a
// number that is none is a text.
platform::Value keptValue(const platform::Value& value, int depth = 0);

// Roughly how many bytes of memory it takes.
std::size_t sizeOf(const platform::Value& value);

}  // namespace zorvik::trace
