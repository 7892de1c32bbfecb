#include "platform/gtk/ProcessProbe.h"

#include <webkit/webkit.h>

#include <utility>

namespace zorvik::platform::gtk {
namespace {

// A page that was closed just before runs its last handlers after the first answer.
constexpr int answersNeeded = 2;

}  // namespace

ProcessProbe::ProcessProbe(Scheduler& scheduler, WebKitWebView* view, double seconds,
                           std::function<void(Answer)> done)
    : scheduler_(scheduler),
      start_(scheduler.steadySeconds()),
      view_(view),
      done_(std::move(done)),
      expiry_(scheduler.runOnMainAfter(seconds,
                                       [this] {
                                           expiry_.reset();
                                           finish(Answer::silent);
                                       })),
      self_(std::make_shared<ProcessProbe*>(this)) {
    ask();
}

ProcessProbe::~ProcessProbe() {
    *self_ = nullptr;
    if (expiry_) scheduler_.cancel(*expiry_);
}

void ProcessProbe::ask() {
    webkit_web_view_evaluate_javascript(
        view_, "1", 1, nullptr, nullptr, nullptr,
        [](GObject*, GAsyncResult*, gpointer data) {
            const std::unique_ptr<std::shared_ptr<ProcessProbe*>> held(
                static_cast<std::shared_ptr<ProcessProbe*>*>(data));
            if (ProcessProbe* probe = **held) probe->answered();
        },
        new std::shared_ptr<ProcessProbe*>(self_));
}

void ProcessProbe::answered() {
    if (++answers_ < answersNeeded) {
        ask();
    } else if (answers_ == answersNeeded) {
        finish(Answer::answers);
    }
}

void ProcessProbe::finish(Answer answer) {
    if (const auto task = std::exchange(expiry_, std::nullopt)) scheduler_.cancel(*task);
    const auto done = done_;  // it may end this probe
    done(answer);
}

}  // namespace zorvik::platform::gtk
