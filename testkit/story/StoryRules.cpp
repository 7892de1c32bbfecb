#include "testkit/story/StoryRules.h"

#include <algorithm>
#include <array>
#include <initializer_list>
#include <string_view>

#include "testkit/story/StoryLines.h"

namespace zorvik::testkit {

using platform::Dictionary;
using Moment = Story::Moment;

namespace {

std::string nothingUnexplained(const Story& story, Moment /*moment*/) {
    return story.unexplained.empty() ? "" : story.unexplained.front();
}

std::string noReportIsLost(const Story& story, Moment /*moment*/) {
    for (const StoryReport& report : story.reports) {
        if (report.state == StoryReport::State::due)
            return "the host was not told of " + report.cause + ": " +
                   platform::description(report.data);
    }
    return "";
}

std::string reportsComeInTheirTurn(const Story& story, Moment moment) {
    if (moment != Moment::end) return "";
    for (const StoryReport& report : story.reports) {
        if (report.state != StoryReport::State::made) continue;
        const std::size_t later = report.madeIn - report.turn;
        if (later < report.turnsLater || (report.turnsLater == 0 && later > 0))
            return report.cause + " was reported " + std::to_string(later) + " turns later";
    }
    return "";
}

// A screen that is covered closes what covers it in its place, and is left.
std::string reportsCloseTheirScreen(const Story& story, Moment moment) {
    if (moment != Moment::idle) return "";
    for (const StoryReport& report : story.reports) {
        const bool wasHeard = report.state == StoryReport::State::made || report.wasHostDead;
        const StoryCheckout& checkout = story.checkouts[report.checkout];
        if (wasHeard && !report.isByFacade && checkout.stands() && !report.mayCloseLater)
            return "after " + report.cause + " the screen stays";
    }
    return "";
}

bool isBridgeEvent(const Happening& happening) {
    return happening.kind == Happening::Kind::event && happening.text == "PAYMENT_STATUS" &&
           !happening.data.contains("upi_data");
}

bool tellsOf(const Happening& event, const StoryReport& report) {
    const auto payload = event.data.find("payload");
    if (payload == event.data.end()) return false;
    if (const auto* text = payload->second.string())
        return *text == platform::description(report.data);
    const auto* data = payload->second.dictionary();
    return data != nullptr && *data == report.data;
}

// The bridge's own, one for each report to it; that of a screen whose host was gone may be one.
std::string reportsAreLoggedOnce(const Story& story, Moment moment) {
    if (moment != Moment::end || story.didPlatformEnd) return "";
    std::vector<bool> isUsed(story.reports.size());
    for (const Happening& event : story.happenings) {
        if (!isBridgeEvent(event)) continue;
        std::size_t place = 0;
        const auto fits = [&](StoryReport::State state) {
            for (place = 0; place < story.reports.size(); ++place) {
                const StoryReport& report = story.reports[place];
                const std::string& token = story.checkouts[report.checkout].token;
                if (!isUsed[place] && !report.isByFacade && report.state == state &&
                    event.token == token && tellsOf(event, report))
                    return true;
            }
            return false;
        };
        if (!fits(StoryReport::State::made) && !fits(StoryReport::State::excused))
            return "a payment status of no report: " + platform::description(event.data);
        isUsed[place] = true;
    }
    for (std::size_t place = 0; place < story.reports.size(); ++place) {
        const StoryReport& report = story.reports[place];
        const bool wasHeard = report.state == StoryReport::State::made || report.wasHostDead;
        if (wasHeard && !report.isByFacade && !isUsed[place])
            return "no payment status of " + report.cause;
    }
    const auto upiEvents = std::ranges::count_if(story.happenings, [](const auto& happening) {
        return happening.kind == Happening::Kind::event && happening.data.contains("upi_data");
    });
    const std::size_t failures =
        total(story, {"[UPI FAILURE] 🚀 Handling UPI failure callback!",
                      "[UPI CANCELLATION] 🚀 Handling UPI cancellation callback!",
                      "[UPI UNKNOWN] 🚀 Handling UPI unknown status callback!"});
    if (static_cast<std::size_t>(upiEvents) > failures)
        return counted(static_cast<std::size_t>(upiEvents), failures, "UPI payment status events");
    return "";
}

std::string requestsAreSeenTo(const Story& story, Moment /*moment*/) {
    for (const StoryRequest& request : story.requests) {
        if (request.isDone || request.isExcused) continue;
        if (request.isInBackground && story.backgroundTasks > 0) continue;
        return "not done: " + request.text;
    }
    return "";
}

std::string eventsAreCounted(const Story& story, Moment moment) {
    if (moment != Moment::end) return "";
    struct Law {
        const char* name;
        std::size_t causes;
        bool isExact;
    };
    const Law laws[] = {
        {"SDK_INITIALIZED", story.firstUses + story.initialisations, true},
        {"CHECKOUT_INITIATED", story.checkouts.size(), true},
        {"WEBVIEW_LAUNCH", story.eventCount("UPI_APPS_LISTED"), false},
        {"WEBVIEW_LOADED", story.eventCount("URL_INTERCEPTED"), false},
        {"URL_INTERCEPTED", story.lineCount("[URL INTERCEPT] ✅ Allowing URL to load"), false},
        {"REDIRECT_URL_HIT", story.eventCount("WEBVIEW_LOADED"), false},
        {"BACK_BUTTON_PRESSED",
         story.deviceBacks +
             total(story, {"[BACK HANDLER] 🚀 Navigation bar back button pressed - Android-style "
                           "handling",
                           "[BACK HANDLER] 🚀 Swipe back gesture detected - Android-style "
                           "handling",
                           "[BACK HANDLER] 🚀 Device back pressed - Android-style handling"}),
         false},
    };
    for (const Law& law : laws) {
        const std::size_t count = story.eventCount(law.name);
        if (count > law.causes || (law.isExact && !story.didPlatformEnd && count < law.causes))
            return counted(count, law.causes, law.name);
    }
    return "";
}

std::string eventsAreOfTheirOrder(const Story& story, Moment moment) {
    if (moment != Moment::end) return "";
    for (const Happening& event : story.happenings) {
        if (event.kind != Happening::Kind::event || !event.token) continue;
        const auto checkout =
            std::ranges::find(story.checkouts, *event.token, &StoryCheckout::token);
        if (checkout == story.checkouts.end() || event.orderId != checkout->orderId ||
            event.subMerchantId != checkout->subMerchantId)
            return event.text + " with another order's ids";
    }
    return "";
}

bool startsWithOneOf(std::string_view text, std::initializer_list<std::string_view> starts) {
    return std::ranges::any_of(starts,
                               [&](std::string_view start) { return text.starts_with(start); });
}

// A screen on its way out may still say what it had begun; of one that is gone only the completions
// say how they ended.
std::string nothingRunsOnAScreenThatIsGone(const Story& story, Moment moment) {
    if (moment != Moment::end) return "";
    for (const Happening& one : story.happenings) {
        const bool needsShown =
            one.kind == Happening::Kind::event
                ? startsWithOneOf(one.text, {"URL_INTERCEPTED", "WEBVIEW_LOADED", "WEBVIEW_FAILED",
                                             "UPI_INTENT_STARTED", "REDIRECT_URL_HIT"})
                : startsWithOneOf(
                      one.text, {"[APP STATE]", "[URL INTERCEPT]", "[UPI RETURN]", "[UPI SCHEME]",
                                 "[UPI INTENT]", "[TRANSACTION STORE]", "[REDIRECT]", "[WEBVIEW]"});
        const bool needsAlive =
            one.kind == Happening::Kind::line &&
            !startsWithOneOf(
                one.text,
                {"[UPI LAUNCH] ✅ UPI app launched", "[UPI LAUNCH] 📱 App will go",
                 "[UPI LAUNCH] ❌ Failed to launch", "[BACK HANDLER] ✅ JavaScript",
                 "[BACK HANDLER] ❌ JavaScript error", "[UPI BACK] ✅ JavaScript",
                 "[UPI BACK] ❌ JavaScript error", "[UPI RESPONSE] ✅", "[UPI RESPONSE] ❌"});
        if ((needsShown && !one.isScreenShown) || (needsAlive && !one.isScreenAlive))
            return "with no screen: " + one.text;
    }
    return "";
}

// What may keep a dismissed screen: its host, an enquiry after a UPI success until its answer, and
// background tasks that log what was reported of it.
std::string dismissedScreensAreFreed(const Story& story, Moment moment) {
    for (std::size_t place = 0; place < story.checkouts.size(); ++place) {
        const StoryCheckout& checkout = story.checkouts[place];
        if (!checkout.wasShown || checkout.isShown || checkout.screen.expired()) continue;
        const bool reported = std::ranges::any_of(
            story.reports, [&](const auto& report) { return report.checkout == place; });
        const bool mayBeLogged = reported && story.backgroundTasks > 0;
        if (moment == Moment::idle &&
            (checkout.isHeld || checkout.waitingEnquiries > 0 || mayBeLogged ||
             !story.isPlatformThere || story.didPlatformEnd))
            continue;
        return "the screen of " + checkout.token + " lives on";
    }
    return "";
}

std::string nothingWaitsAtTheEnd(const Story& story, Moment moment) {
    if (moment != Moment::end || !story.isPlatformThere) return "";
    struct Rest {
        const char* name;
        std::size_t count;
    };
    for (const Rest& rest :
         {Rest{"main-queue tasks", story.pendingTasks},
          Rest{"background tasks", story.backgroundTasks}, Rest{"pages", story.pages},
          Rest{"shown controllers", story.shownControllers}, Rest{"observers", story.observers}}) {
        if (rest.count > 0) return std::to_string(rest.count) + " " + rest.name + " are left";
    }
    return "";
}

// Every screen that ends takes away the record, an older one a younger one's as well; what another
// process stored stays as long as no screen ends.
std::string noRecordOutlivesItsScreens(const Story& story, Moment moment) {
    const bool anyEnded = std::ranges::any_of(story.checkouts, [](const auto& checkout) {
        return checkout.isScreenGone() && !checkout.isOver;
    });
    if (moment != Moment::end || !story.isRecordStored) return "";
    return anyEnded || !story.didPlatformEnd ? "a transaction record is left" : "";
}

std::string returnsAreToldApart(const Story& story, Moment moment) {
    if (moment != Moment::end) return "";
    constexpr std::string_view elapsed = "[APP STATE] ⏱️ Time since UPI app launch: ";
    for (std::size_t place = 0; place + 1 < story.happenings.size(); ++place) {
        const std::string& text = story.happenings[place].text;
        if (!text.starts_with(elapsed)) continue;
        const bool isQuick = std::stod(text.substr(elapsed.size())) < 5;
        const std::string& next = story.happenings[place + 1].text;
        if (isQuick != next.starts_with("[APP STATE] ⚠️ User returned quickly"))
            return std::string(text).append(", then ").append(next);
    }
    return "";
}

std::string hostsAreToldOnTheMainThread(const Story& story, Moment moment) {
    if (moment != Moment::end) return "";
    for (const Happening& one : story.happenings) {
        const bool isMains =
            one.kind == Happening::Kind::response ||
            (one.kind == Happening::Kind::line &&
             startsWithOneOf(one.text, {"[APP STATE]", "[URL INTERCEPT]", "[REDIRECT]",
                                        "[VIEW LIFECYCLE]", "[UPI LAUNCH]", "[TRANSACTION STORE]",
                                        "[UPI RESPONSE]", "[BACK HANDLER]", "[UPI SUCCESS] 📞"}));
        if (isMains && !one.isOnMainThread) return "on another thread: " + one.text;
    }
    return "";
}

constexpr StoryRule rules[] = {
    {"nothing comes without a cause, or twice for one", nothingUnexplained},
    {"no report to a living delegate is lost", noReportIsLost},
    {"a report comes as many turns later as it has to", reportsComeInTheirTurn},
    {"a report closes its screen", reportsCloseTheirScreen},
    {"each report is logged once", reportsAreLoggedOnce},
    {"what is asked of a screen is done", requestsAreSeenTo},
    {"each console line follows from its cause", linesFollow},
    {"each event follows from its cause", eventsAreCounted},
    {"an event carries the ids of its order", eventsAreOfTheirOrder},
    {"nothing runs on a screen that is gone", nothingRunsOnAScreenThatIsGone},
    {"a dismissed screen is freed", dismissedScreensAreFreed},
    {"nothing waits once all screens are gone", nothingWaitsAtTheEnd},
    {"no transaction record outlives its screens", noRecordOutlivesItsScreens},
    {"a quick return is one of less than five seconds", returnsAreToldApart},
    {"hosts and screens are touched on the main thread", hostsAreToldOnTheMainThread},
};

}  // namespace

std::span<const StoryRule> storyRules() {
    return rules;
}

}  // namespace zorvik::testkit
