#include "platform/gtk/GtkStage.h"

#include <gtk/gtk.h>

#include <utility>

#include "platform/gtk/ShownWidget.h"
#include "platform/gtk/Text.h"
#include "platform/gtk/WindowLayers.h"

namespace zorvik::platform::gtk {
namespace {

// A window is in this list from its making until it is destroyed, whoever still holds it then.
bool isOpen(const void* window) {
    GListModel* windows = gtk_window_get_toplevels();
    for (guint i = 0; i < g_list_model_get_n_items(windows); ++i) {
        const ObjectPointer<GtkWindow> open(GTK_WINDOW(g_list_model_get_item(windows, i)));
        if (open.get() == window) return true;
    }
    return false;
}

}  // namespace

class GtkStage::Screen : public desktop::DesktopScreen {
  public:
    Screen(GtkStage& stage, std::shared_ptr<UIViewController> shown, GtkWindow* window)
        : DesktopScreen(stage, std::move(shown)),
          window_(window),
          formerFocus_(gtk_window_get_focus(window)),
          tree_(controller->view(),
                [](UIView& view) { return std::make_unique<ShownWidget>(view); }),
          screen_(makeScreenWidget(
              static_cast<ShownWidget*>(tree_.root())->widget(),
              [](void* self, Size size) { static_cast<Screen*>(self)->resized(size); }, this)),
          widget_(share(asWidget(screen_))) {
        tree_.follow();
        addLayer(window, widget_.get());
        follow();
    }

    ~Screen() override {
        if (tick_ != 0) gtk_widget_remove_tick_callback(widget_.get(), tick_);
        removeLayer(widget_.get());
        returnFocus();
    }

    desktop::DesktopWindow window() const override { return window_.get(); }
    void leave() override {
        layerLeaves(widget_.get());
        returnFocus();
    }

  private:
    desktop::ViewTree& tree() override { return tree_; }
    bool hasKeyboard() const override { return isTopLayer(widget_.get()); }
    void setOffset(double offset) override { gtk::setOffset(screen_, offset); }
    void requestFrames() override {
        if (tick_ != 0) return;
        tick_ = gtk_widget_add_tick_callback(
            widget_.get(),
            [](GtkWidget*, GdkFrameClock*, gpointer self) -> gboolean {
                return static_cast<Screen*>(self)->tick();
            },
            this, nullptr);
    }
    gboolean tick() {
        if (frame()) return G_SOURCE_CONTINUE;
        tick_ = 0;
        return G_SOURCE_REMOVE;
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

    WeakPointer<GtkWindow> window_;
    WeakPointer<GtkWidget> formerFocus_;
    desktop::ViewTree tree_;
    ScreenWidget* screen_;
    ObjectPointer<GtkWidget> widget_;
    guint tick_ = 0;
};

GtkStage::GtkStage(Scheduler& scheduler, const UIEdgeInsets& safeArea)
    : DesktopStage(scheduler, safeArea), ruler_(share(makeLabel())) {
    installLook();
    windowsSignal_ = g_signal_connect_swapped(
        gtk_window_get_toplevels(), "items-changed", G_CALLBACK(+[](GtkStage* self) {
            self->endPresenters([](const void* w) { return !isOpen(w); });
        }),
        this);
    for (const char* setting : {"notify::gtk-xft-dpi", "notify::gtk-font-name"}) {
        g_signal_connect_swapped(gtk_settings_get_default(), setting,
                                 G_CALLBACK(+[](GtkStage* self) { self->settingsChanged(); }),
                                 this);
    }
}

GtkStage::~GtkStage() {
    g_signal_handlers_disconnect_by_data(gtk_settings_get_default(), this);
    g_signal_handler_disconnect(gtk_window_get_toplevels(), windowsSignal_);
}

std::shared_ptr<UIViewController> GtkStage::presenterFor(GtkWindow* window) {
    if (window == nullptr || !isOpen(window)) return nullptr;
    prepareLayers(window);
    return presenterOf(window);
}

void GtkStage::settingsChanged() {
    ruler_ = share(makeLabel());  // one in no window keeps the style it was made with
    textsChanged();
}

std::unique_ptr<desktop::DesktopScreen> GtkStage::makeScreen(
    std::shared_ptr<UIViewController> shown, desktop::DesktopWindow window) {
    return std::make_unique<Screen>(*this, std::move(shown), static_cast<GtkWindow*>(window));
}

Size GtkStage::measureText(const std::string& text, double fontSize, double maximumWidth) {
    return gtk::measureText(ruler_.get(), text, fontSize, maximumWidth);
}

}  // namespace zorvik::platform::gtk
