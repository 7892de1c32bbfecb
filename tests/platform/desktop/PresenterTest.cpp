// A window of the host's, the presenter it owns and the screens presented there.
#include "platform/webkit/WKWebView.h"
#include "tests/platform/desktop/DesktopPortTest.h"
#include "tests/support/RawServer.h"

namespace zorvik::tests {
namespace {

// Writes down its callbacks, "!" when dismissed, and acts in one.
class RecordedScreen : public UIViewController {
  public:
    RecordedScreen(std::string name, std::shared_ptr<std::string> log)
        : name_(std::move(name)), log_(std::move(log)) {
        setModalPresentationStyle(UIModalPresentationStyle::fullScreen);
    }
    ~RecordedScreen() override { *log_ += name_ + "ended "; }

    std::string actIn;
    std::function<void()> act;

    void viewDidLoad() override { view()->setBackgroundColor({0, 1, 0, 1}); }
    void viewWillAppear(bool) override { record("appears"); }
    void viewDidAppear(bool) override { record("appeared"); }
    void viewWillDisappear(bool) override { record("leaves"); }
    void viewDidDisappear(bool) override { record("left"); }

  private:
    void record(const std::string& what) {
        *log_ += name_ + what + (isBeingDismissed() ? "! " : " ");
        if (what == actIn && act) act();
    }

    const std::string name_;
    const std::shared_ptr<std::string> log_;
};

class PresenterTest : public DesktopPortTest {
  protected:
    std::shared_ptr<RecordedScreen> makeScreen(const std::string& name) {
        return makeOnMainThread<RecordedScreen>(name, history);
    }
    static std::string told(const std::function<void()>& act) {
        testing::internal::CaptureStderr();
        act();
        return testing::internal::GetCapturedStderr();
    }
    bool hasEnded(const std::string& name) const {
        return log.find(name + "ended ") != std::string::npos;
    }

    const std::shared_ptr<std::string> history = std::make_shared<std::string>();
    std::string& log = *history;
};

TEST_F(PresenterTest, AWindowThatIsClosedTakesItsScreensAlongTopmostFirst) {
    HostWindow plain;
    presentWindow(plain.get());
    const auto kept = platform->presenterFor(plain.get());
    auto a = makeScreen("a.");
    auto b = makeScreen("b.");
    bool isShown = false;
    kept->present(a, false);
    a->present(b, false, [&] { isShown = true; });
    ASSERT_TRUE(waitUntil([&] { return isShown; }));
    a.reset();
    b.reset();
    log.clear();
    plain.destroy();
    EXPECT_EQ(log, "b.leaves! a.appears ") << "at once";
    EXPECT_TRUE(waitUntil([&] { return hasEnded("a."); }));
    EXPECT_EQ(log, "b.leaves! a.appears b.left! a.appeared a.leaves! b.ended a.left! a.ended ");
    EXPECT_EQ(kept->presentedViewController(), nullptr);
    EXPECT_TRUE(plain.isReleased()) << "the port holds it no longer";
}

TEST_F(PresenterTest, WheneverTheWindowGoesTheScreenHearsOfItOnceAndIsReleased) {
    const struct {
        const char* moment;  // a callback of the screen's, or none
        bool isLeaving;
        const char* heard;
    } cases[] = {
        {"appears", false, "appears leaves! left! ended "},
        {"", false, "appears leaves! left! ended "},  // half-way in
        {"appeared", false, "appears appeared leaves! left! ended "},
        {"", false, "appears appeared leaves! left! ended "},
        {"leaves", true, "appears appeared leaves! left! ended "},
        {"", true, "appears appeared leaves! left! ended "},  // half-way out
        {"left", true, "appears appeared leaves! left! ended "},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(std::string(row.heard) + "closed in " + row.moment);
        log.clear();
        Window* shown = platform->openWindow("shop", {300, 300});
        const auto close = [&] {
            if (shown != nullptr) platform->closeWindow(std::exchange(shown, nullptr));
        };
        const auto kept = platform->presenterFor(shown);
        auto only = makeScreen("");
        only->actIn = row.moment;
        only->act = close;
        const std::string refused = told([&] {
            kept->present(only, true);
            const std::weak_ptr<UIViewController> weak = std::exchange(only, nullptr);
            const std::string appeared = "appears appeared ";
            if (std::string(row.heard).starts_with(appeared)) {
                EXPECT_TRUE(waitUntil([&] { return log.starts_with(appeared); }));
            } else {
                settle(0.1);
            }
            if (row.isLeaving) weak.lock()->dismiss(true);
            if (*row.moment == '\0') close();
            EXPECT_TRUE(waitUntil([&] { return hasEnded(""); }));
        });
        EXPECT_EQ(log, row.heard);
        EXPECT_EQ(refused.find("zorvik") != std::string::npos,
                  row.moment == std::string_view("appears"));
        EXPECT_EQ(kept->presentedViewController(), nullptr);
    }
}

struct ClosingDelegate : WKNavigationDelegate {
    std::function<void()> close;
    bool isLate = false;
    void webViewDecidePolicyFor(WKWebView&, const WKNavigationAction&,
                                const DecisionHandler& decide) override {
        if (!isLate) close();
        decide(WKNavigationActionPolicy::allow);
    }
    void webViewDidStartProvisionalNavigation(WKWebView&) override {}
    void webViewDidCommit(WKWebView&) override {}
    void webViewDidFinish(WKWebView&) override { close(); }
    void webViewDidFail(WKWebView&, const Error&) override {}
    void webViewDidFailProvisionalNavigation(WKWebView&, const Error&) override {}
};

TEST_F(PresenterTest, AWindowMayGoInsideAReportOfThePageItShows) {
    RawServer server;
    server.replyPage("/page", "page");
    for (const bool isLate : {false, true}) {
        log.clear();
        Window* const shop = platform->openWindow("shop", {300, 300});
        const auto delegate = std::make_shared<ClosingDelegate>();
        delegate->close = [&] { platform->closeWindow(shop); };
        delegate->isLate = isLate;
        auto only = makeScreen("");
        auto page = makeOnMainThread<WKWebView>(Rect{0, 0, 300, 300}, WKWebViewConfiguration{});
        only->view()->addSubview(page);
        page->setNavigationDelegate(delegate);
        platform->presenterFor(shop)->present(std::exchange(only, nullptr), false);
        EXPECT_TRUE(waitUntil([&] { return log == "appears appeared "; }));
        page->load({*URL::parse(server.address("/page"))});
        page.reset();
        EXPECT_TRUE(waitUntil([&] { return hasEnded(""); }));
        EXPECT_EQ(log, "appears appeared leaves! left! ended ");
        settle();
    }
}

TEST_F(PresenterTest, AWindowThatOnlyHidesKeepsItsScreen) {
    show(makeScreen(""));
    closeByCustomer(window);  // which hides it
    settle();
    EXPECT_EQ(log, "appears appeared ");
    presentWindow(window);
    settle();
    EXPECT_EQ(picture().at(300, 400), (Pixel{0, 255, 0}));
    EXPECT_NE(presenter->presentedViewController(), nullptr);
}

TEST_F(PresenterTest, WithoutAWindowAPresentationIsRefusedAndTheScreenTornDown) {
    platform->closeWindow(window);
    for (const auto& nowhere : {presenter, makeOnMainThread<UIViewController>()}) {
        log.clear();
        EXPECT_EQ(told([&] { nowhere->present(makeScreen(""), true); }),
                  "zorvik: a screen is presented from a controller that is in no window: it is "
                  "dismissed at once\n");
        EXPECT_EQ(log, "appears leaves! ");
        EXPECT_TRUE(waitUntil([&] { return hasEnded(""); }));
        EXPECT_EQ(log, "appears leaves! left! ended ");
        EXPECT_EQ(nowhere->presentedViewController(), nullptr);
    }
}

TEST_F(PresenterTest, AWindowOwnsItsPresenter) {
    Window* const shop = platform->openWindow("shop", {300, 300});
    const std::weak_ptr<UIViewController> owned = platform->presenterFor(shop);
    ASSERT_FALSE(owned.expired());
    platform->presenterFor(shop)->present(makeScreen(""), false);
    settle();
    EXPECT_EQ(log, "appears appeared ");
    EXPECT_EQ(platform->presenterFor(shop), owned.lock());
    EXPECT_NE(platform->presenterFor(window), owned.lock());
    platform->closeWindow(shop);
    EXPECT_TRUE(waitUntil([&] { return hasEnded(""); }));
    EXPECT_TRUE(owned.expired());
}

TEST(PresenterAtTheEndTest, APlatformThatGoesLetsGoOfAWindowThatStays) {
    const auto history = std::make_shared<std::string>();
    std::string& log = *history;
    std::optional<HostWindow> stays;
    for (const std::string name : {"first.", "second."}) {
        const auto platform = Platform::make({.applicationId = "zorvik-test"});
        if (!stays) stays.emplace();
        presentWindow(stays->get());
        log.clear();
        platform->presenterFor(stays->get())
            ->present(makeOnMainThread<RecordedScreen>(name, history), false);
        const std::string shown = name + "appears " + name + "appeared ";
        EXPECT_TRUE(platform->runUntil([&] { return log == shown; }, 10)) << log;
        const std::string path = std::string(std::getenv("XDG_CACHE_HOME")) + "/stays.png";
        const auto isDrawn = [&] {
            return platform->savePng(stays->get(), path) &&
                   Picture(path).at(50, 50) == (Pixel{0, 255, 0});
        };
        EXPECT_TRUE(platform->runUntil(isDrawn, 10));
    }
    EXPECT_TRUE(log.ends_with("second.ended ")) << log;
    stays->destroy();
}

}  // namespace
}  // namespace zorvik::tests
