#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "platform/services/Scheduler.h"

namespace zorvik::platform::desktop {

// Asks a page's web process whether it still runs scripts. The engines themselves notice only that
// a key or the wheel went unanswered. Owned by whoever asks, who may destroy it at any time, inside
// the answer too. Main thread only.
class ProcessProbe {
  public:
    enum class Answer { answers, silent };

    // Has the page run a script, and calls `ran` when it did; never inside the call.
    using Ask = std::function<void(std::function<void()> ran)>;

    // Calls `done` once, in a later turn: as silent when `seconds` pass without an answer. A
    // process that ends meanwhile gives either.
    ProcessProbe(Scheduler& scheduler, Ask ask, double seconds, std::function<void(Answer)> done);
    ProcessProbe(const ProcessProbe&) = delete;
    ProcessProbe& operator=(const ProcessProbe&) = delete;
    ~ProcessProbe();

    // Since the question.
    double seconds() const { return scheduler_.steadySeconds() - start_; }

  private:
    void askOnce();
    void answered();
    void finish(Answer answer);

    Scheduler& scheduler_;
    const double start_;
    const Ask ask_;
    const std::function<void(Answer)> done_;
    std::optional<Scheduler::TaskId> expiry_;
    int answers_ = 0;
    const std::shared_ptr<ProcessProbe*> self_;  // emptied when it goes, for answers under way
};

}  // namespace zorvik::platform::desktop
