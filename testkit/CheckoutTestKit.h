#pragma once

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "platform/foundation/Export.h"
#include "platform/foundation/Value.h"
#include "platform/headless/HeadlessPlatform.h"
#include "platform/uikit/UIViewController.h"
#include "testkit/RecordingDelegate.h"
#include "testkit/ScriptedCoreServices.h"
#include "zorvik_mobile_kit_ios_webview_sdk/ZorvikCheckoutSDK.h"

namespace zorvik {
class ZorvikCheckoutWebView;
}

namespace zorvik::testkit {

// A UPI app of the customer's, by what comes of picking it.
enum class UPIApp { opens, refusesToOpen, notInstalled };

// What a UPI app says in the address by which it hands control back; unknown: a word of its own.
enum class UPIStatus { success, failure, cancelled, unknown };

// How the page writes its response.
enum class Encoding { json, base64 };

// A customer, a checkout page, UPI apps and core services for the tests of a host: each member says
// what happens, runs until nothing is left to run and returns, and the test looks at what the host
// made of it. Nothing sleeps and nothing needs a display: time is virtual. For any test framework;
// a member called where it cannot be ends the process with a sentence that says what to call first.
//
// The kit is the platform: it installs the headless port, with a window's presenter, and puts the
// checkout object back to before its first use, at its begin and at its end. One at a time; main
// thread, the one that makes it.
class ZORVIK_API CheckoutTestKit {
  public:
    static constexpr const char* orderId = "order-1";
    static constexpr const char* subMerchantId = "merchant-1";
    static constexpr const char* transactionId = "transaction-1";

    // The checkout object's delegate is the kit's own recorder until a test sets another.
    CheckoutTestKit();
    CheckoutTestKit(const CheckoutTestKit&) = delete;
    CheckoutTestKit& operator=(const CheckoutTestKit&) = delete;
    ~CheckoutTestKit();

    // What a host's code is given. The token's claims are orderId and subMerchantId.
    ZorvikCheckoutSDK& sdk() const { return ZorvikCheckoutSDK::shared(); }
    const std::shared_ptr<platform::UIViewController>& presenter() const { return presenter_; }
    static std::string orderToken();

    // What the next checkouts meet. Holds until something else is said.
    void orderUpdateFails(const std::string& description = "no connection");
    void appListFails(const std::string& description = "no connection");
    void appListIs(const std::vector<UPIAppsVO>& apps);
    // The order's status is what the page is told after a quick return.
    void enquiryAnswers(const platform::Dictionary& response,
                        const std::string& orderStatus = "SUCCESS");
    void enquiryFails(const std::string& description = "no connection");
    void pageCannotBeReached(const std::string& description = "Could not connect to the server.");
    void pageCanBeReached();

    // Starts a checkout on the kit's presenter; its screen and page are there when this returns,
    // unless a failure was asked for. A host's own code that starts one needs a settle() after it.
    void openCheckout();
    void openCheckout(const ZorvikCheckoutOptions& options);

    // The customer, whose screen is open; to pick an app it shows its page.
    void customerPicks(UPIApp app);
    // Back from the UPI app that was opened, so long after it was: less than five seconds is a
    // quick return. Never before now.
    void customerComesBackAfter(double seconds);
    void customerPressesBack();
    void customerPressesRetry();
    // With the screen on it; another window takes its place, with a presenter of its own.
    void windowCloses();

    // The UPI app hands control back by its address, with these and, unless given, "tr" =
    // transactionId. The screen is open and shows its page.
    void upiAppReturns(UPIStatus status, std::map<std::string, std::string> parameters = {});

    // The page of the open screen hands back its response, which ends the checkout.
    void pageAnswers(const platform::Dictionary& payload, Encoding encoding = Encoding::json);
    void pageAnswersTwice(const platform::Dictionary& first, const platform::Dictionary& second);
    // A response that is neither JSON nor base64 of it; a redirect that has no response at all.
    void pageAnswersUnreadably();
    void pageAnswersWithoutResponse();

    // Runs everything that waits, and lets a slide of a screen end: 0.35 seconds go by.
    void settle();
    // Lets time go by, and runs what comes due and what comes of it.
    void advance(double seconds);

    // What came of it. The last response ends the process when there is none.
    const std::vector<platform::Dictionary>& responses() const { return delegate_->responses(); }
    const platform::Dictionary& lastResponse() const;
    bool isScreenOpen() const { return screen() != nullptr; }
    bool isRetryShown() const;
    // What the page was posted, oldest first.
    const std::vector<platform::Dictionary>& messagesToPage() const { return messagesToPage_; }
    std::vector<Event> events() const { return core().events(); }
    std::vector<std::string> eventNames() const;
    // Recorded, not printed.
    std::vector<std::string> consoleLines() const { return console_.lines(); }

    // For what the kit has no word for.
    platform::headless::HeadlessPlatform& platform() const { return *platform_; }
    ScriptedCoreServices& core() const { return ScriptedCoreServices::instance(); }
    const std::shared_ptr<RecordingDelegate>& delegate() const { return delegate_; }
    std::shared_ptr<ZorvikCheckoutWebView> screen() const;
    // The page of the open screen.
    platform::headless::ScriptedPage& page() const { return pageFor("page"); }

  private:
    // The console's sink for as long as it lives.
    class ConsoleRecording {
      public:
        ConsoleRecording();
        ConsoleRecording(const ConsoleRecording&) = delete;
        ConsoleRecording& operator=(const ConsoleRecording&) = delete;
        ~ConsoleRecording();
        std::vector<std::string> lines() const;

      private:
        mutable std::mutex mutex_;
        std::vector<std::string> lines_;
    };

    void require(bool condition, const char* call, const std::string& otherwise) const;
    void requireScreen(const char* call) const;
    platform::headless::ScriptedPage& pageFor(const char* call) const;
    void openWindow();
    void recordMessage(const std::string& script);
    void respond(const char* call, const std::vector<std::string>& responses);

    // What the port may still call when it ends comes before it.
    ConsoleRecording console_;
    std::optional<platform::Error> pageError_;
    std::vector<platform::Dictionary> messagesToPage_;
    const std::unique_ptr<platform::headless::HeadlessPlatform> platform_ =
        std::make_unique<platform::headless::HeadlessPlatform>();
    std::shared_ptr<RecordingDelegate> delegate_ = std::make_shared<RecordingDelegate>();
    std::shared_ptr<platform::UIViewController> presenter_;
};

}  // namespace zorvik::testkit
