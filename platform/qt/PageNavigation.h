#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/foundation/Error.h"

namespace zorvik::platform::qt {

// Where the main frame of a page stands, from what the engine tells to what the page reports. The
// engine names no commit, ends a status of 404 as a failure, an answer of "no" as a stopped load,
// and a load that another one takes the place of not at all. Needs no engine: each event gives the
// reports that follow from it, to be made in this order. A value of the page's; main thread.
class PageNavigation {
  public:
    enum class Kind { started, committed, finished, failedBeforeCommit, failedAfterCommit };
    // One thing that the page is to report.
    struct Report {
        Kind kind;
        Error error = {};  // of a failure
    };
    using Reports = std::vector<Report>;
    enum class QuestionKind { navigation, redirect };
    enum class Answer { cancel, allow };
    // Unexplained: failed without an error, which is told when a navigation of the page's came to
    // nothing meanwhile; the load goes on.
    enum class Outcome { succeeded, stopped, failed, unexplained };

    // What the customer is told is the page's address.
    std::optional<std::string> address() const;
    bool isLoading() const { return phase_ != Phase::none; }
    bool isProvisional() const { return phase_ == Phase::provisional; }
    bool isOwnLoad() const { return origin_ == Origin::host; }
    bool isRequested() const { return requested_.has_value(); }
    bool showsPage() const { return shown_.has_value(); }

    // A load of the host's: wanted, to be asked for (which ends one that has not committed), and
    // what was answered. Once allowed, the engine is to load it.
    void want(const std::string& address) { requested_ = address; }
    Reports begin();
    Reports allowRequest();
    void cancelRequest() { requested_.reset(); }

    // The engine asks about the main frame; what it calls a redirect may also be a script's load.
    QuestionKind kindOf(bool isCalledRedirect) const;
    Reports ask(const std::string& address, QuestionKind kind);
    // What follows is due in a turn of its own: the engine waits for the answer.
    void answer(const std::string& address, QuestionKind kind, Answer answer);
    // Allowed, but the engine opens no such address.
    void answerUnopenable(const std::string& address, const Error& error);
    // An answer went to the engine as "no": it tells of it as of a stopped load.
    void refused(const std::string& address) { refused_.push_back(address); }
    bool awaitsRefused() const { return !refused_.empty(); }

    // A document is there, and all that belongs to it.
    Reports documentCreated(const std::string& address);
    Reports documentLoaded();
    // The address that the engine shows changed; within a page without a load.
    void addressChanged(const std::string& address);
    Reports ended(Outcome outcome, const std::string& address, const Error& error);
    Reports processEnded(const Error& error);

    // Ends the load that is under way, a request too, as failed, which is due afterwards. The
    // engine is to be stopped.
    void stop(const Error& error);
    // The engine was stopped and will tell of it.
    void endWillCome() { ++endsToIgnore_; }

    // Reports that wait for the next event, or for a turn of their own.
    Reports takeDue();

  private:
    enum class Phase { none, provisional, committed };
    enum class Origin { host, page };

    void start(Origin origin, const std::string& address);
    void commit(const std::string& address);
    void fail(const Error& error);
    void finish();

    Phase phase_ = Phase::none;
    Origin origin_ = Origin::page;
    std::string target_;                    // of the provisional load
    std::optional<std::string> requested_;  // by the host, not allowed yet
    std::optional<std::string> shown_;      // the address of the page that is there
    std::vector<std::string> refused_;
    int endsToIgnore_ = 0;
    bool isDocumentLoaded_ = false;
    bool isEndLost_ = false;  // the engine told the end of another navigation in its place
    Reports due_;
};

}  // namespace zorvik::platform::qt
