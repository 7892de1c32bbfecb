#pragma once

#include <memory>
#include <string>

#include "core/development/EventSink.h"

namespace zorvik::demo {

// What the shop's process prints: one line each, told apart by its first word, in the order in
// which things happened, tokens and personal data shortened. Any thread; lines never mix.
// scripts/demo numbers those of "step", shows the one of "outcome" and keeps the others for whoever
// asks.
void printLabelled(const std::string& label, const std::string& line);

// Prints each event as a line of JSON.
std::shared_ptr<development::EventSink> makePrintingSink();

// Prints the component's console lines so as well, from now on.
void printConsoleLines();

}  // namespace zorvik::demo
