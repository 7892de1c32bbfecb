#include "platform/uikit/UIViewController.h"

#include <gtest/gtest.h>

#include "platform/headless/HeadlessPlatform.h"

namespace zorvik::platform {

// Writes down its callbacks, "!" when dismissed and "~" when moving away, and acts in one.
class Screen : public UIViewController {
  public:
    Screen(std::string name, std::string& log) : name_(std::move(name)), log_(log) {
        setModalPresentationStyle(UIModalPresentationStyle::fullScreen);
    }

    std::string actIn;
    std::function<void()> act;

    void viewDidLoad() override { record("loaded"); }
    void viewWillAppear(bool) override { record("appears"); }
    void viewDidAppear(bool) override { record("appeared"); }
    void viewWillDisappear(bool) override { record("leaves"); }
    void viewDidDisappear(bool) override { record("left"); }

  private:
    void record(const std::string& what) {
        log_ += name_ + what + (isBeingDismissed() ? "!" : isMovingFromParent() ? "~" : "") + " ";
        if (what == actIn && act) act();
    }

    const std::string name_;
    std::string& log_;
};

class UIViewControllerTest : public testing::Test {
  protected:
    std::function<void()> note(const std::string& what) {
        return [this, what] { log += what + " "; };
    }
    // What was written since the last call.
    std::string settled() {
        platform.scheduler().advanceBy(5);
        return std::exchange(log, {});
    }

    std::string log;
    headless::HeadlessPlatform platform;
    std::shared_ptr<UIViewController> presenter = makeOnMainThread<UIViewController>();
    std::shared_ptr<Screen> a = makeOnMainThread<Screen>("a.", log);
    std::shared_ptr<Screen> b = makeOnMainThread<Screen>("b.", log);
};

TEST_F(UIViewControllerTest, AScreenDismissedTwiceFromItsOwnCallbackHearsEachCallbackOnce) {
    a->act = [&] {
        a->dismiss(true, note("gone"));
        a->dismiss(true, note("never"));
    };
    a->actIn = "loaded";
    presenter->present(a, true, note("shown"));
    EXPECT_EQ(settled(), "a.loaded a.appears a.leaves! a.left! gone ");
    a->actIn = "appeared";
    presenter->present(a, true, note("shown"));
    EXPECT_EQ(settled(), "a.appears a.appeared a.leaves! shown a.left! gone ");
}

TEST_F(UIViewControllerTest, APresenterThatGoesTakesItsScreenAlong) {
    for (const double secondsBefore : {0.0, 5.0}) {
        presenter = makeOnMainThread<UIViewController>();
        auto screen = makeOnMainThread<Screen>("", log);
        const std::weak_ptr<Screen> ended = screen;
        presenter->present(std::move(screen), true);
        platform.scheduler().advanceBy(secondsBefore);
        presenter.reset();
        EXPECT_TRUE(settled().ends_with(" left! "));
        EXPECT_TRUE(ended.expired());
        EXPECT_TRUE(platform.stage().shown().empty());
    }
}

TEST_F(UIViewControllerTest, AChildAppearsWithItsParentAndMovesAwayOnRemoval) {
    a->addChild(b);
    presenter->present(a, true);
    EXPECT_EQ(settled(), "a.loaded b.loaded a.appears b.appears a.appeared b.appeared ");
    b->removeFromParent();
    a->addChild(b);
    EXPECT_EQ(settled(), "b.leaves~ b.left~ b.appears b.appeared ");
    b->dismiss(true);
    EXPECT_EQ(settled(), "a.leaves! b.leaves a.left! b.left ");
}

}  // namespace zorvik::platform
