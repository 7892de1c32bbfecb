#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace zorvik::tests {

// The processes below this one whose program has this name. Linux only.
std::vector<pid_t> descendantsNamed(const std::string& name);

}  // namespace zorvik::tests
