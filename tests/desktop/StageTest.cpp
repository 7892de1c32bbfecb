#include "platform/services/Environment.h"
#include "platform/uikit/UIActivityIndicatorView.h"
#include "platform/uikit/UIButton.h"
#include "platform/uikit/UILabel.h"
#include "platform/uikit/UIScrollView.h"
#include "platform/webkit/WKWebView.h"
#include "tests/desktop/DesktopTest.h"
#include "tests/support/RawServer.h"

namespace zorvik::tests {
namespace {

using testing::ElementsAre;
using Pixel = std::array<int, 3>;

constexpr UIColor black{0, 0, 0, 1};
constexpr UIColor green{0, 1, 0, 1};
constexpr Pixel whitePixel{255, 255, 255};
constexpr Pixel blackPixel{0, 0, 0};
constexpr Pixel greenPixel{0, 255, 0};

struct TapCounter {
    int taps = 0;
    void tapped() { ++taps; }
};

class StageTest : public DesktopTest {
  protected:
    StageTest() { screen->view()->setBackgroundColor(UIColor::white()); }

    static std::shared_ptr<UIView> addBlock(UIView& parent, const Rect& frame,
                                            const UIColor& color) {
        auto block = makeOnMainThread<UIView>(frame);
        block->setBackgroundColor(color);
        parent.addSubview(block);
        return block;
    }
    static std::shared_ptr<UIButton> addButton(UIView& parent, const Rect& frame,
                                               const std::shared_ptr<TapCounter>& counter) {
        auto button = makeOnMainThread<UIButton>(frame);
        button->setTitle("Retry");
        button->setTarget(std::weak_ptr(counter), &TapCounter::tapped);
        parent.addSubview(button);
        return button;
    }
    static std::shared_ptr<WKWebView> addPage(UIView& parent, const std::string& address) {
        auto page = makeOnMainThread<WKWebView>(Rect{0, 300, 400, 300}, WKWebViewConfiguration{});
        parent.addSubview(page);
        page->load({*URL::parse(address)});
        return page;
    }
    std::string evaluate(WKWebView& page, const std::string& script) {
        std::string text;
        page.evaluateJavaScript(script, [&](const auto& result) {
            text = result ? result.value().text : result.error().localizedDescription;
        });
        EXPECT_TRUE(waitUntil([&] { return !text.empty(); }));
        return text;
    }

    RawServer server;
};

TEST_F(StageTest, EveryViewIsDrawnWhereTheLayoutPutIt) {
    auto& root = *screen->view();
    const auto outer = addBlock(root, {100, 50, 200, 100}, black);
    addBlock(*outer, {150, 80, 100, 40}, green);  // reaches out of its parent, unclipped
    const auto round = addBlock(root, {350, 50, 40, 40}, black);
    round->setCornerRadius(20);
    const auto pinned = makeOnMainThread<UIView>();
    pinned->setTranslatesAutoresizingMaskIntoConstraints(false);
    pinned->setBackgroundColor(green);
    root.addSubview(pinned);
    NSLayoutConstraint::activate(
        {pinned->leadingAnchor().constraintEqualTo(root.leadingAnchor()),
         pinned->trailingAnchor().constraintEqualTo(root.trailingAnchor()),
         pinned->bottomAnchor().constraintEqualTo(root.safeAreaLayoutGuide().bottomAnchor),
         pinned->heightAnchor().constraintEqualToConstant(20)});
    show(screen);

    Picture shown = picture();
    const double right = shown.width() - 1;
    const double bottom = shown.height() - 1;
    EXPECT_EQ(root.frame(), (Rect{0, 0, right + 1, bottom + 1})) << "the window's whole area";
    const struct {
        const char* name;
        double x, y;
        Pixel expected;
    } cases[] = {
        {"inside the block", 101, 51, blackPixel},
        {"left of it", 98, 60, whitePixel},
        {"below it", 150, 151, whitePixel},
        {"the child", 255, 135, greenPixel},
        {"the child outside its parent", 345, 165, greenPixel},
        {"the middle of the disc", 370, 70, blackPixel},
        {"the corner of the disc", 352, 52, whitePixel},
        {"the pinned bar's right end", right, bottom, greenPixel},
        {"above the pinned bar", right, bottom - 21, whitePixel},
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

TEST_F(StageTest, OpacityOnTheScreenFollowsTheAnimation) {
    const auto block = addBlock(*screen->view(), {100, 50, 200, 100}, black);
    show(screen);
    bool isEnded = false;
    UIView::animate(
        1, [&] { block->setAlpha(0.2); }, [&](bool) { isEnded = true; });
    int seenBetween = 0;
    while (!isEnded) {
        settle(0.1);
        const double shown = 1 - picture().at(200, 100)[0] / 255.0;
        EXPECT_NEAR(shown, block->presentationAlpha(), 0.25);
        if (shown > 0.3 && shown < 0.9) ++seenBetween;
    }
    EXPECT_GE(seenBetween, 2);
    settle();
    EXPECT_NEAR(picture().at(200, 100)[0], 204, 2);
}

TEST_F(StageTest, AHiddenViewIsNeitherDrawnNorTouched) {
    const auto counter = std::make_shared<TapCounter>();
    const auto panel = addBlock(*screen->view(), {100, 50, 200, 200}, black);
    addButton(*panel, {50, 50, 100, 40}, counter);
    panel->setHidden(true);
    show(screen);
    EXPECT_EQ(picture().at(110, 60), whitePixel);
    click(200, 120);
    EXPECT_EQ(counter->taps, 0);
    panel->setHidden(false);
    settle();
    EXPECT_EQ(picture().at(110, 60), blackPixel);
    click(200, 120);
    EXPECT_EQ(counter->taps, 1);
}

TEST_F(StageTest, AButtonAnswersTheMouseAroundItsTitleAndTheKeyboard) {
    const auto counter = std::make_shared<TapCounter>();
    const auto button = addButton(*screen->view(), {200, 100, 45, 30}, counter);
    addButton(*screen->view(), {20, 300, 100, 40}, std::make_shared<TapCounter>());
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
    const auto below = std::make_shared<TapCounter>();
    addButton(*screen->view(), {200, 100, 100, 40}, below);
    show(screen);
    const auto above = makeOnMainThread<UIViewController>();
    above->view()->setBackgroundColor(UIColor::white());
    show(above);
    click(250, 120);
    for (int round = 0; round < 3; ++round)
        xdotool("key Tab sleep 0.1 key space");
    EXPECT_EQ(below->taps, 0);
    bool isGone = false;
    above->dismiss(true, [&] { isGone = true; });
    ASSERT_TRUE(waitUntil([&] { return isGone; }));
    click(250, 120);
    EXPECT_EQ(below->taps, 1);
}

TEST_F(StageTest, AScreenSlidesInFromBelowAndOutAgain) {
    screen->view()->setBackgroundColor(green);
    settle();
    bool isShown = false;
    presenter->present(screen, true, [&] { isShown = true; });
    int seenHalfWay = 0;
    while (!isShown) {
        settle(0.03);
        const Picture shown = picture();
        if (shown.at(10, 10) != greenPixel && shown.at(10, shown.height() - 5) == greenPixel) {
            ++seenHalfWay;
        }
    }
    EXPECT_GE(seenHalfWay, 1);
    settle();
    EXPECT_EQ(picture().at(10, 10), greenPixel);
    bool isGone = false;
    screen->dismiss(true, [&] { isGone = true; });
    ASSERT_TRUE(waitUntil([&] { return isGone; }));
    settle();
    const Picture shown = picture();
    EXPECT_NE(shown.at(10, shown.height() - 5), greenPixel);
}

TEST_F(StageTest, TextIsDrawnWholeInTheSizeItWasMeasuredAt) {
    const auto label = makeOnMainThread<UILabel>();
    label->setTranslatesAutoresizingMaskIntoConstraints(false);
    label->setText(
        "Network connection issue. Please check your internet connection and try again.");
    label->setNumberOfLines(0);
    label->setTextAlignment(NSTextAlignment::center);
    auto& root = *screen->view();
    root.addSubview(label);
    NSLayoutConstraint::activate(
        {label->leadingAnchor().constraintEqualTo(root.leadingAnchor(), 100),
         label->widthAnchor().constraintEqualToConstant(260),
         label->topAnchor().constraintEqualTo(root.topAnchor(), 100)});
    show(screen);
    const Rect frame = label->frame();
    Stage& stage = Environment::stage();
    const double lineHeight = stage.measureText("x", UILabel::fontSize, 0).height;
    EXPECT_GE(frame.height, 3 * lineHeight);
    const Picture shown = picture();
    const int inside = shown.darkPixels(frame.x, frame.y, frame.width, frame.height);
    const int around = shown.darkPixels(0, 0, shown.width(), frame.y + frame.height + 60);
    EXPECT_EQ(inside, around);
    const double lastLine = frame.y + frame.height - lineHeight;
    EXPECT_GT(shown.darkPixels(frame.x, lastLine, frame.width, lineHeight), 20) << "not cut off";
    EXPECT_EQ(stage.measureText("", UILabel::fontSize, 0).width, 0);
    EXPECT_GT(stage.measureText("\xFF broken", UILabel::fontSize, 0).width, 0);
}

TEST_F(StageTest, AScrollViewShowsContentLargerThanItself) {
    const auto scroll = makeOnMainThread<UIScrollView>(Rect{0, 0, 300, 200});
    scroll->setShowsVerticalScrollIndicator(false);
    scroll->setShowsHorizontalScrollIndicator(false);
    screen->view()->addSubview(scroll);
    const auto content = makeOnMainThread<UIView>();
    content->setTranslatesAutoresizingMaskIntoConstraints(false);
    scroll->addSubview(content);
    NSLayoutConstraint::activate(
        {content->topAnchor().constraintEqualTo(scroll->topAnchor()),
         content->leadingAnchor().constraintEqualTo(scroll->leadingAnchor()),
         content->trailingAnchor().constraintEqualTo(scroll->trailingAnchor()),
         content->bottomAnchor().constraintEqualTo(scroll->bottomAnchor()),
         content->widthAnchor().constraintEqualTo(scroll->widthAnchor()),
         content->heightAnchor().constraintEqualToConstant(500)});
    addBlock(*content, {0, 0, 300, 100}, black);
    addBlock(*content, {0, 400, 300, 100}, green);
    show(screen);
    EXPECT_EQ(picture().at(150, 50), blackPixel);
    EXPECT_EQ(picture().at(150, 220), whitePixel) << "clipped to the visible part";
    xdotool("mousemove 150 100 click --repeat 40 5");
    settle(1);
    EXPECT_EQ(picture().at(150, 150), greenPixel);
}

TEST_F(StageTest, AHiddenPageRunsAtFullSpeedInItsFinalSize) {
    server.replyPage("/page", "<script>let ticks = 0; setInterval(() => { ++ticks }, 10)</script>");
    const auto page = addPage(*screen->view(), server.address("/page"));
    page->setHidden(true);
    show(screen);
    ASSERT_TRUE(waitUntil([&] { return page->url().has_value(); }));
    settle(1);
    EXPECT_GT(std::stoi(evaluate(*page, "ticks")), 40) << "a page out of sight gets one a second";
    EXPECT_EQ(evaluate(*page, "innerWidth + 'x' + innerHeight"), "400x300");
    EXPECT_EQ(evaluate(*page, "document.visibilityState"), "visible");
}

TEST_F(StageTest, PicturesHoldWhatThePageShows) {
    server.replyPage("/page", "<style>html { background: rgb(0, 255, 0) }</style>");
    const auto page = addPage(*screen->view(), server.address("/page"));
    show(screen);
    EXPECT_TRUE(waitUntil([&] { return picture().at(200, 450) == greenPixel; }));
    EXPECT_EQ(picture().at(200, 290), whitePixel);
    page->setAlpha(0);
    settle();
    EXPECT_EQ(picture().at(200, 450), whitePixel);
    EXPECT_FALSE(platform->savePng(window, "/no/such/folder/picture.png"));
    EXPECT_FALSE(platform->savePng(nullptr, "/tmp/never.png"));
}

TEST_F(StageTest, AWindowMayGoBeforeWhatItShows) {
    const auto other = platform->openWindow("other", {300, 300});
    const auto otherPresenter = platform->presenterFor(other);
    EXPECT_EQ(platform->presenterFor(other), otherPresenter);
    bool isGone = false;
    otherPresenter->present(screen, true);
    settle(0.1);
    platform->closeWindow(other);
    settle(0.1);
    screen->dismiss(true, [&] { isGone = true; });
    EXPECT_TRUE(waitUntil([&] { return isGone; }));
    const auto late = makeOnMainThread<UIViewController>();
    bool isShown = false;
    otherPresenter->present(late, false, [&] { isShown = true; });
    EXPECT_TRUE(waitUntil([&] { return isShown; })) << "without a window, but not for ever";
}

}  // namespace
}  // namespace zorvik::tests
