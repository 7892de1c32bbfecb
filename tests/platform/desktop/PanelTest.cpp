// A screen that waits, shows its page and asks to try again: for the keyboard, for who does not see
// it and for who needs large texts.
#include <cmath>

#include "platform/uikit/UIButton.h"
#include "platform/uikit/UILabel.h"
#include "platform/uikit/UIScrollView.h"
#include "platform/webkit/WKWebView.h"
#include "tests/platform/desktop/DesktopPortTest.h"
#include "tests/platform/desktop/ScreenReader.h"
#include "tests/support/RawServer.h"

namespace zorvik::tests {
namespace {

using testing::ElementsAre;

// Of two colours, as people see it.
double contrast(const Pixel& a, const Pixel& b) {
    const auto luminance = [](const Pixel& pixel) {
        const auto linear = [](int value) {
            const double share = value / 255.0;
            return share <= 0.03928 ? share / 12.92 : std::pow((share + 0.055) / 1.055, 2.4);
        };
        return 0.2126 * linear(pixel[0]) + 0.7152 * linear(pixel[1]) + 0.0722 * linear(pixel[2]);
    };
    const double light = std::max(luminance(a), luminance(b));
    return (light + 0.05) / (std::min(luminance(a), luminance(b)) + 0.05);
}

// Laid out as the checkout's own.
class PanelScreen : public UIViewController {
  public:
    const std::shared_ptr<UIScrollView> skeleton = makeOnMainThread<UIScrollView>();
    const std::shared_ptr<WKWebView> page =
        makeOnMainThread<WKWebView>(Rect{}, WKWebViewConfiguration{});
    const std::shared_ptr<UIView> panel = makeOnMainThread<UIView>();
    const std::shared_ptr<UILabel> label = makeOnMainThread<UILabel>();
    const std::shared_ptr<UIButton> button = makeOnMainThread<UIButton>();
    int retries = 0;

    void viewDidLoad() override {
        view()->setBackgroundColor(UIColor::white());
        for (const auto& part : {std::shared_ptr<UIView>(skeleton), std::shared_ptr<UIView>(page),
                                 std::shared_ptr<UIView>(panel)})
            pin(*part);
        auto block = makeOnMainThread<UIView>(Rect{10, 10, 100, 20});
        block->setBackgroundColor({0.9, 0.9, 0.9, 1});
        skeleton->addSubview(block);
        page->setHidden(true);
        panel->setHidden(true);
        panel->setBackgroundColor(UIColor::white());
        label->setTextAlignment(NSTextAlignment::center);
        label->setNumberOfLines(0);
        button->setTitle("Retry & more");
        button->setTarget(std::weak_ptr(std::static_pointer_cast<PanelScreen>(shared_from_this())),
                          &PanelScreen::retry);
        panel->addSubview(makeOnMainThread<UIView>(Rect{9, 9, 9, 9}));
        for (const auto& part : {std::shared_ptr<UIView>(label), std::shared_ptr<UIView>(button)}) {
            part->setTranslatesAutoresizingMaskIntoConstraints(false);
            panel->addSubview(part);
        }
        NSLayoutConstraint::activate(
            {label->centerYAnchor().constraintEqualTo(panel->centerYAnchor(), -20),
             label->leadingAnchor().constraintEqualTo(panel->leadingAnchor(), 24),
             label->trailingAnchor().constraintEqualTo(panel->trailingAnchor(), -24),
             button->topAnchor().constraintEqualTo(label->bottomAnchor(), 16),
             button->centerXAnchor().constraintEqualTo(panel->centerXAnchor())});
    }
    void showPage() {
        skeleton->setHidden(true);
        page->setHidden(false);
    }
    void ask(const std::string& text) {
        label->setText(text);
        panel->setHidden(false);
    }

  private:
    void pin(UIView& part) {
        part.setTranslatesAutoresizingMaskIntoConstraints(false);
        view()->addSubview(part.shared_from_this());
        NSLayoutConstraint::activate(
            {part.topAnchor().constraintEqualTo(view()->topAnchor()),
             part.leadingAnchor().constraintEqualTo(view()->leadingAnchor()),
             part.trailingAnchor().constraintEqualTo(view()->safeAreaLayoutGuide().trailingAnchor),
             part.bottomAnchor().constraintEqualTo(view()->safeAreaLayoutGuide().bottomAnchor)});
    }
    void retry() {
        ++retries;
        panel->setHidden(true);
    }
};

class PanelTest : public DesktopPortTest {
  protected:
    // Where there is something else than white, from a height on.
    static Rect inkOf(const Picture& shown, double from = 0) {
        int left = shown.width(), right = 0, top = shown.height(), bottom = 0;
        for (int y = static_cast<int>(from); y < shown.height(); ++y) {
            for (int x = 0; x < shown.width(); ++x) {
                if (shown.at(x, y) == Pixel{255, 255, 255}) continue;
                left = std::min(left, x), right = std::max(right, x + 1);
                top = std::min(top, y), bottom = std::max(bottom, y + 1);
            }
        }
        return Rect{double(left), double(top), double(right - left), double(bottom - top)};
    }

    const std::shared_ptr<PanelScreen> screen = makeOnMainThread<PanelScreen>();
};

TEST_F(PanelTest, AScreenReaderHearsWhatIsThereAndNothingElse) {
    show(screen);
    EXPECT_THAT(heard(window), ElementsAre("status: Loading busy"));
    screen->showPage();
    settle();
    EXPECT_THAT(heard(window), ElementsAre("page focused"));
    screen->skeleton->setHidden(false);
    screen->ask("Pay <b>later</b> & try again.");
    settle();
    EXPECT_THAT(
        heard(window),
        ElementsAre("alert: Pay <b>later</b> & try again.", "text: Pay <b>later</b> & try again.",
                    "button: Retry & more (Pay <b>later</b> & try again.) focused"));
    screen->label->setText("Once more.");
    settle();
    EXPECT_EQ(heard(window).front(), "alert: Once more.");
    screen->panel->setHidden(true);
    screen->skeleton->addSubview(screen->label);
    settle();
    EXPECT_THAT(heard(window), ElementsAre("text: Once more.", "page focused"));
}

TEST_F(PanelTest, TheKeyboardGoesToThePanelsButtonAndBackToThePage) {
    RawServer server;
    server.replyPage("/page", "<script>keys=''</script><body onkeydown='keys+=event.key'>");
    show(screen);
    screen->page->load({*URL::parse(server.address("/page"))});
    screen->showPage();
    int asked = 0;
    for (const char* key : {"Return", "KP_Enter", "space", "Tab key shift+Tab key Return"}) {
        SCOPED_TRACE(key);
        screen->ask("Something went wrong.");
        settle();
        const Picture shown = picture();
        // The ring's upper edge is somewhere above the title.
        const int x = shown.width() / 2;
        const int y = static_cast<int>(screen->button->frame().y);
        double best = 1;
        for (int above = y - 9; above < y + 6; ++above)
            best = std::max(best, contrast(shown.at(x, above), {255, 255, 255}));
        EXPECT_GE(best, 3);
        xdotool(std::string("key ") + key);
        ASSERT_TRUE(waitUntil([&] { return screen->retries == asked + 1; }));
        ++asked;
        settle();
        xdotool("key k");
    }
    std::string keys;
    screen->page->evaluateJavaScript("keys", [&](const auto& r) { keys = r.value().text; });
    EXPECT_TRUE(waitUntil([&] { return !keys.empty(); }));
    EXPECT_EQ(keys, "kkkk");

    const auto above = makeOnMainThread<UIViewController>();
    show(above);
    screen->ask("Something went wrong.");
    settle();
    xdotool("key Return key Tab key Return");
    EXPECT_EQ(screen->retries, asked) << "another screen covers it";
    dismiss(above);
    settle();
    xdotool("key Return");
    EXPECT_EQ(screen->retries, asked + 1);
}

TEST_F(PanelTest, TextsFollowTheDesktopsScaleUncutAndScrollWhereThereIsNoRoom) {
    const std::string text = "Something went wrong. Please try again.";
    show(screen);
    const Rect whole = screen->view()->frame();
    const auto beOfSize = [&](const Size& size) {
        platform->setSafeAreaInsets({0, 0, whole.height - size.height, whole.width - size.width});
        settle();
    };
    screen->ask(text);
    beOfSize({520, 400});
    const double line = screen->label->frame().height;
    const Rect small = inkOf(picture());
    setTextScale(2);
    settle();
    const Rect label = screen->label->frame();
    const Rect button = screen->button->frame();
    const Rect large = inkOf(picture());
    EXPECT_NEAR(label.height, 2 * 2 * line, 6) << "on two lines";
    EXPECT_EQ(button.y, label.y + label.height + 16);
    EXPECT_GT(large.height, 1.8 * small.height);
    EXPECT_TRUE(large.x >= label.x && large.y >= label.y) << large.x << " " << large.y;
    EXPECT_LE(large.x + large.width, label.x + label.width);
    const Rect ring = inkOf(picture(), button.y + 10);
    EXPECT_NEAR(ring.width, button.width + 32, 2);
    EXPECT_NEAR(ring.y + ring.height, button.y + button.height + 6, 1);
    const auto titleOf = [](const Picture& shown) {
        int blue = 0;
        for (int y = 0; y < shown.height(); ++y)
            for (int x = 0; x < shown.width(); ++x)
                if (shown.at(x, y) == Pixel{0, 122, 255}) ++blue;
        return blue;
    };
    const int title = titleOf(picture());
    beOfSize({320, 100});
    EXPECT_GT(titleOf(picture()), 0.9 * title) << "what has the focus is in sight";
    xdotool("key Prior");
    EXPECT_LT(titleOf(picture()), 0.5 * title) << "and so is the text, for who scrolls";
    screen->panel->setHidden(true);
    settle();
    screen->ask(text);
    settle();
    EXPECT_GT(titleOf(picture()), 0.9 * title) << "also the next time";
    beOfSize({520, 400});
    setTextScale(1);
    settle();
    EXPECT_EQ(inkOf(picture()), small);
}

}  // namespace
}  // namespace zorvik::tests
