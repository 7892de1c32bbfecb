#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

// The processes of a web engine, whichever desktop port runs it, and the applications around it.
namespace zorvik::tests {

enum class EngineProcess { web, network };

// The processes of this kind below this one, in the order of their start; none where the engine
// does that work in the program itself. Linux only.
std::vector<pid_t> engineProcesses(EngineProcess kind);

// Makes a program the one that opens addresses of this scheme, in the folders that
// scripts/with-display made for this run. The desktop notices in its own time.
void installApplication(const std::string& scheme, const std::string& shellScript);

}  // namespace zorvik::tests
