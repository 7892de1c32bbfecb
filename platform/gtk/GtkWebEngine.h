#pragma once

#include <memory>

#include "platform/gtk/ObjectPointer.h"
#include "platform/services/Scheduler.h"
#include "platform/services/WebEngine.h"

typedef struct _WebKitNetworkSession WebKitNetworkSession;
typedef struct _WebKitWebView WebKitWebView;

namespace zorvik::platform::gtk {

struct GtkWebEngineOptions {
    // Where cookies and caches are kept; empty: in memory only.
    std::string dataFolder;
    std::string cacheFolder;
    // Keeps one web process started ahead of the next page.
    bool keepsSparePage = true;
};

// Pages of WebKitGTK that share one network session. Main thread only.
class GtkWebEngine : public WebEngine {
  public:
    GtkWebEngine(Scheduler& scheduler, const GtkWebEngineOptions& options);
    ~GtkWebEngine() override;

    std::unique_ptr<WebPage> makePage(const WebPageConfiguration& configuration,
                                      std::weak_ptr<WebPageDelegate> delegate) override;

  private:
    ObjectPointer<WebKitWebView> makeView();
    void startSparePage();

    Scheduler& scheduler_;
    const bool keepsSparePage_;
    ObjectPointer<WebKitNetworkSession> session_;
    ObjectPointer<WebKitWebView> spare_;
    // What pages ask for when they go; they may outlive the engine.
    std::shared_ptr<std::function<void()>> pageGone_;
};

}  // namespace zorvik::platform::gtk
