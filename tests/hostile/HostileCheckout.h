#pragma once

#include <gmock/gmock.h>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "testkit/RecordingDelegate.h"
#include "tests/component/ScriptedCore.h"
#include "tests/support/EngineProcesses.h"
#include "tests/support/MainThreadWatch.h"
#include "tests/support/RawServer.h"
#include "zorvik_mobile_kit_ios_webview_sdk/ZorvikCheckoutSDK.h"

namespace zorvik::tests {

// One checkout whose page is hostile, as the customer, the host and the machine meet it. The
// platform and the core services stay for the whole program: what a page leaves behind would meet
// the next. Nothing waits without a deadline; what did not come in time is a failure.
class HostileCheckout {
  public:
    HostileCheckout();
    ~HostileCheckout();

    // A page of the server's. Every page has the tools of `tools` before it.
    void serve(const std::string& path, const std::string& body);
    // Begins the checkout at this page of the server's, without waiting for it.
    void open(const std::string& path = "/hostile");

    bool waitUntil(const std::function<bool()>& condition, double seconds = 10);
    // The same for what is dear to ask or comes about without a turn of the main loop.
    bool askUntil(const std::function<bool()>& condition);
    // For what the console is to say, cut off after `longestLine` bytes.
    void waitForLine(const std::string& line, std::size_t times = 1);
    void waitForPanel(double seconds = 10);
    // Until the load of the checkout's page, or of a later one, has ended well.
    void waitForPage(std::size_t times = 1);
    void waitForPageOrPanel();
    void waitForRequest(const std::string& path, std::size_t times = 1);
    // The value of a script in the page, as text.
    std::string evaluated(const std::string& script);
    void waitForValue(const std::string& script, const std::string& value);
    void settle(double seconds);

    void clickUntilPanel();  // the customer's, impatiently
    void back();
    // The page opens a UPI app, and the hand-off is on record.
    void handOff();
    void becomeActive();
    // Ends all of a kind as the system would that has no memory left.
    void kill(EngineProcess kind);
    static void kill(const std::vector<pid_t>& processes);

    bool isScreenOpen() const;
    bool isPanelShown() const;
    std::size_t timesPrinted(const std::string& line) const;
    std::size_t timesPrintedFrom(const std::string& beginning) const;
    std::size_t eventCount(const std::string& name) const;

    // The three ways out.
    void pay();      // the page goes to the response, as often as it takes
    void retry();    // from the panel, on to an ordinary page, which pays
    void dismiss();  // the host takes the screen away
    // What the host must have heard after each of them.
    static Dictionary paid();
    static Dictionary paidOrdinarily();
    // Waits until nothing of the screen is left, then that nothing more is said or told.
    void waitForSilence();

    static constexpr std::size_t longestLine = 200;
    RawServer server;
    ScriptedCore& core;
    const std::shared_ptr<testkit::RecordingDelegate> host =
        std::make_shared<testkit::RecordingDelegate>();
    MainThreadWatch& watch;

    // What all rows share; made by the first checkout.
    static void endWorld();

  private:
    struct World;
    void click();
    void inATurn(const std::function<void()>& task);
    static World& world();
    static inline std::shared_ptr<World> world_;

    std::weak_ptr<platform::UIViewController> screen_;
    std::map<std::string, std::size_t> printed_;
    std::size_t lines_ = 0;
};

enum class Leaves {
    page,     // one that can still pay
    panel,    // the panel with Retry
    outcome,  // nothing: the host has its answer already
    nothing,  // a screen that answers only a dismissal
};

// A hostile page.
struct Row {
    const char* name;
    std::string page;
    // What happens besides and what must come of it; opens the checkout, or ordinarily finds it
    // open.
    std::function<void(HostileCheckout&)> story = {};
    Leaves leaves = Leaves::page;
    enum class Opens { before, inStory } opens = Opens::before;
    enum class Runs { always, atLength } runs = Runs::always;
};

std::vector<Row> messageRows();
std::vector<Row> navigationRows();
std::vector<Row> processRows();
std::vector<Row> textRows();

}  // namespace zorvik::tests
