#include "platform/gtk/GtkWebEngine.h"

#include <webkit/webkit.h>

#include <algorithm>
#include <utility>

namespace zorvik::platform::gtk {
namespace {

ObjectPointer<WebKitNetworkSession> makeSessionOnDisk(const GtkWebEngineOptions& options) {
    ObjectPointer<WebKitNetworkSession> session(
        webkit_network_session_new(options.dataFolder.c_str(), options.cacheFolder.c_str()));
    // Unlike all the rest, cookies are kept in memory unless a file is named.
    const std::string file = options.dataFolder + "/cookies.sqlite";
    g_mkdir_with_parents(options.dataFolder.c_str(), 0700);
    webkit_cookie_manager_set_persistent_storage(
        webkit_network_session_get_cookie_manager(session.get()), file.c_str(),
        WEBKIT_COOKIE_PERSISTENT_STORAGE_SQLITE);
    return session;
}

ObjectPointer<WebKitNetworkSession> makeSession(const GtkWebEngineOptions& options) {
    auto session =
        options.pageData == desktop::PageData::onDisk
            ? makeSessionOnDisk(options)
            : ObjectPointer<WebKitNetworkSession>(webkit_network_session_new_ephemeral());
    g_signal_connect(session.get(), "download-started",
                     G_CALLBACK(+[](WebKitNetworkSession*, WebKitDownload* download, gpointer) {
                         webkit_download_cancel(download);
                     }),
                     nullptr);
    return session;
}

}  // namespace

GtkWebEngine::GtkWebEngine(Scheduler& scheduler, const GtkWebEngineOptions& options)
    : scheduler_(scheduler),
      options_(options),
      session_(options.pageData == desktop::PageData::freshForEachPage ? nullptr
                                                                       : makeSession(options)) {
    if (options_.keepsSparePage) addSpare(makeView(), SpareView::Origin::ownProcess);
}

GtkWebEngine::~GtkWebEngine() {
    end();
}

void GtkWebEngine::end() {
    // What was waited for goes with its page, and other pages may go with that.
    while (!pages_.empty()) {
        GtkWebPage* page = pages_.back();
        pages_.pop_back();
        leftViews_.push_back(page->giveUpView());
    }
    for (const auto& view : std::exchange(leftViews_, {}))
        endWithProcess(view.get());
    spares_.clear();
}

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
    const ObjectPointer<WebKitNetworkSession> ownSession =
        related == nullptr && !session_ ? makeSession(options_) : nullptr;
    WebKitNetworkSession* session = ownSession ? ownSession.get() : session_.get();
    const char* origin = related != nullptr ? "related-view" : "network-session";
    gpointer of = related != nullptr ? static_cast<gpointer>(related) : session;
    return share(
        WEBKIT_WEB_VIEW(g_object_new(WEBKIT_TYPE_WEB_VIEW, origin, of, "settings", settings.get(),
                                     "user-content-manager", content.get(), nullptr)));
}

std::unique_ptr<WebPage> GtkWebEngine::makePage(const WebPageConfiguration& configuration,
                                                std::weak_ptr<WebPageDelegate> delegate) {
    ObjectPointer<WebKitWebView> view;
    const auto spare = std::ranges::find_if(spares_, [](const auto& s) { return s->canBeTaken(); });
    if (spare != spares_.end()) {
        view = (*spare)->take();
        spares_.erase(spare);
    } else {
        view = makeView();
    }
    WebKitSettings* settings = webkit_web_view_get_settings(view.get());
    webkit_settings_set_enable_javascript_markup(settings, configuration.allowsContentJavaScript);
    webkit_settings_set_javascript_can_open_windows_automatically(
        settings, configuration.javaScriptCanOpenWindowsAutomatically);
    auto page = std::make_unique<GtkWebPage>(*this, std::move(view), std::move(delegate),
                                             options_.hungSeconds);
    pages_.push_back(page.get());
    return page;
}

void GtkWebEngine::pageLeft(GtkWebPage& page, ObjectPointer<WebKitWebView> view) {
    std::erase(pages_, &page);
    // The view may be in the middle of a report, so its page is closed in a later turn. Left to
    // its references, it would run on as long as somebody holds a question of it open.
    leftViews_.push_back(std::move(view));
    scheduler_.runOnMain([this] { closeLeftViews(); });
}

void GtkWebEngine::closeLeftViews() {
    for (const auto& view : std::exchange(leftViews_, {})) {
        // Related before the close, which would leave the process without a page.
        ObjectPointer<WebKitWebView> heir = makeView(view.get());
        g_object_run_dispose(G_OBJECT(view.get()));
        addSpare(std::move(heir), SpareView::Origin::pastPage);
    }
}

void GtkWebEngine::addSpare(ObjectPointer<WebKitWebView> view, SpareView::Origin origin) {
    spares_.push_back(
        std::make_unique<SpareView>(scheduler_, std::move(view), origin,
                                    [this](const SpareView& spare) { spareChanged(spare); }));
}

void GtkWebEngine::spareChanged(const SpareView& changed) {
    const auto isChanged = [&](const auto& spare) { return spare.get() == &changed; };
    const bool isOfPastPage = changed.origin() == SpareView::Origin::pastPage;
    const bool needsSpare = options_.keepsSparePage && pages_.empty() &&
                            std::ranges::none_of(spares_, [&](const auto& spare) {
                                return !isChanged(spare) && spare->canBeTaken();
                            });
    const bool hasPastData =
        isOfPastPage && options_.pageData == desktop::PageData::freshForEachPage;
    if (needsSpare && changed.state() == SpareView::State::answered && !hasPastData) return;
    std::erase_if(spares_, isChanged);
    // One that could not even start is not tried again.
    if (needsSpare && isOfPastPage) addSpare(makeView(), SpareView::Origin::ownProcess);
}

}  // namespace zorvik::platform::gtk
