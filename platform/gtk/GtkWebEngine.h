#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/desktop/PageData.h"
#include "platform/gtk/GtkWebPage.h"
#include "platform/gtk/ObjectPointer.h"
#include "platform/gtk/SpareView.h"
#include "platform/services/Scheduler.h"

typedef struct _WebKitNetworkSession WebKitNetworkSession;

namespace zorvik::platform::gtk {

struct GtkWebEngineOptions {
    desktop::PageData pageData = desktop::PageData::inMemory;
    // Made and written to when the data is kept on disk.
    std::string dataFolder;
    std::string cacheFolder;
    // Keeps one web process started ahead of the next page: a fresh one at first, then that of the
    // page that went last, which has the fonts and the page's own files at hand.
    bool keepsSparePage = true;
    // See GtkWebPage.
    double hungSeconds = 20;
};

// Pages of WebKitGTK that share one network session, or have one each. A web process is handed on
// to a later page only when it answers after the page before it is closed; one that does not is
// ended. Main thread only.
class GtkWebEngine : public WebEngine {
  public:
    GtkWebEngine(Scheduler& scheduler, const GtkWebEngineOptions& options);
    GtkWebEngine(const GtkWebEngine&) = delete;
    GtkWebEngine& operator=(const GtkWebEngine&) = delete;
    ~GtkWebEngine() override;

    std::unique_ptr<WebPage> makePage(const WebPageConfiguration& configuration,
                                      std::weak_ptr<WebPageDelegate> delegate) override;

    // A page hands over the view it is done with.
    void pageLeft(GtkWebPage& page, ObjectPointer<WebKitWebView> view);
    // Ends every view with its web process, those of living pages too, without a report. Pages
    // that are destroyed afterwards touch nothing of the engine's. The destructor does it.
    void end();

  private:
    // In the web process of `related` when one is given, else in one of its own.
    ObjectPointer<WebKitWebView> makeView(WebKitWebView* related = nullptr);
    void closeLeftViews();
    void addSpare(ObjectPointer<WebKitWebView> view, SpareView::Origin origin);
    void spareChanged(const SpareView& spare);

    Scheduler& scheduler_;
    const GtkWebEngineOptions options_;
    const ObjectPointer<WebKitNetworkSession> session_;  // none when each page has its own
    // At most one that can be taken; the others are in processes of pages that went and are still
    // asked.
    std::vector<std::unique_ptr<SpareView>> spares_;
    std::vector<GtkWebPage*> pages_;                       // alive
    std::vector<ObjectPointer<WebKitWebView>> leftViews_;  // not closed yet
};

}  // namespace zorvik::platform::gtk
