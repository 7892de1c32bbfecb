#pragma once

#include <array>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/headless/HeadlessPlatform.h"
#include "platform/uikit/UIViewController.h"
#include "testkit/ScriptedCoreServices.h"
#include "testkit/Story.h"
#include "zorvik_mobile_kit_ios_webview_sdk/ZorvikCheckoutSDK.h"
#include "zorvik_mobile_kit_ios_webview_sdk/ZorvikCheckoutWebView.h"

namespace zorvik::testkit {

// Plays one script on a platform of its own and keeps what came of it. Main thread; one at a time.
class StoryPlayer {
  public:
    using MakeDelegate = std::function<std::shared_ptr<ZorvikCheckoutSDKDelegate>()>;
    // Called at each of the story's moments; false: the story ends here.
    using Look = std::function<bool(const Story& story, Story::Moment moment)>;

    StoryPlayer(const Script& script, const MakeDelegate& makeDelegate);
    StoryPlayer(const StoryPlayer&) = delete;
    StoryPlayer& operator=(const StoryPlayer&) = delete;
    ~StoryPlayer();

    void play(const Look& look);

  private:
    class Host;
    using Page = platform::headless::ScriptedPage;
    using Screen = ZorvikCheckoutWebView;

    // What an address gives the component cause for, once it is asked for or looked at.
    struct Owed {
        std::string cause;
        std::size_t checkout = 0;
        platform::Dictionary data;
        std::size_t turnsLater = 0;
        bool wasAskedFor = false;
    };
    struct Enquiry {
        std::size_t checkout = 0;
        bool isOfSuccess = false;  // of a UPI app's success, whose answer is reported
    };

    // StoryPlayer.cpp: the script, time, threads and the platform
    void perform(const Step& step);
    void end(const Look& look);
    bool lookWhenIdle(const Look& look);
    void runTurns(unsigned way);
    bool runTurn();
    void runUntilIdle();
    void runBackground(unsigned way);
    void runAllBackground();
    void passSeconds(double seconds);
    std::size_t turn() const;
    void makePlatform();
    void endPlatform();
    void restartAsAnotherProcess();
    // After anything that may have changed what is shown or alive.
    void takeStock();
    void excuseWhatCannotCome();

    // StoryPlayerPage.cpp: the page and the UPI apps
    Page* page() const;
    // The checkout in whose address its token stands, by its place; the youngest when none does.
    std::size_t checkoutOf(std::string_view address) const;
    std::size_t checkoutOf(const Page& page) const;
    platform::headless::ScriptedLoad answerLoad(const std::string& url);
    platform::Result<platform::ScriptValue> answerScript(const std::string& script);
    std::string addressFor(unsigned way, std::size_t checkout);
    std::string responseAddress(const char* base, const std::string& response, Owed owed);
    std::string returnAddress(unsigned way, std::size_t checkout);
    void go(Page& from, const std::string& url);
    void goInSubframe(unsigned way);
    void pushState(unsigned way);
    void post(unsigned way);
    void changeApp(unsigned way);
    void noteInjection();
    void oweForIntent(const std::string& body, std::size_t checkout);

    // StoryPlayerHost.cpp: the host and its customer
    ZorvikCheckoutSDK& sdk();
    void startCheckout(unsigned way);
    void changeDelegate(unsigned way);
    void pressBack(unsigned way);
    void dismiss(bool animated);
    void closeWindow(unsigned way);
    void doAsHost(unsigned way);
    void pressRetry();
    void customerComesBack();
    void reset();
    void react();
    std::shared_ptr<Screen> youngestScreen() const;
    bool isAlive(int host) const;

    // StoryPlayerRecord.cpp: the core services, and what happened
    void forgetCalls();
    void setAnswers(std::size_t number);
    void giveAnswer(unsigned way);
    void called(const CoreCall& call);
    void answered(const CoreCall& call);
    void heardLine(std::string_view line);
    void heardEvent(const Event& event);
    void hostWasGiven(int host, const platform::Dictionary& data);
    void owe(const Owed& owed, bool isByFacade = false);
    void request(std::string text, std::size_t checkout,
                 StoryRequest::Excuse excuse = StoryRequest::Excuse::screenLeft,
                 bool isInBackground = false);
    void excuseScripts();
    void noteScript(std::string_view line);
    bool isExcused(const StoryRequest& request) const;
    // True when a request for this text was open; it no longer is.
    bool isRequested(const std::string& text);
    Happening happening(Happening::Kind kind) const;
    platform::Dictionary failure(std::size_t checkout, const std::string& error) const;

    Story story_;
    const MakeDelegate& makeDelegate_;
    const bool usesThread_;
    std::unique_ptr<platform::headless::HeadlessPlatform> platform_;
    std::size_t formerTurns_ = 0;  // of platforms that ended
    bool isUsed_ = false;          // the facade, since the last reset
    unsigned number_ = 0;          // tells apart what has to be
    unsigned loadsWay_ = 0;
    unsigned scriptsWay_ = 0;
    unsigned coreWay_ = 0;
    unsigned reaction_ = 0;
    bool looksAtOldest_ = false;
    std::array<std::shared_ptr<platform::UIViewController>, 2> presenters_;
    std::vector<std::shared_ptr<Host>> hosts_;  // those alive
    int lastHost_ = 0;
    int currentHost_ = 0;                       // the facade's delegate; 0: none
    std::optional<std::size_t> facadesScreen_;  // the checkout whose screen it made last
    std::shared_ptr<Screen> heldScreen_;
    std::map<std::string, Owed, std::less<>> owed_;            // by address
    std::map<std::string, std::string, std::less<>> intents_;  // body: the line that ends it
    std::map<std::size_t, Enquiry> enquiries_;                 // by the call's number
    std::map<std::size_t, bool> failing_;                      // calls: whether the answer fails
    std::deque<std::pair<std::string, std::size_t>> waitingLaunches_;  // the line, the checkout
    bool isAppSlow_ = false;
    std::string lastLine_;
    std::size_t firstOpenRequest_ = 0;
    std::size_t firstOpenReport_ = 0;
};

}  // namespace zorvik::testkit
