#include <cstdlib>

#include "platform/uikit/UIButton.h"
#include "platform/uikit/UIScrollView.h"
#include "platform/webkit/WKWebView.h"
#include "tests/platform/desktop/DesktopPortTest.h"
#include "tests/support/RawServer.h"

namespace zorvik::tests {
namespace {

constexpr UIColor black{0, 0, 0, 1};
constexpr UIColor green{0, 1, 0, 1};
constexpr Pixel whitePixel{255, 255, 255};
constexpr Pixel blackPixel{0, 0, 0};
constexpr Pixel greenPixel{0, 255, 0};

struct TapCounter {
    int taps = 0;
    void tapped() { ++taps; }
};

class StageTest : public DesktopPortTest {
  protected:
    StageTest() { root.setBackgroundColor(UIColor::white()); }

    static std::shared_ptr<UIView> addBlock(UIView& parent, const Rect& frame,
                                            const UIColor& color) {
        auto block = makeOnMainThread<UIView>(frame);
        block->setBackgroundColor(color);
        parent.addSubview(block);
        return block;
    }
    void addButton(UIView& parent, const Rect& frame) {
        auto button = makeOnMainThread<UIButton>(frame);
        button->setTitle("Retry");
        button->setTarget(std::weak_ptr(counter), &TapCounter::tapped);
        parent.addSubview(button);
    }
    RawServer server;
    UIView& root = *screen->view();
    const std::shared_ptr<TapCounter> counter = std::make_shared<TapCounter>();
};

TEST_F(StageTest, EveryViewIsDrawnWhereTheLayoutPutIt) {
    const auto outer = addBlock(root, {100, 50, 200, 100}, black);
    addBlock(*outer, {150, 80, 100, 40}, green);  // reaches out of its parent, unclipped
    const auto pinned = addBlock(root, {}, green);
    pinned->setTranslatesAutoresizingMaskIntoConstraints(false);
    NSLayoutConstraint::activate(
        {pinned->leadingAnchor().constraintEqualTo(root.leadingAnchor()),
         pinned->trailingAnchor().constraintEqualTo(root.trailingAnchor()),
         pinned->bottomAnchor().constraintEqualTo(root.safeAreaLayoutGuide().bottomAnchor),
         pinned->heightAnchor().constraintEqualToConstant(20)});
    const auto scroller = makeOnMainThread<UIScrollView>(Rect{400, 200, 100, 100});
    root.addSubview(scroller);
    addBlock(*addBlock(*scroller, {0, 50, 100, 20}, black), {10, 10, 80, 200}, green);
    show(screen);
    Picture shown = picture();
    const int right = shown.width() - 1;
    const int bottom = shown.height() - 1;
    const struct {
        const char* name;
        int x, y;
        Pixel expected;
    } cases[] = {
        {"inside the block", 101, 51, blackPixel},
        {"left of it", 98, 60, whitePixel},
        {"the child outside its parent", 345, 165, greenPixel},
        {"the pinned bar's right end", right, bottom, greenPixel},
        {"above the pinned bar", right, bottom - 21, whitePixel},
        {"inside the scroller", 405, 255, blackPixel},
        {"a child's child in it", 415, 299, greenPixel},
        {"which ends with the scroller", 415, 301, whitePixel},
    };
    for (const auto& row : cases)
        EXPECT_EQ(shown.at(row.x, row.y), row.expected) << row.name;

    platform->setSafeAreaInsets({0, 0, 50, 0});
    outer->removeFromSuperview();
    settle();
    shown = picture();
    EXPECT_EQ(shown.at(right, bottom), whitePixel);
    EXPECT_EQ(shown.at(right, bottom - 51), greenPixel);
    EXPECT_EQ(shown.at(101, 51), whitePixel);
}

TEST_F(StageTest, OpacityOnTheScreenFollowsTheAnimationAndThenNothingWakesUp) {
    const auto block = addBlock(root, {100, 50, 200, 100}, black);
    show(screen);
    bool isEnded = false;
    UIView::animate(
        2, [&] { block->setAlpha(0.2); }, [&](bool) { isEnded = true; });
    int seenBetween = 0;
    while (!isEnded) {
        settle(0.1);
        const double shown = 1 - picture().at(200, 100)[0] / 255.0;
        EXPECT_NEAR(shown, block->presentationAlpha(), 0.25);
        if (shown > 0.3 && shown < 0.9) ++seenBetween;
    }
    EXPECT_GE(seenBetween, 2);
    EXPECT_TRUE(askUntil([&] { return std::abs(picture().at(200, 100)[0] - 204) <= 2; }));
    const auto before = platform->wakeUps();
    settle();
    EXPECT_EQ(platform->wakeUps(), before);
}

TEST_F(StageTest, AButtonAnswersTheMouseAroundItsTitleAndTheKeyboard) {
    const auto panel = addBlock(root, {100, 50, 200, 200}, black);
    addButton(*panel, {100, 50, 45, 30});
    show(screen);
    click(222, 115);
    EXPECT_EQ(counter->taps, 1);
    click(222, 95);  // a little above the frame, where a finger would still mean it
    EXPECT_EQ(counter->taps, 2);
    click(222, 160);
    EXPECT_EQ(counter->taps, 2);
    xdotool("key Tab key shift+Tab sleep 0.1 key space");
    EXPECT_EQ(counter->taps, 3);
}

TEST_F(StageTest, OnlyTheTopmostScreenTakesInput) {
    addButton(root, {200, 100, 100, 40});
    show(screen);
    const auto above = makeOnMainThread<UIViewController>();
    show(above);
    click(250, 120);
    for (int round = 0; round < 3; ++round)
        xdotool("key Tab sleep 0.1 key space");
    EXPECT_EQ(counter->taps, 0);
    dismiss(above);
    click(250, 120);
    EXPECT_EQ(counter->taps, 1);
}

TEST_F(StageTest, AHiddenPageRunsUnseenAtFullSpeedInItsFinalSize) {
    // A page out of sight gets one tick a second.
    server.replyPage("/page",
                     "<body style='background: #00f'><script>let ticks = 0, twenty;"
                     "setInterval(() => { if (++ticks == 20) twenty = performance.now() }, 10)"
                     "</script>");
    addBlock(root, {0, 300, 200, 300}, green);
    const auto page = makeOnMainThread<WKWebView>(Rect{0, 300, 400, 300}, WKWebViewConfiguration{});
    root.addSubview(page);
    page->load({*URL::parse(server.address("/page"))});
    page->setHidden(true);
    show(screen);
    std::string text;
    EXPECT_TRUE(askUntil([&] {
        page->evaluateJavaScript(
            "[twenty < 5000, innerWidth, innerHeight, document.visibilityState].join(' ')",
            [&](const auto& result) { text = result ? result.value().text : "error"; });
        return text.starts_with("true");
    })) << text;
    EXPECT_EQ(picture().at(100, 500), greenPixel);
    EXPECT_EQ(picture().at(300, 500), whitePixel);
    page->setHidden(false);
    page->setAlpha(0.5);
    EXPECT_TRUE(askUntil([&] {
        const Pixel half = picture().at(300, 500);
        return std::abs(half[0] - 128) <= 2 && half[2] == 255;
    }));
    page->setAlpha(1);
    EXPECT_TRUE(askUntil([&] { return picture().at(100, 500) == (Pixel{0, 0, 255}); }));
    EXPECT_EQ(text, "true 400 300 visible");
}

}  // namespace
}  // namespace zorvik::tests
