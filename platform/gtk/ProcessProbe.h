#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "platform/services/Scheduler.h"

typedef struct _WebKitWebView WebKitWebView;

namespace zorvik::platform::gtk {

// Asks a view's web process whether it still runs scripts. The engine itself notices only that a
// key or the wheel went unanswered. Owned by whoever asks, who may destroy it at
// any time, inside the answer too; the view outlives it. Main thread only.
class ProcessProbe {
  public:
    enum class Answer { answers, silent };

    // Calls `done` once, in a later turn: as silent when `seconds` pass without an answer. A
    // process that ends meanwhile gives either.
    ProcessProbe(Scheduler& scheduler, WebKitWebView* view, double seconds,
                 std::function<void(Answer)> done);
    ProcessProbe(const ProcessProbe&) = delete;
    ProcessProbe& operator=(const ProcessProbe&) = delete;
    ~ProcessProbe();

    // Since the question.
    double seconds() const { return scheduler_.steadySeconds() - start_; }

  private:
    void ask();
    void answered();
    void finish(Answer answer);

    Scheduler& scheduler_;
    const double start_;
    WebKitWebView* const view_;
    const std::function<void(Answer)> done_;
    std::optional<Scheduler::TaskId> expiry_;
    int answers_ = 0;
    const std::shared_ptr<ProcessProbe*> self_;  // emptied when it goes, for answers under way
};

}  // namespace zorvik::platform::gtk
