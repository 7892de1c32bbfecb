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
    explicit EngineCheckouts(const PageServer& server);
    EngineCheckouts(const EngineCheckouts&) = delete;
    EngineCheckouts& operator=(const EngineCheckouts&) = delete;
    ~EngineCheckouts();

    // False where there is no display.
    bool isThere() const;
    void settle(double seconds);
    // What went wrong, "" when nothing did. Each checkout ends with a result or is dismissed.
    std::string play(const testkit::Script& script);

  private:
    class Parts;
    const std::unique_ptr<Parts> parts_;
};

}  // namespace zorvik::tests
