#include "platform/qt/PageNavigation.h"

#include <algorithm>
#include <utility>

#include "platform/desktop/WebPageError.h"

namespace zorvik::platform::qt {

using desktop::webPageError, desktop::WebPageErrorCode;

namespace {

Error takenPlaceOf() {
    return webPageError(WebPageErrorCode::cancelled, "Another load took the place of this one.");
}

}  // namespace

std::optional<std::string> PageNavigation::address() const {
    if (requested_) return requested_;
    return phase_ == Phase::provisional && origin_ == Origin::host ? target_ : shown_;
}

PageNavigation::Reports PageNavigation::takeDue() {
    return std::exchange(due_, {});
}

void PageNavigation::start(Origin origin, const std::string& address) {
    if (phase_ != Phase::none) fail(takenPlaceOf());
    phase_ = Phase::provisional;
    isEndLost_ = false;
    origin_ = origin;
    target_ = address;
    due_.push_back({Kind::started});
}

void PageNavigation::commit(const std::string& address) {
    phase_ = Phase::committed;
    shown_ = address;
    isDocumentLoaded_ = false;
    due_.push_back({Kind::committed});
}

void PageNavigation::finish() {
    phase_ = Phase::none;
    due_.push_back({Kind::finished});
}

void PageNavigation::fail(const Error& error) {
    const Phase phase = std::exchange(phase_, Phase::none);
    due_.push_back(
        {phase == Phase::committed ? Kind::failedAfterCommit : Kind::failedBeforeCommit, error});
}

PageNavigation::Reports PageNavigation::begin() {
    // A page that is already there goes on loading until the new load is allowed.
    if (phase_ == Phase::provisional) fail(takenPlaceOf());
    return takeDue();
}

PageNavigation::Reports PageNavigation::allowRequest() {
    if (requested_) start(Origin::host, *std::exchange(requested_, std::nullopt));
    return takeDue();
}

PageNavigation::QuestionKind PageNavigation::kindOf(bool isCalledRedirect) const {
    return isCalledRedirect && phase_ == Phase::provisional ? QuestionKind::redirect
                                                            : QuestionKind::navigation;
}

PageNavigation::Reports PageNavigation::ask(const std::string& address, QuestionKind kind) {
    if (kind == QuestionKind::redirect) target_ = address;
    return takeDue();
}

void PageNavigation::answer(const std::string& address, QuestionKind kind, Answer answer) {
    if (kind == QuestionKind::redirect) {
        if (answer == Answer::cancel && phase_ == Phase::provisional) phase_ = Phase::none;
    } else if (answer == Answer::allow) {
        start(Origin::page, address);
    }
}

void PageNavigation::answerUnopenable(const std::string& address, const Error& error) {
    if (requested_) return;  // the host is about to load another page
    if (phase_ != Phase::provisional || target_ != address) start(Origin::page, address);
    fail(error);
}

PageNavigation::Reports PageNavigation::documentCreated(const std::string& address) {
    if (phase_ == Phase::provisional) commit(address);
    return takeDue();
}

PageNavigation::Reports PageNavigation::documentLoaded() {
    isDocumentLoaded_ = true;
    if (isEndLost_ && phase_ == Phase::committed) finish();
    return takeDue();
}

void PageNavigation::addressChanged(const std::string& address) {
    // While a load is provisional this may be its address as well as the old one.
    if (phase_ != Phase::provisional && showsPage()) shown_ = address;
}

PageNavigation::Reports PageNavigation::ended(Outcome outcome, const std::string& address,
                                              const Error& error) {
    if (outcome == Outcome::succeeded) {
        // What a page does unasked, such as going to about:blank, is known from its end alone.
        if (phase_ == Phase::none) start(Origin::page, address);
        if (phase_ == Phase::provisional) commit(address);
        finish();
        return takeDue();
    }
    if (outcome == Outcome::unexplained) {
        isEndLost_ = phase_ != Phase::none;
        if (phase_ == Phase::committed && isDocumentLoaded_) finish();
        return takeDue();
    }
    if (endsToIgnore_ > 0) {
        --endsToIgnore_;
        return takeDue();
    }
    if (const auto place = std::ranges::find(refused_, address); place != refused_.end()) {
        refused_.erase(place);
        isEndLost_ = phase_ == Phase::committed;
        if (isEndLost_ && isDocumentLoaded_) finish();
        return takeDue();
    }
    if (phase_ == Phase::none) return takeDue();
    const bool hasNothingToShow = outcome == Outcome::stopped && phase_ == Phase::provisional;
    if (hasNothingToShow && origin_ == Origin::page && showsPage()) {
        phase_ = Phase::none;
    } else {
        fail(error);
    }
    return takeDue();
}

PageNavigation::Reports PageNavigation::processEnded(const Error& error) {
    const bool wasInUse = showsPage() || phase_ != Phase::none;
    phase_ = Phase::none;
    shown_.reset();
    refused_.clear();
    endsToIgnore_ = 0;
    // Nothing is left of a page that was committed: whoever shows it has to begin anew.
    if (wasInUse) due_.push_back({Kind::failedBeforeCommit, error});
    return takeDue();
}

void PageNavigation::stop(const Error& error) {
    requested_.reset();
    if (phase_ != Phase::none) fail(error);
}

}  // namespace zorvik::platform::qt
