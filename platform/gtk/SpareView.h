#pragma once

#include <functional>
#include <memory>

#include "platform/desktop/ProcessProbe.h"
#include "platform/gtk/ObjectPointer.h"

typedef struct _WebKitWebView WebKitWebView;

namespace zorvik::platform::gtk {

// An empty view for a page to come, whose web process is asked at once whether it answers. Owned
// by the engine; main thread only. Unless the view was taken, its process ends with it: left to
// itself the engine keeps one for minutes.
class SpareView {
  public:
    // Whose web process it is: one started for this view, or that of a page that went.
    enum class Origin { ownProcess, pastPage };
    enum class State { asked, answered, lost };

    // `changed` is called in a later turn, once it answered, and once it was lost: its process
    // ended, or did not answer in time and was ended. It may destroy the spare view.
    SpareView(Scheduler& scheduler, ObjectPointer<WebKitWebView> view, Origin origin,
              std::function<void(SpareView&)> changed);
    SpareView(const SpareView&) = delete;
    SpareView& operator=(const SpareView&) = delete;
    ~SpareView();

    Origin origin() const { return origin_; }
    State state() const { return state_; }
    // A process of its own may still be starting; that of a past page may be hung for good.
    bool canBeTaken() const {
        return state_ == State::answered ||
               (state_ == State::asked && origin_ == Origin::ownProcess);
    }
    ObjectPointer<WebKitWebView> take();

  private:
    void become(State state);

    ObjectPointer<WebKitWebView> view_;
    const Origin origin_;
    const std::function<void(SpareView&)> changed_;
    State state_ = State::asked;
    std::unique_ptr<desktop::ProcessProbe> probe_;
};

// Ends a view with its web process. Main thread.
void endWithProcess(WebKitWebView* view);
// How a ProcessProbe asks the web process of a view, which outlives the probe.
desktop::ProcessProbe::Ask askOf(WebKitWebView* view);

}  // namespace zorvik::platform::gtk
