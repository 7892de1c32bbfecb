#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>

#include "platform/foundation/Error.h"
#include "platform/foundation/Export.h"
#include "platform/foundation/Value.h"
#include "zorvik_mobile_kit_ios_webview_sdk/ZorvikCheckoutDelegates.h"

namespace zorvik::trace {

class Log;
class Recorder;

// Who does something in a checkout. The main queue's lane has its turns, its timers and the
// background tasks.
enum class Lane { host, facade, screen, page, coreServices, upiApp, mainQueue };

// Records what passes between the toolkit and the installed port, the console's lines and what it
// is told, each with what brought it about, and writes it as a page for people. In the way of
// everything while it lives, in the way of nothing before and after. Order tokens and personal data
// are shortened as they are recorded; of a run of many thousand entries the latest are kept.
//
// Main thread; made after the platform and destroyed before it. One at a time: a second one is a
// programming error.
class ZORVIK_API Recording {
  public:
    Recording();
    Recording(const Recording&) = delete;
    Recording& operator=(const Recording&) = delete;
    ~Recording();

    // An entry of the host's own. Any thread.
    void note(Lane lane, const std::string& title, const platform::Dictionary& data = {});
    // An event that the core services were told, for an event sink. Any thread.
    void event(const std::string& name, const platform::Dictionary& data);
    // A PNG file, read now and shown at this moment. One that cannot be read is noted as such.
    void picture(const std::string& name, const std::string& pngPath);
    // A receiver for the checkout object that records each result and hands it on. The caller keeps
    // it, the checkout object does not.
    std::shared_ptr<ZorvikCheckoutSDKDelegate> delegate(
        std::weak_ptr<ZorvikCheckoutSDKDelegate> host);

    // What was recorded so far, as one page that needs no other file and no network. The number of
    // bytes written, or an Error when the file cannot be.
    platform::Result<std::size_t> writeHtml(const std::string& path) const;
    // The same as a sequence diagram (SVG) of what matters to a reader of documents.
    platform::Result<std::size_t> writeSequence(const std::string& path) const;

  private:
    class ConsoleTap;
    struct FormerConsole;

    const std::shared_ptr<Recorder> recorder_;
    const std::shared_ptr<Log> log_;
    const std::shared_ptr<FormerConsole> formerConsole_;
};

// An entry in the recording in force, for code that does not have it at hand, and the cause of what
// happens on this thread while it lives. Nothing without a recording. Any thread.
class ZORVIK_API Step {
  public:
    enum class Kind { call, answer };

    Step(Lane lane, const char* title, const platform::Dictionary& data = {},
         Kind kind = Kind::call);
    Step(const Step&) = delete;
    Step& operator=(const Step&) = delete;
    ~Step();

    // The same without becoming a cause.
    static void event(const std::string& name, const platform::Dictionary& data);

  private:
    struct Scope;
    std::unique_ptr<Scope> scope_;
};

// Records from here to the end of the scope, and writes the page there when the test has failed by
// then. For any test framework:
//
//     const zorvik::trace::OnFailure trace("trace.html",
//                                          [] { return testing::Test::HasFailure(); });
class ZORVIK_API OnFailure {
  public:
    OnFailure(std::string path, std::function<bool()> hasFailed);
    OnFailure(const OnFailure&) = delete;
    OnFailure& operator=(const OnFailure&) = delete;
    // Says on standard error where the page is, or why there is none.
    ~OnFailure();

    Recording& recording() const { return *recording_; }

  private:
    const std::string path_;
    const std::function<bool()> hasFailed_;
    const std::unique_ptr<Recording> recording_;
};

}  // namespace zorvik::trace
