#include "trace/recorder/Log.h"

#include <algorithm>
#include <atomic>
#include <iterator>
#include <utility>

#include "platform/runtime/Guarded.h"
#include "trace/recorder/Kept.h"

namespace zorvik::trace {

namespace {

// What a thread is in, and in which recording.
thread_local const Log* causeLog = nullptr;
thread_local EntryId causeId = 0;

std::atomic<bool> isRecording = false;

// Never destroyed: other threads may ask while the process ends.
platform::Guarded<std::shared_ptr<Log>>& inForce() {
    static auto& instance = *new platform::Guarded<std::shared_ptr<Log>>;
    return instance;
}

std::size_t sizeOfEntry(const Entry& entry) {
    return sizeof(Entry) + entry.title.size() + sizeOf(entry.data) +
           (entry.png ? entry.png->size() : 0);
}

}  // namespace

const char* nameOf(EntryKind kind) {
    constexpr const char* names[] = {
        "note",      "call",     "answer", "event",  "console",      "picture",  "turn",
        "timer",     "task",     "load",   "stop",   "question",     "decision", "started",
        "committed", "finished", "failed", "script", "scriptAnswer", "message",  "post",
        "panel",     "canOpen",  "open",   "opened", "active",       "write",    "remove",
        "show",      "shown",    "hide",   "hidden"};
    static_assert(std::size(names) == static_cast<std::size_t>(EntryKind::hidden) + 1);
    return names[static_cast<std::size_t>(kind)];
}

Log::Log(const platform::Scheduler& clock) : clock_(&clock), steadyStart_(clock.steadySeconds()) {
    contents_.wallSeconds = clock.wallSeconds();
}

EntryId Log::add(Entry entry, EntryId cause) {
    if (!isOn_) return 0;
    entry.title = keptTitle(entry.title);
    entry.data = *keptValue(entry.data).dictionary();
    entry.cause = cause != 0 ? cause : current();
    const std::size_t size = sizeOfEntry(entry);
    const std::scoped_lock lock(mutex_);
    if (clock_ == nullptr) return 0;
    entry.id = ++lastId_;
    entry.seconds = clock_->steadySeconds() - steadyStart_;
    bytes_ += size;
    contents_.entries.push_back(std::move(entry));
    while (contents_.entries.size() > mostEntries ||
           (bytes_ > mostBytes && !contents_.entries.empty())) {
        dropOldest();
    }
    return lastId_;
}

void Log::dropOldest() {
    bytes_ -= std::min(bytes_, sizeOfEntry(contents_.entries.front()));
    contents_.entries.pop_front();
    ++contents_.dropped;
}

void Log::amend(EntryId id, const std::string& key, const platform::Value& value) {
    if (!isOn_) return;
    platform::Value kept = keptValue(value);
    const std::scoped_lock lock(mutex_);
    if (clock_ == nullptr || id <= contents_.dropped || id > lastId_) return;
    bytes_ += key.size() + sizeOf(kept);
    contents_.entries[id - contents_.dropped - 1].data[key] = std::move(kept);
}

void Log::end() {
    isOn_ = false;
    const std::scoped_lock lock(mutex_);
    if (clock_ != nullptr) contents_.seconds = clock_->steadySeconds() - steadyStart_;
    clock_ = nullptr;
}

EntryId Log::current() const {
    return causeLog == this ? causeId : 0;
}

Log::Contents Log::contents() const {
    const std::scoped_lock lock(mutex_);
    Contents copy = contents_;
    if (clock_ != nullptr) copy.seconds = clock_->steadySeconds() - steadyStart_;
    return copy;
}

Cause::Cause(const Log& log, EntryId id) : formerLog_(causeLog), formerId_(causeId) {
    if (id == 0) return;
    causeLog = &log;
    causeId = id;
}

Cause::~Cause() {
    causeLog = formerLog_;
    causeId = formerId_;
}

std::shared_ptr<Log> currentLog() {
    return isRecording ? inForce().get() : nullptr;
}

void setCurrentLog(std::shared_ptr<Log> log) {
    isRecording = log != nullptr;
    inForce().set(std::move(log));
}

}  // namespace zorvik::trace
