#include "platform/gtk/SpareView.h"

#include <webkit/webkit.h>

#include <utility>

namespace zorvik::platform::gtk {

using desktop::ProcessProbe;

namespace {

// A page may go in the middle of some work; a process that starts on a busy machine takes longer.
constexpr double pastPagePatience = 2;
constexpr double startPatience = 10;

}  // namespace

SpareView::SpareView(Scheduler& scheduler, ObjectPointer<WebKitWebView> view, Origin origin,
                     std::function<void(SpareView&)> changed)
    : view_(std::move(view)), origin_(origin), changed_(std::move(changed)) {
    g_signal_connect(
        view_.get(), "web-process-terminated",
        G_CALLBACK(+[](WebKitWebView*, WebKitWebProcessTerminationReason, gpointer self) {
            static_cast<SpareView*>(self)->become(State::lost);
        }),
        this);
    probe_ = std::make_unique<ProcessProbe>(
        scheduler, askOf(view_.get()),
        origin == Origin::pastPage ? pastPagePatience : startPatience,
        [this](ProcessProbe::Answer answer) {
            become(answer == ProcessProbe::Answer::answers ? State::answered : State::lost);
        });
}

SpareView::~SpareView() {
    if (!view_) return;
    const ObjectPointer<WebKitWebView> view = take();
    endWithProcess(view.get());
}

void endWithProcess(WebKitWebView* view) {
    webkit_web_view_terminate_web_process(view);
    g_object_run_dispose(G_OBJECT(view));
}

ProcessProbe::Ask askOf(WebKitWebView* view) {
    return [view](std::function<void()> ran) {
        webkit_web_view_evaluate_javascript(
            view, "1", 1, nullptr, nullptr, nullptr,
            [](GObject*, GAsyncResult*, gpointer data) {
                const std::unique_ptr<std::function<void()>> held(
                    static_cast<std::function<void()>*>(data));
                (*held)();
            },
            new std::function<void()>(std::move(ran)));
    };
}

ObjectPointer<WebKitWebView> SpareView::take() {
    probe_.reset();
    g_signal_handlers_disconnect_by_data(view_.get(), this);
    return std::move(view_);
}

void SpareView::become(State state) {
    state_ = state;
    probe_.reset();
    const auto changed = changed_;  // it may end this spare view
    changed(*this);
}

}  // namespace zorvik::platform::gtk
