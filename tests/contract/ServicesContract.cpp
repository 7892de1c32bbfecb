#include "platform/dispatch/Timer.h"
#include "platform/uikit/UserDefaults.h"
#include "tests/contract/ContractTest.h"

namespace zorvik::contract {

using testing::ElementsAre;

class ServicesContract : public ContractTest {
  protected:
    // Shared with the controllers, which may hear of the end of the port.
    const std::shared_ptr<Events> shared = std::make_shared<Events>();
    Events& events = *shared;

    std::function<void()> note(const std::string& text) {
        return [this, text] { events.push_back(text); };
    }
    bool waitForCount(std::size_t count) {
        return port->spinUntil([&] { return events.size() >= count; }, patience);
    }
};

TEST_F(ServicesContract, MainQueueTasksRunInOrderEachInATurnOfItsOwn) {
    const DispatchQueue queue = DispatchQueue::main();
    queue.async([&] {
        queue.async(note("inner"));
        events.push_back("outer");
    });
    queue.async(note("next"));
    EXPECT_TRUE(events.empty());
    std::size_t mostInOneTurn = 0;
    std::size_t before = 0;
    ASSERT_TRUE(port->spinUntil(
        [&] {
            mostInOneTurn = std::max(mostInOneTurn, events.size() - before);
            before = events.size();
            return before == 3;
        },
        patience));
    EXPECT_THAT(events, ElementsAre("outer", "next", "inner"));
    EXPECT_EQ(mostInOneTurn, 1u);
}

TEST_F(ServicesContract, DelayedTasksRunByDeadlineThenByCall) {
    const DispatchQueue queue = DispatchQueue::main();
    queue.asyncAfter(0.2, note("late"));
    queue.asyncAfter(0.05, note("early 1"));
    const auto timer = Timer::scheduledTimer(0.1, note("timer"));
    const auto dropped = Timer::scheduledTimer(0.1, note("never"));
    queue.asyncAfter(0.05, note("early 2"));
    queue.async(note("now"));
    dropped->invalidate();
    ASSERT_TRUE(waitForCount(5));
    settle();
    EXPECT_THAT(events, ElementsAre("now", "early 1", "early 2", "timer", "late"));
    EXPECT_FALSE(timer->isValid());
}

TEST_F(ServicesContract, DefaultsGiveBackWhatWasStoredWithItsType) {
    UserDefaults& defaults = UserDefaults::standard();
    const DefaultsValue values[] = {std::string("a\0b \xF0\x9F\x92\xB3", 8),
                                    std::string(),
                                    Date{1'700'000'000.25},
                                    0.1,
                                    -3.0,
                                    true,
                                    false};
    for (const auto& value : values) {
        defaults.set(value, "contract_entry");
        EXPECT_EQ(defaults.object("contract_entry"), value) << description(value);
    }
    EXPECT_EQ(defaults.string("contract_entry"), std::nullopt) << "a boolean is no string";
    defaults.removeObject("contract_entry");
    defaults.removeObject("contract_entry");
    EXPECT_EQ(defaults.object("contract_entry"), std::nullopt);
}

TEST_F(ServicesContract, AnAnimationCompletesOnceAtItsEndAndNotInsideACall) {
    showView();
    UIView::animate(
        0.2, [&] { view->setAlpha(0); },
        [&](bool finished) { events.push_back(finished ? "finished" : "ended"); });
    EXPECT_EQ(view->alpha(), 0);
    bool wasBetween = false;
    ASSERT_TRUE(port->spinUntil(
        [&] {
            const double alpha = view->presentationAlpha();
            wasBetween = wasBetween || (alpha > 0 && alpha <= 1);
            return !events.empty();
        },
        patience));
    EXPECT_TRUE(wasBetween);
    EXPECT_EQ(view->presentationAlpha(), 0);
    UIView::animate(
        5, [&] { view->setAlpha(1); },
        [&](bool finished) { events.push_back(finished ? "finished" : "ended"); });
    view->removeAllAnimations();
    EXPECT_EQ(events.size(), 1u);
    ASSERT_TRUE(waitForCount(2));
    settle();
    EXPECT_THAT(events, ElementsAre("finished", "ended"));
}

class AppearanceRecorder : public UIViewController {
  public:
    AppearanceRecorder(std::string name, std::shared_ptr<std::vector<std::string>> events)
        : name_(std::move(name)), events_(std::move(events)) {}
    void viewDidLoad() override { record("loaded"); }
    void viewWillAppear(bool) override { record("will appear"); }
    void viewDidAppear(bool) override { record("did appear"); }
    void viewWillDisappear(bool) override { record("will disappear"); }
    void viewDidDisappear(bool) override { record("did disappear"); }

  private:
    void record(const std::string& what) {
        events_->push_back(name_ + " " + what + (isBeingDismissed() ? " dismissed" : "") +
                           (isViewLoaded() && view()->isInWindow() ? " in window" : ""));
    }

    const std::string name_;
    const std::shared_ptr<std::vector<std::string>> events_;
};

TEST_F(ServicesContract, PresentingAndDismissingTellBothControllersInOrder) {
    const auto below = makeOnMainThread<AppearanceRecorder>("below", shared);
    const auto above = makeOnMainThread<AppearanceRecorder>("above", shared);
    for (const auto& controller : {below, above}) {
        controller->setModalPresentationStyle(UIModalPresentationStyle::fullScreen);
    }
    port->presenter()->present(below, true, note("below presented"));
    EXPECT_THAT(events, ElementsAre("below loaded", "below will appear"));
    ASSERT_TRUE(waitForCount(4));
    EXPECT_THAT(events, ElementsAre("below loaded", "below will appear",
                                    "below did appear in window", "below presented"));
    events.clear();
    port->presenter()->present(above, true, note("above presented"));
    ASSERT_TRUE(waitForCount(6));
    EXPECT_THAT(events, ElementsAre("above loaded", "above will appear",
                                    "below will disappear in window", "above did appear in window",
                                    "below did disappear", "above presented"));
    EXPECT_EQ(above->presentingViewController(), below.get());
    events.clear();
    above->dismiss(true, note("above gone"));
    above->dismiss(true, note("never"));
    ASSERT_TRUE(waitForCount(5));
    EXPECT_THAT(events, ElementsAre("above will disappear dismissed in window",
                                    "below will appear in window", "above did disappear dismissed",
                                    "below did appear in window", "above gone"));
    EXPECT_EQ(above.use_count(), 1) << "nobody else keeps it";
    settle();
    EXPECT_EQ(events.size(), 5u);
}

TEST_F(ServicesContract, AScreenDismissedWhileItSlidesInGoesWithoutHavingAppeared) {
    const auto above = makeOnMainThread<AppearanceRecorder>("above", shared);
    port->presenter()->present(above, true, note("never"));
    above->dismiss(true, note("gone"));
    ASSERT_TRUE(waitForCount(5));
    settle();
    EXPECT_THAT(events, ElementsAre("above loaded", "above will appear",
                                    "above will disappear dismissed in window",
                                    "above did disappear dismissed", "gone"));
}

}  // namespace zorvik::contract
