#include "platform/gtk/GtkStage.h"

#include <gtk/gtk.h>

#include <algorithm>
#include <cstdio>
#include <optional>
#include <utility>

#include "platform/gtk/Text.h"
#include "platform/gtk/ViewTree.h"
#include "platform/gtk/WindowLayers.h"
#include "platform/uikit/UIViewController.h"

namespace zorvik::platform::gtk {
namespace {

constexpr double slideSeconds = 0.35;

double easeOut(double share) {
    const double left = 1 - std::clamp(share, 0.0, 1.0);
    return 1 - left * left * left;
}

// A window is in this list from its making until it is destroyed, whoever still holds it then.
bool isOpen(const GtkWindow* window) {
    GListModel* windows = gtk_window_get_toplevels();
    for (guint i = 0; i < g_list_model_get_n_items(windows); ++i) {
        const ObjectPointer<GtkWindow> open(GTK_WINDOW(g_list_model_get_item(windows, i)));
        if (open.get() == window) return true;
    }
    return false;
}

}  // namespace

// One controller on screen. It moves with the window's frames only while something moves.
class GtkStage::Screen {
  public:
    Screen(GtkStage& stage, std::shared_ptr<UIViewController> shown, GtkWindow* window)
        : controller(std::move(shown)),
          stage_(stage),
          window_(window),
          formerFocus_(gtk_window_get_focus(window)),
          tree_(controller->view()),
          screen_(makeScreenWidget(
              tree_.widget(),
              [](void* self, Size size) { static_cast<Screen*>(self)->allocated(size); }, this)),
          widget_(share(asWidget(screen_))) {
        addLayer(window, widget_.get());
        follow();
    }
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;

    ~Screen() {
        cancelTask();
        if (tick_ != 0) gtk_widget_remove_tick_callback(widget_.get(), tick_);
        removeLayer(widget_.get());
        returnFocus();
    }

    void follow() {
        needsFollowing_ = true;
        requestTick();
    }
    void slide(double from, double to) {
        slide_ = {from, to, stage_.scheduler_.steadySeconds()};
        moveTo(from);
        requestTick();
    }
    void endSlide() {
        if (slide_) moveTo(slide_->to);
        slide_.reset();
    }
    double offset() const { return offset_; }
    void leave() {
        layerLeaves(widget_.get());
        returnFocus();
    }
    void runLater(double seconds, Task task) {
        cancelTask();
        task_ = stage_.scheduler_.runOnMainAfter(seconds, std::move(task));
    }

    GtkWindow* window() const { return window_.get(); }

    const std::shared_ptr<UIViewController> controller;

  private:
    struct Slide {
        double from;
        double to;
        double start;
    };

    void cancelTask() {
        if (const auto task = std::exchange(task_, std::nullopt)) stage_.scheduler_.cancel(*task);
    }
    void returnFocus() {
        GtkWidget* focus = formerFocus_.get();
        GtkWindow* window = window_.get();
        if (focus != nullptr && window != nullptr &&
            gtk_widget_get_root(focus) == GTK_ROOT(window)) {
            gtk_window_set_focus(window, focus);
        }
        formerFocus_.set(nullptr);
    }
    void moveTo(double offset) {
        offset_ = offset;
        setOffset(screen_, offset);
    }
    void requestTick() {
        if (tick_ != 0) return;
        tick_ = gtk_widget_add_tick_callback(
            widget_.get(),
            [](GtkWidget*, GdkFrameClock*, gpointer self) -> gboolean {
                return static_cast<Screen*>(self)->tick();
            },
            this, nullptr);
    }
    gboolean tick() {
        if (std::exchange(needsFollowing_, false)) {
            tree_.follow();
            if (size_.width > 0) tree_.place(size_, stage_.safeArea_);
        }
        const bool isFading = tree_.showOpacities();
        if (slide_) {
            const double elapsed = stage_.scheduler_.steadySeconds() - slide_->start;
            const double share = easeOut(elapsed / slideSeconds);
            moveTo(slide_->from + (slide_->to - slide_->from) * share);
            if (elapsed >= slideSeconds) slide_.reset();
        }
        if (isFading || slide_ || needsFollowing_) return G_SOURCE_CONTINUE;
        tick_ = 0;
        return G_SOURCE_REMOVE;
    }
    void allocated(const Size& size) {
        size_ = size;
        tree_.place(size, stage_.safeArea_);
    }

    GtkStage& stage_;
    WeakPointer<GtkWindow> window_;
    WeakPointer<GtkWidget> formerFocus_;
    ViewTree tree_;
    ScreenWidget* screen_;
    ObjectPointer<GtkWidget> widget_;
    Size size_;
    std::optional<Slide> slide_;
    double offset_ = 0;  // of the height
    std::optional<Scheduler::TaskId> task_;
    guint tick_ = 0;
    bool needsFollowing_ = false;
};

GtkStage::GtkStage(Scheduler& scheduler, const UIEdgeInsets& safeArea)
    : scheduler_(scheduler), safeArea_(safeArea), ruler_(share(makeLabel())) {
    installLook();
    windowsSignal_ = g_signal_connect_swapped(
        gtk_window_get_toplevels(), "items-changed",
        G_CALLBACK(+[](GtkStage* self) { self->endPresentersOfClosedWindows(); }), this);
}

GtkStage::~GtkStage() {
    g_signal_handler_disconnect(gtk_window_get_toplevels(), windowsSignal_);
}

std::shared_ptr<UIViewController> GtkStage::presenterFor(GtkWindow* window) {
    if (window == nullptr || !isOpen(window)) return nullptr;
    for (const auto& presenter : presenters_) {
        if (presenter.window == window) return presenter.controller;
    }
    prepareLayers(window);
    presenters_.push_back({makeOnMainThread<UIViewController>(), window});
    return presenters_.back().controller;
}

void GtkStage::endPresentersOfClosedWindows() {
    const auto isClosed = [](const Presenter& presenter) { return !isOpen(presenter.window); };
    // Looked for anew each time: the controllers are told at once and may open and close windows.
    while (true) {
        const auto place = std::ranges::find_if(presenters_, isClosed);
        if (place == presenters_.end()) return;
        const auto controller = std::move(place->controller);
        presenters_.erase(place);
        controller->dismiss(false);
    }
}

void GtkStage::setSafeAreaInsets(const UIEdgeInsets& insets) {
    safeArea_ = insets;
    for (const auto& screen : screens_)
        screen->follow();
}

void GtkStage::dropScreens() {
    // One by one, from the top: a controller that goes may look at those below.
    while (!screens_.empty()) {
        const std::unique_ptr<Screen> top = std::move(screens_.back());
        screens_.pop_back();
    }
    // What is told of it may ask for a presenter again.
    const auto released = std::exchange(presenters_, {});
}

GtkWindow* GtkStage::windowOf(const UIViewController& presenter) const {
    for (const UIViewController* controller = &presenter; controller != nullptr;
         controller = controller->parent()) {
        for (const auto& entry : presenters_) {
            if (entry.controller.get() == controller) return entry.window;
        }
        for (const auto& screen : screens_) {
            if (screen->controller.get() == controller) return screen->window();
        }
    }
    return nullptr;
}

void GtkStage::show(std::shared_ptr<UIViewController> presented, UIViewController& presenter,
                    bool animated, std::function<void()> shown) {
    GtkWindow* window = windowOf(presenter);
    if (window == nullptr) {
        std::fputs(
            "zorvik: a screen is presented from a controller that is in no window: it is dismissed "
            "at once\n",
            stderr);
        presenter.dismiss(false);
        return;
    }
    Screen& screen =
        *screens_.emplace_back(std::make_unique<Screen>(*this, std::move(presented), window));
    if (animated) screen.slide(1, 0);
    screen.runLater(animated ? slideSeconds : 0, [&screen, shown = std::move(shown)] {
        screen.endSlide();
        if (shown) shown();
    });
}

void GtkStage::hide(UIViewController& presented, bool animated, std::function<void()> hidden) {
    const auto place = std::find_if(screens_.begin(), screens_.end(), [&](const auto& screen) {
        return screen->controller.get() == &presented;
    });
    if (place == screens_.end()) {
        scheduler_.runOnMain(std::move(hidden));
        return;
    }
    Screen& screen = **place;
    screen.leave();
    if (animated) screen.slide(screen.offset(), 1);
    screen.runLater(animated ? slideSeconds : 0,
                    [this, controller = screen.controller, hidden = std::move(hidden)] {
                        removeScreen(*controller);
                        if (hidden) hidden();
                    });
}

void GtkStage::removeScreen(const UIViewController& controller) {
    std::erase_if(screens_,
                  [&](const auto& screen) { return screen->controller.get() == &controller; });
}

void GtkStage::viewDidChange(UIView& view) {
    const UIView* root = &view;
    while (root->superview() != nullptr)
        root = root->superview();
    for (const auto& screen : screens_) {
        if (screen->controller->view().get() == root) screen->follow();
    }
}

Size GtkStage::measureText(const std::string& text, double fontSize, double maximumWidth) {
    return gtk::measureText(ruler_.get(), text, fontSize, maximumWidth);
}

}  // namespace zorvik::platform::gtk
