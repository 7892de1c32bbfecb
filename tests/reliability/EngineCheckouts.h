#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "testkit/Step.h"
#include "tests/reliability/PageServer.h"

namespace zorvik::tests {

// A checkout, and a few things that come in its way; half of them end with a payment, all of the
// plain ones.
testkit::Script shortScript(std::uint64_t seed, bool isPlain);

// Plays scripts of short checkouts on the desktop port, in a window of its own. Main thread.
class EngineCheckouts {
  public:
    static std::unique_ptr<EngineCheckouts> make(const PageServer& server);
    virtual ~EngineCheckouts() = default;
    virtual bool isThere() const = 0;  // false where there is no display
    virtual void settle(double seconds) = 0;
    // What went wrong, "" when nothing did. Each checkout ends with a result or is dismissed.
    virtual std::string play(const testkit::Script& script) = 0;
};

}  // namespace zorvik::tests
