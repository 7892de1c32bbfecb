#include "platform/qt/QtWebEngine.h"

#include <QWebEngineProfile>
#include <utility>
#include <vector>

#include "platform/desktop/ProcessProbe.h"
#include "platform/qt/EnginePage.h"
#include "platform/qt/QtWebPage.h"

namespace zorvik::platform::qt {

using desktop::PageData, desktop::ProcessProbe;

namespace {

// A process that starts on a busy machine takes its time.
constexpr double startPatience = 10;

QString pathOf(const std::filesystem::path& path) {
    return QString::fromStdString(path.string());
}

std::shared_ptr<EngineProfile> makeProfile(const QtWebEngineOptions& options) {
    PageScheme::makeKnown();
    auto shared = std::make_shared<EngineProfile>();
    if (options.pageData == PageData::onDisk) {
        shared->profile = std::make_unique<QWebEngineProfile>(QStringLiteral("pages"));
        shared->profile->setPersistentStoragePath(pathOf(options.dataFolder));
        shared->profile->setCachePath(pathOf(options.cacheFolder));
    } else {
        shared->profile = std::make_unique<QWebEngineProfile>();
    }
    shared->profile->installUrlSchemeHandler(PageScheme::name, &shared->scheme);
    return shared;
}

// An empty page for one to come, whose web process is started ahead and asked whether it answers.
class SparePage {
  public:
    // `lost` is called when its process ends or does not answer in time: whether it ever did.
    SparePage(Scheduler& scheduler, std::unique_ptr<EnginePage> page,
              std::function<void(bool hasAnswered)> lost)
        : page_(std::move(page)), lost_(std::move(lost)) {
        ending_ = QObject::connect(page_.get(), &QWebEnginePage::renderProcessTerminated,
                                   [this] { becomeLost(); });
        const auto ask = [this](std::function<void()> ran) {
            page_->runJavaScript("1", [ran = std::move(ran)](const QVariant&) { ran(); });
        };
        probe_ = std::make_unique<ProcessProbe>(
            scheduler, ask, startPatience, [this](ProcessProbe::Answer answer) {
                probe_.reset();
                hasAnswered_ = answer == ProcessProbe::Answer::answers;
                if (!hasAnswered_) becomeLost();
            });
    }
    SparePage(const SparePage&) = delete;
    SparePage& operator=(const SparePage&) = delete;
    ~SparePage() { QObject::disconnect(ending_); }

    std::unique_ptr<EnginePage> take() {
        probe_.reset();
        QObject::disconnect(ending_);
        return std::move(page_);
    }

  private:
    void becomeLost() {
        probe_.reset();
        const auto lost = lost_;
        lost(hasAnswered_);
    }

    std::unique_ptr<EnginePage> page_;
    const std::function<void(bool)> lost_;
    QMetaObject::Connection ending_;
    bool hasAnswered_ = false;
    std::unique_ptr<ProcessProbe> probe_;
};

}  // namespace

// Each page has a web process of its own, which ends with it; a fresh one is kept for the next.
struct QtWebEngine::Parts {
    Parts(Scheduler& ownScheduler, const QtWebEngineOptions& ownOptions)
        : scheduler(ownScheduler),
          options(ownOptions),
          profile(options.pageData == PageData::freshForEachPage ? nullptr : makeProfile(options)) {
    }

    std::unique_ptr<EnginePage> makeEnginePage() const {
        return std::make_unique<EnginePage>(profile ? profile : makeProfile(options));
    }

    void keepSpare() {
        if (!options.keepsSparePage || hasEnded || spare || !pages.empty()) return;
        spare = std::make_unique<SparePage>(scheduler, makeEnginePage(), [this](bool hasAnswered) {
            // Inside the engine's own call. What cannot start is tried twice, not for ever.
            left.push_back(spare->take());
            spare.reset();
            failedStarts = hasAnswered ? 0 : failedStarts + 1;
            closeLeftSoon(failedStarts < 2);
        });
    }

    void closeLeftSoon(bool keepsSpareThen) {
        scheduler.runOnMain([this, keepsSpareThen] {
            left.clear();
            if (keepsSpareThen) keepSpare();
        });
    }

    void pageLeft(QtWebPage& page, std::unique_ptr<EnginePage> enginePage) {
        std::erase(pages, &page);
        left.push_back(std::move(enginePage));
        closeLeftSoon(true);
    }

    Scheduler& scheduler;
    const QtWebEngineOptions options;
    const std::shared_ptr<EngineProfile> profile;   // none when each page has its own
    std::unique_ptr<SparePage> spare;               // only while no page is alive
    std::vector<QtWebPage*> pages;                  // alive
    std::vector<std::unique_ptr<EnginePage>> left;  // not closed yet
    int failedStarts = 0;                           // of spare processes, in a row
    bool hasEnded = false;
};

QtWebEngine::QtWebEngine(Scheduler& scheduler, const QtWebEngineOptions& options)
    : parts_(std::make_unique<Parts>(scheduler, options)) {
    parts_->keepSpare();
}

QtWebEngine::~QtWebEngine() {
    end();
}

void QtWebEngine::end() {
    parts_->hasEnded = true;
    parts_->spare.reset();
    // What was waited for goes with its page, and other pages may go with that.
    while (!parts_->pages.empty()) {
        QtWebPage* const page = parts_->pages.back();
        parts_->pages.pop_back();
        parts_->left.push_back(page->giveUpPage());
    }
    std::exchange(parts_->left, {}).clear();
}

std::unique_ptr<WebPage> QtWebEngine::makePage(const WebPageConfiguration& configuration,
                                               std::weak_ptr<WebPageDelegate> delegate) {
    const bool isSpare = parts_->spare != nullptr;
    auto enginePage = isSpare ? parts_->spare->take() : parts_->makeEnginePage();
    parts_->spare.reset();
    auto page = std::make_unique<QtWebPage>(
        std::move(enginePage), configuration, std::move(delegate), parts_->options.hungSeconds,
        [this](QtWebPage& past, std::unique_ptr<EnginePage> pastPage) {
            parts_->pageLeft(past, std::move(pastPage));
        });
    if (isSpare) page->takeOverSpare();
    parts_->pages.push_back(page.get());
    return page;
}

}  // namespace zorvik::platform::qt
