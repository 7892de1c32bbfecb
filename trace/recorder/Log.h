#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <string>

#include "platform/foundation/Value.h"
#include "platform/services/Scheduler.h"
#include "trace/Recording.h"

namespace zorvik::trace {

using EntryId = std::uint64_t;  // from 1 in the order of recording; 0: none

// What an entry is, for whoever draws it.
enum class EntryKind {
    note,
    call,
    answer,
    event,
    console,
    picture,
    turn,
    timer,
    background,
    load,
    stop,
    question,  // may the page go to an address
    decision,
    started,
    committed,
    finished,
    failed,
    script,
    scriptAnswer,
    message,  // the page's
    post,     // to the page
    panel,
    canOpen,
    open,
    opened,
    active,
    write,
    remove,
    show,
    shown,
    hide,
    hidden,
};

const char* nameOf(EntryKind kind);

struct Entry {
    Lane lane;
    EntryKind kind;
    std::string title;
    platform::Dictionary data = {};
    std::shared_ptr<const std::string> png = nullptr;

    // Filled in by the log.
    EntryId id = 0;
    EntryId cause = 0;
    double seconds = 0;  // since the recording began
};

// The entries of one recording and, for each thread, the entry that what happens now is caused by.
// Keeps texts shortened and cut, and drops its oldest entries when it holds too many. Shared by
// whatever may still report; any thread.
class Log {
  public:
    // The clock is asked until `end`.
    explicit Log(const platform::Scheduler& clock);

    // The entry's id; 0 after the end. `cause` 0: what this thread is in.
    EntryId add(Entry entry, EntryId cause = 0);
    // Adds to the data of an entry that is still kept.
    void amend(EntryId id, const std::string& key, const platform::Value& value);
    // Nothing is recorded from now on.
    void end();
    // What the calling thread is in.
    EntryId current() const;

    struct Contents {
        std::deque<Entry> entries;
        EntryId dropped = 0;     // entries, all of them before the first one here
        double wallSeconds = 0;  // at the beginning, since 1970-01-01 UTC
        double seconds = 0;      // recorded so far
    };
    Contents contents() const;

  private:
    static constexpr std::size_t mostEntries = 20'000;
    static constexpr std::size_t mostBytes = 48'000'000;

    void dropOldest();

    std::atomic<bool> isOn_ = true;
    mutable std::mutex mutex_;  // guards what follows
    const platform::Scheduler* clock_;
    const double steadyStart_;
    Contents contents_;
    EntryId lastId_ = 0;
    std::size_t bytes_ = 0;
};

// While it lives, what happens on this thread is caused by the entry. An id of 0 changes nothing.
class Cause {
  public:
    Cause(const Log& log, EntryId id);
    Cause(const Cause&) = delete;
    Cause& operator=(const Cause&) = delete;
    ~Cause();

  private:
    const Log* const formerLog_;
    const EntryId formerId_;
};

// The log of the recording in force, nullptr without one. Any thread.
std::shared_ptr<Log> currentLog();
void setCurrentLog(std::shared_ptr<Log> log);

}  // namespace zorvik::trace
