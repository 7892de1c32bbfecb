#include "platform/uikit/UIViewController.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/headless/HeadlessPlatform.h"

namespace zorvik::platform {

using testing::ElementsAre;
using testing::IsEmpty;

using Events = std::vector<std::string>;

// Writes down its callbacks and runs a test's action in one of them.
class Screen : public UIViewController {
  public:
    Screen(std::string name, Events& events) : name_(std::move(name)), events_(events) {
        setModalPresentationStyle(UIModalPresentationStyle::fullScreen);
    }

    std::string actIn;
    std::function<void()> act;

    void viewDidLoad() override { record("loaded"); }
    void viewWillAppear(bool) override { record("will appear"); }
    void viewDidAppear(bool) override { record("did appear"); }
    void viewWillDisappear(bool) override { record("will disappear"); }
    void viewDidDisappear(bool) override { record("did disappear"); }

  private:
    void record(const std::string& what) {
        events_.push_back(name_ + " " + what + (isBeingDismissed() ? ", dismissed" : "") +
                          (isMovingFromParent() ? ", moving" : ""));
        if (what == actIn && act) act();
    }

    const std::string name_;
    Events& events_;
};

class UIViewControllerTest : public testing::Test {
  protected:
    std::shared_ptr<Screen> make(const std::string& name) {
        return makeOnMainThread<Screen>(name, events);
    }
    std::function<void()> note(const std::string& what) {
        return [this, what] { events.push_back(what); };
    }
    void finish() { platform.scheduler().advanceBy(5); }
    std::size_t shown() { return platform.stage().shown().size(); }

    Events events;
    headless::HeadlessPlatform platform;
    std::shared_ptr<UIViewController> presenter = makeOnMainThread<UIViewController>();
    std::shared_ptr<Screen> a = make("a");
    std::shared_ptr<Screen> b = make("b");
};

TEST_F(UIViewControllerTest, AScreenDismissedFromItsOwnCallbackGoesAndHearsEachCallbackOnce) {
    const struct {
        std::string callback;
        Events expected;
    } cases[] = {
        {"loaded",
         {"a loaded", "a will appear", "a will disappear, dismissed", "a did disappear, dismissed",
          "gone"}},
        {"will appear",
         {"a loaded", "a will appear", "a will disappear, dismissed", "a did disappear, dismissed",
          "gone"}},
        {"did appear",
         {"a loaded", "a will appear", "a did appear", "a will disappear, dismissed", "shown",
          "a did disappear, dismissed", "gone"}},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.callback);
        events.clear();
        a = make("a");
        a->actIn = row.callback;
        a->act = [&] {
            a->dismiss(true, note("gone"));
            a->dismiss(true, note("never"));
        };
        presenter->present(a, true, note("shown"));
        finish();
        EXPECT_EQ(events, row.expected);
        EXPECT_EQ(shown(), 0u);
        EXPECT_EQ(presenter->presentedViewController(), nullptr);
    }
}

TEST_F(UIViewControllerTest, AScreenCoveredForAMomentOnlyDoesNotDisappear) {
    presenter->present(a, true);
    finish();
    events.clear();
    b->actIn = "did appear";
    b->act = [&] { b->dismiss(true); };
    a->present(b, true);
    finish();
    EXPECT_THAT(events, ElementsAre("b loaded", "b will appear", "a will disappear", "b did appear",
                                    "b will disappear, dismissed", "a will appear",
                                    "b did disappear, dismissed", "a did appear"));
}

TEST_F(UIViewControllerTest, WhatLiesAboveGoesBeforeAScreenThatIsDismissed) {
    presenter->present(a, true);
    presenter->present(b, true);
    finish();
    EXPECT_EQ(b->presentingViewController(), a.get());
    events.clear();
    presenter->dismiss(true, note("gone"));
    finish();
    EXPECT_THAT(events,
                ElementsAre("b will disappear, dismissed", "a will appear",
                            "b did disappear, dismissed", "a did appear",
                            "a will disappear, dismissed", "a did disappear, dismissed", "gone"));
    EXPECT_EQ(shown(), 0u);
}

TEST_F(UIViewControllerTest, OneThatIsNotFullScreenCoversNothing) {
    b->setModalPresentationStyle(UIModalPresentationStyle::automatic);
    presenter->present(a, true);
    finish();
    events.clear();
    a->present(b, true);
    finish();
    b->dismiss(true);
    finish();
    EXPECT_THAT(events, ElementsAre("b loaded", "b will appear", "b did appear",
                                    "b will disappear, dismissed", "b did disappear, dismissed"));
}

TEST_F(UIViewControllerTest, PresentingWhileTheFormerScreenLeavesHappensOnceItIsGone) {
    presenter->present(a, true);
    finish();
    events.clear();
    a->dismiss(true, note("a gone"));
    presenter->present(b, true, note("b shown"));
    EXPECT_THAT(events, ElementsAre("a will disappear, dismissed"));
    finish();
    EXPECT_THAT(events,
                ElementsAre("a will disappear, dismissed", "a did disappear, dismissed", "a gone",
                            "b loaded", "b will appear", "b did appear", "b shown"));
    EXPECT_EQ(presenter->presentedViewController(), b);
}

TEST_F(UIViewControllerTest, AScreenCannotBePresentedTwice) {
    presenter->present(a, true);
    presenter->present(a, true, note("never"));
    b->present(a, true, note("never"));
    presenter->present(nullptr, true, note("never"));
    finish();
    EXPECT_THAT(events, ElementsAre("a loaded", "a will appear", "a did appear"));
    EXPECT_EQ(shown(), 1u);
}

TEST_F(UIViewControllerTest, APresenterThatGoesTakesItsScreenAlong) {
    for (const double secondsBefore : {0.0, 5.0}) {
        events.clear();
        a = make("a");
        presenter = makeOnMainThread<UIViewController>();
        presenter->present(a, true);
        platform.scheduler().advanceBy(secondsBefore);
        const std::weak_ptr<Screen> ended = a;
        a.reset();
        presenter.reset();
        finish();
        EXPECT_EQ(events.back(), "a did disappear, dismissed");
        EXPECT_TRUE(ended.expired());
        EXPECT_EQ(shown(), 0u);
    }
}

TEST_F(UIViewControllerTest, AChildAppearsWithItsParentAndMovesAwayOnRemoval) {
    a->addChild(b);
    EXPECT_THAT(events, ElementsAre("a loaded", "b loaded"));
    presenter->present(a, true);
    finish();
    EXPECT_TRUE(b->view()->isInWindow());
    events.clear();
    b->removeFromParent();
    EXPECT_THAT(events, ElementsAre("b will disappear, moving", "b did disappear, moving"));
    EXPECT_FALSE(b->isMovingFromParent());
    EXPECT_EQ(b->parent(), nullptr);
    events.clear();
    a->addChild(b);
    EXPECT_THAT(events, ElementsAre("b will appear", "b did appear"));
    events.clear();
    b->dismiss(true);
    finish();
    EXPECT_THAT(events, ElementsAre("a will disappear, dismissed", "b will disappear",
                                    "a did disappear, dismissed", "b did disappear"));
}

}  // namespace zorvik::platform
