#include "testkit/story/StoryPlayer.h"

#include <algorithm>
#include <utility>

#include "platform/foundation/Console.h"

namespace zorvik::testkit {

using platform::headless::HeadlessPlatform;
using platform::headless::HeadlessScheduler;
using platform::headless::HeadlessStage;
using platform::headless::ScriptedWebEngine;

namespace {

constexpr std::array recordKeys{"current_transaction_id", "current_package_name",
                                "transaction_start_time"};
constexpr std::array turnCounts{1, 2, 3, 7};
constexpr std::array passingSeconds{0.1, 0.35, 1.0, 4.5, 5.5, 61.0};

ScriptedCoreServices& core() {
    return ScriptedCoreServices::instance();
}

}  // namespace

StoryPlayer::StoryPlayer(const Script& script, const MakeDelegate& makeDelegate)
    : makeDelegate_(makeDelegate), usesThread_(std::ranges::any_of(script, [](const Step& step) {
          return step.kind == Step::Kind::backgroundThread;
      })) {
    story_.script = script;
    core().clear();
    core().onCall([this](const CoreCall& call) { called(call); });
    core().onAnswer([this](const CoreCall& call) { answered(call); });
    core().onEvent([this](const Event& event) { heardEvent(event); });
    platform::setConsoleSink([this](std::string_view line) { heardLine(line); });
    ZorvikCheckoutSDK::reset();
    makePlatform();
}

StoryPlayer::~StoryPlayer() {
    heldScreen_.reset();
    core().clear();
    ZorvikCheckoutSDK::reset();
    platform_.reset();
    platform::setConsoleSink({});
}

void StoryPlayer::play(const Look& look) {
    changeDelegate(0);
    for (const Step& step : story_.script) {
        perform(step);
        takeStock();
        if (!lookWhenIdle(look)) return;
    }
    end(look);
}

bool StoryPlayer::lookWhenIdle(const Look& look) {
    if (platform_ && platform_->scheduler().nextDelay() == 0) return true;
    excuseWhatCannotCome();
    return look(story_, Story::Moment::idle);
}

void StoryPlayer::perform(const Step& step) {
    using Kind = Step::Kind;
    const unsigned way = step.way;
    // Without a platform a host can still let go of what it has, and the core services answer.
    const bool isHosts = step.kind == Kind::delegate || step.kind == Kind::host ||
                         step.kind == Kind::coreAnswer || step.kind == Kind::platform;
    if (!platform_ && !isHosts) return;
    switch (step.kind) {
        case Kind::backgroundThread:
            return;
        case Kind::turns:
            return runTurns(way);
        case Kind::background:
            return runBackground(way);
        case Kind::time:
            if (way < passingSeconds.size()) return passSeconds(passingSeconds.at(way));
            return platform_->scheduler().moveBy(1);
        case Kind::coreTiming:
            return core().setTiming(static_cast<ScriptedCoreServices::Timing>(way));
        case Kind::coreResult:
            coreWay_ = way;
            return;
        case Kind::coreAnswer:
            return giveAnswer(way);
        case Kind::loads:
            loadsWay_ = way;
            return;
        case Kind::look:
            looksAtOldest_ = way == 1;
            return;
        case Kind::navigate:
            if (Page* const shown = page()) go(*shown, addressFor(way, checkoutOf(*shown)));
            return;
        case Kind::pushState:
            return pushState(way);
        case Kind::subframe:
            return goInSubframe(way);
        case Kind::post:
            return post(way);
        case Kind::panel:
            if (Page* const shown = page())
                shown->showPanel({static_cast<platform::ScriptPanel::Kind>(way), "?", "!"});
            return;
        case Kind::processDies:
            excuseScripts();
            if (Page* const shown = page()) shown->killWebProcess();
            return;
        case Kind::scripts:
            scriptsWay_ = way;
            return platform_->web().setAnswers(way == 2 ? ScriptedWebEngine::Answers::waiting
                                                        : ScriptedWebEngine::Answers::given);
        case Kind::scriptAnswer:
            platform_->web().giveAnswer(way == 0 || platform_->web().waitingAnswers() == 0
                                            ? 0
                                            : platform_->web().waitingAnswers() - 1);
            return;
        case Kind::activate:
            return customerComesBack();
        case Kind::upiApp:
            return changeApp(way);
        case Kind::checkout:
            return startCheckout(way);
        case Kind::delegate:
            return changeDelegate(way);
        case Kind::reaction:
            reaction_ = way;
            return;
        case Kind::back:
            return pressBack(way);
        case Kind::dismiss:
            return dismiss(way == 0);
        case Kind::window:
            return closeWindow(way);
        case Kind::host:
            return doAsHost(way);
        case Kind::retry:
            return pressRetry();
        case Kind::platform:
            return way == 0 ? endPlatform() : restartAsAnotherProcess();
    }
}

std::size_t StoryPlayer::turn() const {
    return formerTurns_ + (platform_ ? platform_->scheduler().turnCount() : 0);
}

bool StoryPlayer::runTurn() {
    constexpr auto activeLine = "[APP STATE] 🚀 App became active - user returned from UPI app!";
    const auto standing = static_cast<std::size_t>(
        std::ranges::count_if(story_.checkouts, [](const auto& one) { return one.stands(); }));
    const std::size_t before = story_.lineCount(activeLine);
    if (!platform_->scheduler().runOneTurn()) return false;
    if (story_.lineCount(activeLine) > before + standing)
        story_.unexplained.push_back("more screens heard of a return than there are");
    takeStock();
    return true;
}

void StoryPlayer::runUntilIdle() {
    while (runTurn()) {
    }
}

void StoryPlayer::runTurns(unsigned way) {
    if (way >= turnCounts.size()) return runUntilIdle();
    for (int left = turnCounts.at(way); left > 0; --left)
        runTurn();
}

void StoryPlayer::runBackground(unsigned way) {
    auto& scheduler = platform_->scheduler();
    const std::size_t count = scheduler.backgroundCount();
    if (way == 3) return runAllBackground();
    if (count > 0) scheduler.runOneBackgroundTask(way == 2 ? count - 1 : way);
}

void StoryPlayer::runAllBackground() {
    while (platform_->scheduler().runOneBackgroundTask()) {
    }
}

void StoryPlayer::passSeconds(double seconds) {
    auto& scheduler = platform_->scheduler();
    const double end = scheduler.steadySeconds() + seconds;
    for (;;) {
        runUntilIdle();
        const double left = end - scheduler.steadySeconds();
        if (left <= 0) return;
        scheduler.moveBy(std::min(left, scheduler.nextDelay().value_or(left)));
    }
}

void StoryPlayer::makePlatform() {
    platform_ =
        std::make_unique<HeadlessPlatform>(usesThread_ ? HeadlessScheduler::Background::manualThread
                                                       : HeadlessScheduler::Background::manual);
    platform_->web().onLoad([this](const std::string& url) { return answerLoad(url); });
    platform_->web().onEvaluate([this](const std::string& script) { return answerScript(script); });
    platform_->application().install("testkit-opens");
    platform_->application().install("testkit-refuses", false);
    for (auto& presenter : presenters_) {
        presenter = platform::makeOnMainThread<platform::UIViewController>();
        presenter->setShownByStage(true);
    }
    story_.isPlatformThere = true;
}

void StoryPlayer::endPlatform() {
    if (!platform_) return;
    formerTurns_ += platform_->scheduler().turnCount() + 1;
    platform_.reset();
    for (auto& presenter : presenters_)
        presenter.reset();
    waitingLaunches_.clear();
    isAppSlow_ = false;
    story_.isPlatformThere = false;
    story_.didPlatformEnd = true;
    for (auto& checkout : story_.checkouts)
        checkout.isOver = true;
}

// What was stored is all that the next process finds.
void StoryPlayer::restartAsAnotherProcess() {
    std::map<std::string, platform::DefaultsValue> stored;
    if (platform_) stored = platform_->defaults().entries();
    heldScreen_.reset();
    hosts_.clear();
    currentHost_ = 0;
    facadesScreen_.reset();
    endPlatform();
    forgetCalls();
    ZorvikCheckoutSDK::reset();
    isUsed_ = false;
    for (auto& checkout : story_.checkouts)
        checkout.isBridgeAlive = false;
    makePlatform();
    for (const auto& [key, value] : stored)
        platform_->defaults().write(key, value);
    changeDelegate(0);
}

void StoryPlayer::forgetCalls() {
    while (core().forgetCall()) {
    }
    for (StoryCheckout& checkout : story_.checkouts)
        checkout.waitingEnquiries = 0;
}

void StoryPlayer::takeStock() {
    for (StoryCheckout& checkout : story_.checkouts) {
        checkout.isShown = false;
        checkout.isHostAlive = isAlive(checkout.host);
    }
    if (platform_) {
        for (const auto& controller : platform_->stage().shown()) {
            const auto isOf = [&](const StoryCheckout& checkout) {
                return !checkout.screen.owner_before(controller) &&
                       !controller.owner_before(checkout.screen);
            };
            auto found = std::ranges::find_if(story_.checkouts, isOf);
            if (found == story_.checkouts.end()) {
                const auto screen = std::dynamic_pointer_cast<Screen>(controller);
                if (!screen) continue;
                found = story_.checkouts.begin() + static_cast<std::ptrdiff_t>(checkoutOf(
                                                       screen->options().orderToken.value_or("")));
                found->screen = screen;
                found->wasShown = true;
            }
            found->isShown = true;
            found->isLeaving = controller->isBeingDismissed();
            found->isCovered = controller->presentedViewController() != nullptr;
        }
    }
    for (StoryCheckout& checkout : story_.checkouts) {
        checkout.isHeld = heldScreen_ && checkout.screen.lock() == heldScreen_;
        if (!checkout.isShown && checkout.wasShown) checkout.isLeaving = true;
    }
    for (std::size_t place = firstOpenReport_; place < story_.reports.size(); ++place) {
        StoryReport& report = story_.reports[place];
        if (!isAlive(currentHost_)) report.mayBeLost = true;
        if (story_.checkouts[report.checkout].isCovered) report.mayCloseLater = true;
    }
}

// Asked where no main-queue turn is left: what is still due then and has no excuse is lost.
void StoryPlayer::excuseWhatCannotCome() {
    using State = StoryReport::State;
    for (std::size_t place = firstOpenReport_; place < story_.reports.size(); ++place) {
        StoryReport& report = story_.reports[place];
        if (report.state != State::due) continue;
        const StoryCheckout& checkout = story_.checkouts[report.checkout];
        if (report.isByFacade) {
            if (checkout.isOver || report.mayBeLost) report.state = State::excused;
        } else if (checkout.isOver || !checkout.isBridgeAlive || checkout.isScreenGone()) {
            report.state = State::excused;
        } else if (!checkout.isHostAlive) {
            report.state = State::excused;
            report.wasHostDead = true;
        }
    }
    while (firstOpenReport_ < story_.reports.size() &&
           story_.reports[firstOpenReport_].state != State::due) {
        ++firstOpenReport_;
    }
    story_.backgroundTasks = platform_ ? platform_->scheduler().backgroundCount() : 0;
    for (std::size_t place = firstOpenRequest_; place < story_.requests.size(); ++place) {
        StoryRequest& open = story_.requests[place];
        open.isExcused = open.isExcused || isExcused(open);
    }
    while (firstOpenRequest_ < story_.requests.size() &&
           (story_.requests[firstOpenRequest_].isDone ||
            story_.requests[firstOpenRequest_].isExcused)) {
        ++firstOpenRequest_;
    }
}

void StoryPlayer::end(const Look& look) {
    if (platform_) {
        runUntilIdle();
        if (!lookWhenIdle(look)) return;
        reaction_ = 0;
        heldScreen_.reset();
        changeApp(1);
        // A screen may wait for another to leave before it comes, and an answer brings a new one.
        for (int round = 0; round < 6; ++round) {
            for (const auto& presenter : presenters_)
                if (presenter) presenter->dismiss(false);
            passSeconds(HeadlessStage::slideSeconds);
            takeStock();
            if (!lookWhenIdle(look)) return;
            runAllBackground();
            forgetCalls();
            while (!waitingLaunches_.empty())
                changeApp(3);
            runUntilIdle();
            takeStock();
            if (!lookWhenIdle(look)) return;
        }
        story_.pendingTasks = platform_->scheduler().pendingCount();
        story_.backgroundTasks = platform_->scheduler().backgroundCount();
        story_.pages = platform_->web().pages().size();
        story_.shownControllers = platform_->stage().shown().size();
        story_.observers = platform_->observerCount();
        story_.isRecordStored = std::ranges::any_of(recordKeys, [&](const char* key) {
            return platform_->defaults().read(key).has_value();
        });
    } else {
        heldScreen_.reset();
        forgetCalls();
    }
    excuseWhatCannotCome();
    look(story_, Story::Moment::end);
}

}  // namespace zorvik::testkit
