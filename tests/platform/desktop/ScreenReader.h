#pragma once

#include <string>
#include <vector>

// What a desktop's settings and a screen reader have to do with a window, for each port.
namespace zorvik::tests {

// What a screen reader finds in a window of the port's toolkit, in its order: "role: name
// (description) states".
std::vector<std::string> heard(void* window);
// The customer wants texts this many times as large, from now on.
void setTextScale(double scale);

}  // namespace zorvik::tests
