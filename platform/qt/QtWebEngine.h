#pragma once

#include <filesystem>
#include <memory>

#include "platform/desktop/PageData.h"
#include "platform/services/Scheduler.h"
#include "platform/services/WebEngine.h"

namespace zorvik::platform::qt {

// How the engine is made.
struct QtWebEngineOptions {
    bool keepsSparePage = true;
    double hungSeconds = 20;
    desktop::PageData pageData = desktop::PageData::inMemory;
    std::filesystem::path dataFolder;
    std::filesystem::path cacheFolder;
};

// Pages of Qt WebEngine. Owned by the platform; main thread only.
class QtWebEngine : public WebEngine {
  public:
    QtWebEngine(Scheduler& scheduler, const QtWebEngineOptions& options);
    ~QtWebEngine() override;

    // At the port's end: ends every page's engine side. A WebPage may be destroyed later, on any
    // thread.
    void end();

    std::unique_ptr<WebPage> makePage(const WebPageConfiguration& configuration,
                                      std::weak_ptr<WebPageDelegate> delegate) override;

  private:
    struct Parts;
    std::unique_ptr<Parts> parts_;
};

}  // namespace zorvik::platform::qt
