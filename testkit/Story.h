#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/foundation/Value.h"
#include "testkit/Step.h"

namespace zorvik {
class ZorvikCheckoutWebView;
}

namespace zorvik::testkit {

// Something that came of a story's steps.
struct Happening {
    enum class Kind { line, event, response };  // response: what a host was given

    Kind kind = Kind::line;
    std::size_t turn = 0;  // main-queue turns that had begun by then
    bool isOnMainThread = true;
    bool isScreenShown = false;          // one that is not on its way out
    bool isScreenAlive = false;          // one at all
    std::string text;                    // the line, or the event's name
    std::optional<std::string> orderId;  // of an event, as the next two
    std::optional<std::string> token;
    std::optional<std::string> subMerchantId;
    platform::Dictionary data;  // of an event or a response
};

// A checkout that a host started.
struct StoryCheckout {
    std::string token;
    bool hasToken = true;
    std::string orderId;
    std::string subMerchantId;
    int host = 0;  // the number of the delegate it began with; 0: none
    bool isHostAlive = false;
    bool isBridgeAlive = true;  // no other checkout and no reset took its place
    bool isOver = false;        // by a reset, or with the platform
    std::weak_ptr<ZorvikCheckoutWebView> screen;
    bool wasShown = false;             // its screen; until then `screen` says nothing
    bool isShown = false;              // by the stage, on its way out or not
    bool isLeaving = false;            // dismissed
    bool isHeld = false;               // by the host
    bool isCovered = false;            // by what is presented over it
    std::size_t injectedIn = 0;        // the turn that answered the first page that got the apps
    std::size_t loadedAgainIn = 0;     // the turn of the latest finished load after that one
    std::size_t waitingEnquiries = 0;  // after a UPI success, unanswered: they hold the screen

    bool isScreenGone() const { return wasShown && screen.expired(); }
    bool stands() const { return isShown && !isLeaving; }
};

// A report that the component was given cause to make.
struct StoryReport {
    enum class State { due, made, excused };

    std::string cause;
    std::size_t checkout = 0;  // its place among the story's
    platform::Dictionary data;
    std::size_t turn = 0;        // of the cause
    std::size_t turnsLater = 0;  // how many turns it has to wait at least
    bool isByFacade = false;     // made to the delegate of the moment
    bool mayBeLost = false;      // a facade's: meanwhile there was no delegate
    State state = State::due;
    std::size_t madeIn = 0;      // the turn
    bool wasHostDead = false;    // excused by that alone: the bridge heard of it
    bool mayCloseLater = false;  // its screen was covered by what closes in its place
};

// Something that the component has to do once it is asked to, known by the text it leaves behind: a
// console line, an event with what tells it apart, a script.
struct StoryRequest {
    // What lets it off, besides the end of the platform or of its checkout.
    enum class Excuse { none, screenGone, screenLeft };

    std::string text;
    std::size_t checkout = 0;
    std::size_t turn = 0;  // that asked
    Excuse excuse = Excuse::screenLeft;
    bool isInBackground = false;  // done by a background task
    bool isDone = false;
    bool isExcused = false;
};

// One run, as it came: what happened, what there was cause for, what is left. Rules read it.
struct Story {
    // When a rule looks: after a step that left no main-queue turn to run, and at the end, when the
    // host has let go of everything and all ran that was to run.
    enum class Moment { idle, end };

    Script script;
    std::vector<Happening> happenings;
    std::vector<StoryCheckout> checkouts;
    std::vector<StoryReport> reports;
    std::vector<StoryRequest> requests;
    std::vector<std::string> unexplained;  // what came without a cause, or once too often
    std::map<std::string, std::size_t, std::less<>> lines;  // by what stands before the first colon
    std::map<std::string, std::size_t, std::less<>> events;  // by name

    std::size_t firstUses = 0;         // of the facade, resets apart
    std::size_t initialisations = 0;   // by a host
    std::size_t deviceBacks = 0;       // by a host
    std::size_t successEnquiries = 0;  // answered
    // Evaluations that are certain to have an outcome, by the tag of the line that tells it.
    std::map<std::string, std::size_t, std::less<>> evaluations;
    bool didPlatformEnd = false;  // at any time; what was under way then is dropped

    // What is left now.
    bool isPlatformThere = true;
    std::size_t pendingTasks = 0;
    std::size_t backgroundTasks = 0;
    std::size_t pages = 0;
    std::size_t shownControllers = 0;
    std::size_t observers = 0;
    bool isRecordStored = false;

    std::size_t lineCount(std::string_view key) const { return countOf(lines, key); }
    std::size_t eventCount(std::string_view name) const { return countOf(events, name); }

  private:
    static std::size_t countOf(const std::map<std::string, std::size_t, std::less<>>& counts,
                               std::string_view key) {
        const auto found = counts.find(key);
        return found == counts.end() ? 0 : found->second;
    }
};

}  // namespace zorvik::testkit
