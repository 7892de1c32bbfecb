#pragma once

#include <memory>
#include <string>

#include "platform/gtk/GtkWebPage.h"
#include "platform/gtk/ObjectPointer.h"

typedef struct _WebKitNetworkSession WebKitNetworkSession;

namespace zorvik::platform::gtk {

struct GtkWebEngineOptions {
    // Where cookies and caches are kept; empty: in memory only.
    std::string dataFolder;
    std::string cacheFolder;
    // Keeps one web process started ahead of the next page: a fresh one at first, then that of the
    // page that went last, which has the fonts and the page's own files at hand.
    bool keepsSparePage = true;
};

// Pages of WebKitGTK that share one network session. Main thread only.
class GtkWebEngine : public WebEngine {
  public:
    explicit GtkWebEngine(const GtkWebEngineOptions& options);
    ~GtkWebEngine() override;

    std::unique_ptr<WebPage> makePage(const WebPageConfiguration& configuration,
                                      std::weak_ptr<WebPageDelegate> delegate) override;

  private:
    // In the web process of `related` when one is given, else in one of its own.
    ObjectPointer<WebKitWebView> makeView(WebKitWebView* related = nullptr);
    void startSparePage(WebKitWebView* related = nullptr);

    const bool keepsSparePage_;
    ObjectPointer<WebKitNetworkSession> session_;
    ObjectPointer<WebKitWebView> spare_;
    // What pages call when they go; they may outlive the engine.
    std::shared_ptr<const PageGoing> pageGoing_;
};

}  // namespace zorvik::platform::gtk
