#include "trace/recorder/TracedServices.h"

#include <utility>

#include "platform/foundation/Date.h"
#include "platform/uikit/UIViewController.h"

namespace zorvik::trace {

using platform::Array;
using platform::Task;
using platform::Value;

namespace {

std::string seconds(double value) {
    return platform::description(value) + " s";
}

// A callback of the port's, inside an entry caused by the one that asked for it. What was not asked
// for stays so: ports spare themselves a turn for it.
std::function<void()> traced(std::function<void()> callback, const std::shared_ptr<Log>& log,
                             Entry entry, EntryId cause) {
    if (!callback) return callback;
    return [callback = std::move(callback), log, entry = std::move(entry), cause] {
        const Cause inside(*log, log->add(entry, cause));
        callback();
    };
}

}  // namespace

TracedScheduler::TracedScheduler(platform::Scheduler& port, std::shared_ptr<Log> log)
    : port_(port), log_(std::move(log)) {}

Task TracedScheduler::traced(Task task, Entry entry) const {
    return [task = std::move(task), log = log_, entry = std::move(entry), cause = log_->current()] {
        const Cause inside(*log, log->add(entry, cause));
        task();
    };
}

void TracedScheduler::runOnMain(Task task) {
    port_.runOnMain(traced(std::move(task), {Lane::mainQueue, EntryKind::turn, "turn"}));
}

platform::Scheduler::TaskId TracedScheduler::runOnMainAfter(double delay, Task task) {
    return port_.runOnMainAfter(delay, traced(std::move(task), {Lane::mainQueue, EntryKind::timer,
                                                                "timer of " + seconds(delay)}));
}

void TracedScheduler::runInBackground(Task task) {
    port_.runInBackground(
        traced(std::move(task), {Lane::mainQueue, EntryKind::background, "background task"}));
}

TracedApplication::TracedApplication(platform::ApplicationService& port, std::shared_ptr<Log> log)
    : port_(port), log_(std::move(log)) {}

bool TracedApplication::canOpen(const platform::URL& url) {
    const bool can = port_.canOpen(url);
    log_->add({Lane::upiApp,
               EntryKind::canOpen,
               (can ? "installed: " : "not installed: ") + url.scheme().value_or(""),
               {{"url", url.absoluteString()}, {"canOpen", can}}});
    return can;
}

void TracedApplication::open(const platform::URL& url, std::function<void(bool)> completion) {
    const EntryId opening = log_->add({Lane::upiApp,
                                       EntryKind::open,
                                       "opens: " + url.scheme().value_or(""),
                                       {{"url", url.absoluteString()}}});
    lastOpening_ = opening;
    const Cause inside(*log_, opening);
    port_.open(url, [completion = std::move(completion), log = log_, opening](bool opened) {
        const EntryId answer = log->add({Lane::upiApp,
                                         EntryKind::opened,
                                         opened ? "came to the front" : "refused to open",
                                         {{"opened", opened}}},
                                        opening);
        const Cause answered(*log, answer);
        if (completion) completion(opened);
    });
}

void TracedApplication::setDelegate(platform::ApplicationDelegate* delegate) {
    delegate_ = delegate;
    port_.setDelegate(delegate != nullptr ? this : nullptr);
}

void TracedApplication::applicationDidBecomeActive() {
    const EntryId back = log_->add({Lane::upiApp, EntryKind::active, "the customer is back"},
                                   std::exchange(lastOpening_, 0));
    const Cause inside(*log_, back);
    if (delegate_ != nullptr) delegate_->applicationDidBecomeActive();
}

TracedDefaults::TracedDefaults(platform::DefaultsStore& port, std::shared_ptr<Log> log)
    : port_(port), log_(std::move(log)) {}

std::optional<platform::DefaultsValue> TracedDefaults::read(const std::string& key) const {
    return port_.read(key);
}

void TracedDefaults::write(const std::string& key, const platform::DefaultsValue& value) {
    const auto written = [](const auto& content) -> Value {
        if constexpr (std::is_same_v<std::decay_t<decltype(content)>, platform::Date>) {
            return platform::description(content);
        } else {
            return content;
        }
    };
    log_->add(
        {Lane::screen, EntryKind::write, "remembers " + key, {{key, std::visit(written, value)}}});
    port_.write(key, value);
}

void TracedDefaults::remove(const std::vector<std::string>& keys) {
    std::string list;
    for (const std::string& key : keys)
        list += (list.empty() ? "" : ", ") + key;
    log_->add({Lane::screen,
               EntryKind::remove,
               "forgets " + list,
               {{"keys", Array(keys.begin(), keys.end())}}});
    port_.remove(keys);
}

TracedStage::TracedStage(platform::Stage& port, std::shared_ptr<Log> log)
    : port_(port), log_(std::move(log)) {}

void TracedStage::show(std::shared_ptr<platform::UIViewController> presented,
                       platform::UIViewController& presenter, bool animated,
                       std::function<void()> shown) {
    const EntryId showing =
        log_->add({Lane::screen, EntryKind::show, "is presented", {{"animated", animated}}});
    const Cause inside(*log_, showing);
    port_.show(
        std::move(presented), presenter, animated,
        traced(std::move(shown), log_, {Lane::screen, EntryKind::shown, "is in place"}, showing));
}

void TracedStage::hide(platform::UIViewController& presented, bool animated,
                       std::function<void()> hidden) {
    const EntryId hiding =
        log_->add({Lane::screen, EntryKind::hide, "is dismissed", {{"animated", animated}}});
    const Cause inside(*log_, hiding);
    port_.hide(
        presented, animated,
        traced(std::move(hidden), log_, {Lane::screen, EntryKind::hidden, "is gone"}, hiding));
}

platform::Size TracedStage::measureText(const std::string& text, double fontSize,
                                        double maximumWidth) {
    return port_.measureText(text, fontSize, maximumWidth);
}

}  // namespace zorvik::trace
