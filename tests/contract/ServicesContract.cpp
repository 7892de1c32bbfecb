#include "platform/runtime/Timer.h"
#include "platform/runtime/UserDefaults.h"
#include "tests/contract/ContractTest.h"

namespace zorvik::contract {

class ServicesContract : public ContractTest {
  protected:
    Events& events = recorder->events;

    std::function<void()> note(const std::string& text) {
        return [this, text] { events.push_back(text); };
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
    std::size_t before = 0;
    ASSERT_TRUE(waitUntil([&] {
        EXPECT_LE(events.size() - before, 1u);
        before = events.size();
        return before == 3;
    }));
    expectEvents("outer, next, inner");
}

TEST_F(ServicesContract, DelayedTasksRunByDeadlineThenByCall) {
    const DispatchQueue queue = DispatchQueue::main();
    Timer::scheduledTimer(0.2, note("late"));
    Timer::scheduledTimer(0.05, note("early 1"));
    const auto timer = Timer::scheduledTimer(0.1, note("timer"));
    const auto held = std::make_shared<int>();
    const auto dropped = Timer::scheduledTimer(0.1, [held] { FAIL() << "it was invalidated"; });
    Timer::scheduledTimer(0.05, note("early 2"));
    queue.async(note("now"));
    dropped->invalidate();
    EXPECT_EQ(held.use_count(), 1);
    expectEvents("now, early 1, early 2, timer, late");
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
    for (int round = 0; round < 2; ++round) {
        defaults.removeObject("contract_entry");
        EXPECT_EQ(defaults.object("contract_entry"), std::nullopt);
    }
}

TEST_F(ServicesContract, AnAnimationCompletesOnceAtItsEndAndNotInsideACall) {
    showView();
    const auto ended = [&](bool finished) { events.push_back(finished ? "finished" : "ended"); };
    UIView::animate(
        0.2, [&] { view->setAlpha(0); }, ended);
    EXPECT_EQ(view->alpha(), 0);
    bool wasBetween = false;
    ASSERT_TRUE(waitUntil([&] {
        const double alpha = view->presentationAlpha();
        wasBetween = wasBetween || (alpha > 0 && alpha <= 1);
        return !events.empty();
    }));
    EXPECT_TRUE(wasBetween);
    EXPECT_EQ(view->presentationAlpha(), 0);
    UIView::animate(
        5, [&] { view->setAlpha(1); }, ended);
    view->removeAllAnimations();
    EXPECT_EQ(events.size(), 1u);
    expectEvents("finished, ended");
}

class AppearanceRecorder : public UIViewController {
  public:
    AppearanceRecorder(std::string name, std::shared_ptr<Recorder> recorder)
        : name_(std::move(name)), recorder_(std::move(recorder)) {}
    void viewDidLoad() override { record("loaded"); }
    void viewWillAppear(bool) override { record("will appear"); }
    void viewDidAppear(bool) override { record("did appear"); }
    void viewWillDisappear(bool) override { record("will disappear"); }
    void viewDidDisappear(bool) override { record("did disappear"); }

  private:
    void record(const std::string& what) {
        recorder_->events.push_back(name_ + " " + what + (isBeingDismissed() ? " dismissed" : "") +
                                    (view()->isInWindow() ? " in window" : ""));
    }

    const std::string name_;
    const std::shared_ptr<Recorder> recorder_;
};

TEST_F(ServicesContract, PresentingAndDismissingTellBothControllersInOrder) {
    const auto below = makeOnMainThread<AppearanceRecorder>("below", recorder);
    const auto above = makeOnMainThread<AppearanceRecorder>("above", recorder);
    below->setModalPresentationStyle(UIModalPresentationStyle::fullScreen);
    above->setModalPresentationStyle(UIModalPresentationStyle::fullScreen);
    port->presenter()->present(below, true, note("below presented"));
    EXPECT_EQ(joined(events), "below loaded, below will appear");
    expectEvents("below loaded, below will appear, below did appear in window, below presented");
    events.clear();
    port->presenter()->present(above, true, note("above presented"));
    expectEvents(
        "above loaded, above will appear, below will disappear in window, "
        "above did appear in window, below did disappear, above presented");
    EXPECT_EQ(above->presentingViewController(), below.get());
    events.clear();
    above->dismiss(true, note("above gone"));
    above->dismiss(true, note("never"));
    expectEvents(
        "above will disappear dismissed in window, below will appear in window, "
        "above did disappear dismissed, below did appear in window, above gone");
    EXPECT_EQ(above.use_count(), 1) << "nobody else keeps it";
}

}  // namespace zorvik::contract
