#include "platform/gtk/GtkWebEngine.h"

#include <webkit/webkit.h>

#include "platform/gtk/GtkWebPage.h"

namespace zorvik::platform::gtk {
namespace {

ObjectPointer<WebKitNetworkSession> makeSession(const GtkWebEngineOptions& options) {
    ObjectPointer<WebKitNetworkSession> session(
        options.dataFolder.empty()
            ? webkit_network_session_new_ephemeral()
            : webkit_network_session_new(options.dataFolder.c_str(), options.cacheFolder.c_str()));
    g_signal_connect(session.get(), "download-started",
                     G_CALLBACK(+[](WebKitNetworkSession*, WebKitDownload* download, gpointer) {
                         webkit_download_cancel(download);
                     }),
                     nullptr);
    return session;
}

}  // namespace

GtkWebEngine::GtkWebEngine(const GtkWebEngineOptions& options)
    : keepsSparePage_(options.keepsSparePage),
      session_(makeSession(options)),
      pageGoing_(std::make_shared<const PageGoing>([this](WebKitWebView* view) {
          if (keepsSparePage_ && !spare_) startSparePage(view);
      })) {
    if (keepsSparePage_) startSparePage();
}

GtkWebEngine::~GtkWebEngine() = default;

ObjectPointer<WebKitWebView> GtkWebEngine::makeView(WebKitWebView* related) {
    ObjectPointer<WebKitSettings> settings(webkit_settings_new());
    // With acceleration a reused web process blocks the main loop for half a second when its view
    // comes on screen.
    webkit_settings_set_hardware_acceleration_policy(settings.get(),
                                                     WEBKIT_HARDWARE_ACCELERATION_POLICY_NEVER);
    webkit_settings_set_enable_developer_extras(settings.get(), FALSE);
    webkit_settings_set_enable_fullscreen(settings.get(), FALSE);
    // A related view would share the other one's message handlers if it had none of its own.
    const ObjectPointer<WebKitUserContentManager> content(webkit_user_content_manager_new());
    const char* origin = related != nullptr ? "related-view" : "network-session";
    gpointer of = related != nullptr ? static_cast<gpointer>(related) : session_.get();
    return share(
        WEBKIT_WEB_VIEW(g_object_new(WEBKIT_TYPE_WEB_VIEW, origin, of, "settings", settings.get(),
                                     "user-content-manager", content.get(), nullptr)));
}

void GtkWebEngine::startSparePage(WebKitWebView* related) {
    spare_ = makeView(related);
    // The engine starts a view's process at its first load or script, and that start is nearly
    // all of a first load's time.
    webkit_web_view_evaluate_javascript(spare_.get(), "1", 1, nullptr, nullptr, nullptr, nullptr,
                                        nullptr);
}

std::unique_ptr<WebPage> GtkWebEngine::makePage(const WebPageConfiguration& configuration,
                                                std::weak_ptr<WebPageDelegate> delegate) {
    ObjectPointer<WebKitWebView> view = spare_ ? std::move(spare_) : makeView();
    WebKitSettings* settings = webkit_web_view_get_settings(view.get());
    webkit_settings_set_enable_javascript_markup(settings, configuration.allowsContentJavaScript);
    webkit_settings_set_javascript_can_open_windows_automatically(
        settings, configuration.javaScriptCanOpenWindowsAutomatically);
    return std::make_unique<GtkWebPage>(std::move(view), std::move(delegate), pageGoing_);
}

}  // namespace zorvik::platform::gtk
