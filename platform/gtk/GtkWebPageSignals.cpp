#include <webkit/webkit.h>

#include "platform/gtk/GtkWebPage.h"

// How the page hears of its view, and what it refuses the page's script on its own.
namespace zorvik::platform::gtk {

namespace {

struct FreeList {
    void operator()(GList* list) const { g_list_free(list); }
};
using GListPointer = std::unique_ptr<GList, FreeList>;

bool isTouchOfTheCustomer(GdkEvent* event) {
    switch (gdk_event_get_event_type(event)) {
        case GDK_BUTTON_PRESS:
        case GDK_KEY_PRESS:
        case GDK_TOUCH_BEGIN:
        case GDK_SCROLL:
            return true;
        default:
            return false;
    }
}

// False when none is left that could be chosen. The others lead away from the page.
bool keepEditingItems(WebKitContextMenu* menu) {
    bool hasUse = false;
    const GListPointer items(g_list_copy(webkit_context_menu_get_items(menu)));
    for (const GList* entry = items.get(); entry != nullptr; entry = entry->next) {
        auto* item = WEBKIT_CONTEXT_MENU_ITEM(entry->data);
        switch (webkit_context_menu_item_get_stock_action(item)) {
            case WEBKIT_CONTEXT_MENU_ACTION_CUT:
            case WEBKIT_CONTEXT_MENU_ACTION_COPY:
            case WEBKIT_CONTEXT_MENU_ACTION_PASTE:
            case WEBKIT_CONTEXT_MENU_ACTION_SELECT_ALL:
                hasUse = hasUse || g_action_get_enabled(webkit_context_menu_item_get_gaction(item));
                break;
            default:
                webkit_context_menu_remove(menu, item);
        }
    }
    return hasUse;
}

// What is dropped on a page would be loaded in its place.
void refuseDrops(GtkWidget* view) {
    const ObjectPointer<GListModel> controllers(gtk_widget_observe_controllers(view));
    for (guint index = g_list_model_get_n_items(controllers.get()); index-- > 0;) {
        const ObjectPointer<GtkEventController> controller(
            GTK_EVENT_CONTROLLER(g_list_model_get_item(controllers.get(), index)));
        if (GTK_IS_DROP_TARGET_ASYNC(controller.get()))
            gtk_widget_remove_controller(view, controller.get());
    }
}

}  // namespace

void GtkWebPage::connectSignals() {
    WebKitWebView* view = view_.get();
    input_ = gtk_event_controller_legacy_new();
    gtk_event_controller_set_propagation_phase(input_, GTK_PHASE_CAPTURE);
    gtk_widget_add_controller(widget(), input_);
    g_signal_connect(
        input_, "event",
        G_CALLBACK(+[](GtkEventControllerLegacy*, GdkEvent* event, gpointer page) -> gboolean {
            if (isTouchOfTheCustomer(event)) static_cast<GtkWebPage*>(page)->customerActed();
            return FALSE;
        }),
        this);
    g_signal_connect(view, "decide-policy",
                     G_CALLBACK(+[](WebKitWebView*, WebKitPolicyDecision* decision,
                                    WebKitPolicyDecisionType type, gpointer page) -> gboolean {
                         static_cast<GtkWebPage*>(page)->policyAsked(decision, type);
                         return TRUE;
                     }),
                     this);
    g_signal_connect(view, "create",
                     G_CALLBACK(+[](WebKitWebView*, WebKitNavigationAction* action,
                                    gpointer page) -> GtkWidget* {
                         static_cast<GtkWebPage*>(page)->newWindowAsked(action);
                         return nullptr;
                     }),
                     this);
    g_signal_connect(view, "load-changed",
                     G_CALLBACK(+[](WebKitWebView*, WebKitLoadEvent event, gpointer page) {
                         static_cast<GtkWebPage*>(page)->loadChanged(event);
                     }),
                     this);
    g_signal_connect(view, "load-failed",
                     G_CALLBACK(+[](WebKitWebView*, WebKitLoadEvent event, char* failingUri,
                                    GError* error, gpointer page) -> gboolean {
                         static_cast<GtkWebPage*>(page)->loadFailed(event == WEBKIT_LOAD_COMMITTED,
                                                                    failingUri, *error);
                         return TRUE;  // no error page of the engine's
                     }),
                     this);
    g_signal_connect(view, "notify::estimated-load-progress",
                     G_CALLBACK(+[](WebKitWebView*, GParamSpec*, gpointer page) {
                         static_cast<GtkWebPage*>(page)->watch_.progressSeen();
                     }),
                     this);
    g_signal_connect(
        view, "web-process-terminated",
        G_CALLBACK(+[](WebKitWebView*, WebKitWebProcessTerminationReason, gpointer page) {
            static_cast<GtkWebPage*>(page)->webProcessEnded();
        }),
        this);
    g_signal_connect(
        view, "script-dialog",
        G_CALLBACK(+[](WebKitWebView*, WebKitScriptDialog* dialog, gpointer page) -> gboolean {
            static_cast<GtkWebPage*>(page)->panelAsked(dialog);
            return TRUE;
        }),
        this);

    g_signal_connect(
        view, "authenticate",
        G_CALLBACK(+[](WebKitWebView*, WebKitAuthenticationRequest* request, gpointer) -> gboolean {
            // Goes on without credentials; the server's refusal is then the page.
            webkit_authentication_request_authenticate(request, nullptr);
            return TRUE;
        }),
        this);
    g_signal_connect(
        view, "permission-request",
        G_CALLBACK(+[](WebKitWebView*, WebKitPermissionRequest* request, gpointer) -> gboolean {
            webkit_permission_request_deny(request);
            return TRUE;
        }),
        this);
    g_signal_connect(
        view, "run-file-chooser",
        G_CALLBACK(+[](WebKitWebView*, WebKitFileChooserRequest* request, gpointer) -> gboolean {
            webkit_file_chooser_request_cancel(request);
            return TRUE;
        }),
        this);
    g_signal_connect(
        view, "run-color-chooser",
        G_CALLBACK(+[](WebKitWebView*, WebKitColorChooserRequest* request, gpointer) -> gboolean {
            webkit_color_chooser_request_cancel(request);
            return TRUE;
        }),
        this);
    const auto refuse =
        G_CALLBACK(+[](WebKitWebView*, gpointer, gpointer) -> gboolean { return TRUE; });
    g_signal_connect(view, "print", refuse, this);
    g_signal_connect(view, "show-notification", refuse, this);
    g_signal_connect(view, "context-menu",
                     G_CALLBACK(+[](WebKitWebView*, WebKitContextMenu* menu, WebKitHitTestResult*,
                                    gpointer) -> gboolean { return !keepEditingItems(menu); }),
                     this);
    refuseDrops(GTK_WIDGET(view));
}

}  // namespace zorvik::platform::gtk
