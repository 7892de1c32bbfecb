#include "trace/Recording.h"

#include <cstdio>
#include <fstream>
#include <iterator>
#include <mutex>
#include <string_view>
#include <utility>

#include "platform/foundation/Console.h"
#include "platform/foundation/ProgrammingError.h"
#include "trace/recorder/Recorder.h"
#include "trace/writer/Html.h"
#include "trace/writer/Sequence.h"

namespace zorvik::trace {

using platform::Dictionary;
using platform::Environment;
using platform::Error;
using platform::Result;

namespace {

using Lines = std::function<void(std::string_view)>;

// The component's screen begins its lines with what they are about, such as "[UPI RETURN] ".
Lane laneOf(std::string_view line) {
    constexpr std::string_view letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZ ";
    if (!line.starts_with('[')) return Lane::host;
    const std::size_t end = line.find_first_not_of(letters, 1);
    return end != std::string_view::npos && end > 1 && line[end] == ']' ? Lane::screen : Lane::host;
}

class TracedDelegate : public ZorvikCheckoutSDKDelegate {
  public:
    explicit TracedDelegate(std::weak_ptr<ZorvikCheckoutSDKDelegate> host)
        : host_(std::move(host)) {}

    void onCheckoutResponse(const Dictionary& data) override {
        const auto host = host_.lock();
        const Step step(Lane::host, host ? "onCheckoutResponse" : "nobody is left to be told",
                        data);
        if (host) host->onCheckoutResponse(data);
    }

  private:
    const std::weak_ptr<ZorvikCheckoutSDKDelegate> host_;
};

Result<std::size_t> write(const std::string& path, const std::string& text) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << text;
    file.close();
    if (!file) return Error{"trace", 1, "cannot write " + path};
    return text.size();
}

}  // namespace

struct Recording::FormerConsole {
    std::mutex mutex;  // held until the lines' former owner is known
    Lines lines;       // none: standard output
};

// Hears the console's lines and hands them on to whoever had them before.
class Recording::ConsoleTap {
  public:
    ConsoleTap(std::shared_ptr<Log> log, std::shared_ptr<FormerConsole> former)
        : log_(std::move(log)), former_(std::move(former)) {}

    void operator()(std::string_view line) const {
        log_->add({laneOf(line), EntryKind::console, std::string(line)});
        const Lines former = formerLines();
        if (former) return former(line);
        platform::printLine(line);
    }

    Lines formerLines() const {
        const std::scoped_lock lock(former_->mutex);
        return former_->lines;
    }

    // Hands the lines back, unless somebody else took them over meanwhile.
    static void remove(const std::shared_ptr<FormerConsole>& former) {
        Lines last = platform::setConsoleSink(former->lines);
        const auto* tap = last.target<ConsoleTap>();
        if (tap == nullptr || tap->former_ != former) platform::setConsoleSink(std::move(last));
    }

  private:
    std::shared_ptr<Log> log_;
    std::shared_ptr<FormerConsole> former_;
};

Recording::Recording()
    : recorder_(std::make_shared<Recorder>()),
      log_(recorder_->log()),
      formerConsole_(std::make_shared<FormerConsole>()) {
    if (currentLog() != nullptr) {
        platform::endOnProgrammingError(
            "a recording is under way already, and only one can be; let it go before you make "
            "another");
    }
    Environment::exchange(recorder_->services(), recorder_);
    {
        const std::scoped_lock lock(formerConsole_->mutex);
        formerConsole_->lines = platform::setConsoleSink(ConsoleTap(log_, formerConsole_));
    }
    setCurrentLog(log_);
}

Recording::~Recording() {
    setCurrentLog(nullptr);
    ConsoleTap::remove(formerConsole_);
    if (recorder_->isInForce()) Environment::exchange(recorder_->port());
    log_->end();
}

void Recording::note(Lane lane, const std::string& title, const Dictionary& data) {
    log_->add({lane, EntryKind::note, title, data});
}

void Recording::event(const std::string& name, const Dictionary& data) {
    log_->add({Lane::coreServices, EntryKind::event, name, data});
}

void Recording::picture(const std::string& name, const std::string& pngPath) {
    std::ifstream file(pngPath, std::ios::binary);
    std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (!bytes.starts_with("\x89PNG")) {
        log_->add(
            {Lane::host, EntryKind::note, "there is no picture of " + name, {{"file", pngPath}}});
        return;
    }
    log_->add({Lane::host,
               EntryKind::picture,
               name,
               {},
               std::make_shared<const std::string>(std::move(bytes))});
}

std::shared_ptr<ZorvikCheckoutSDKDelegate> Recording::delegate(
    std::weak_ptr<ZorvikCheckoutSDKDelegate> host) {
    return std::make_shared<TracedDelegate>(std::move(host));
}

Result<std::size_t> Recording::writeHtml(const std::string& path) const {
    return write(path, htmlOf(log_->contents()));
}

Result<std::size_t> Recording::writeSequence(const std::string& path) const {
    return write(path, sequenceOf(log_->contents()));
}

struct Step::Scope {
    explicit Scope(std::shared_ptr<Log> recording, Entry entry)
        : log(std::move(recording)), cause(*log, log->add(std::move(entry))) {}

    const std::shared_ptr<Log> log;
    const Cause cause;
};

Step::Step(Lane lane, const char* title, const Dictionary& data, Kind kind) {
    auto log = currentLog();
    if (!log) return;
    const EntryKind entry = kind == Kind::call ? EntryKind::call : EntryKind::answer;
    scope_ = std::make_unique<Scope>(std::move(log), Entry{lane, entry, title, data});
}

Step::~Step() = default;

void Step::event(const std::string& name, const Dictionary& data) {
    if (const auto log = currentLog()) {
        log->add({Lane::coreServices, EntryKind::event, name, data});
    }
}

OnFailure::OnFailure(std::string path, std::function<bool()> hasFailed)
    : path_(std::move(path)),
      hasFailed_(std::move(hasFailed)),
      recording_(std::make_unique<Recording>()) {}

OnFailure::~OnFailure() {
    if (!hasFailed_()) return;
    const auto written = recording_->writeHtml(path_);
    const std::string sentence =
        written ? "what happened is in " + path_ : written.error().localizedDescription;
    std::fprintf(stderr, "zorvik: trace: %s\n", sentence.c_str());
}

}  // namespace zorvik::trace
