// What a checkout prints, and which of its lines hold a token or the customer's data.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <sstream>

#include "core/development/DevelopmentCore.h"
#include "core/development/OrderToken.h"
#include "platform/foundation/Console.h"
#include "platform/headless/HeadlessPlatform.h"
#include "platform/runtime/Environment.h"
#include "platform/runtime/MainThread.h"
#include "zorvik_mobile_kit_ios_webview_sdk/ZorvikCheckout.h"

namespace zorvik {
namespace {

using platform::headless::ScriptedLoad, platform::headless::HeadlessPlatform;

const std::string vpa = "canary.asha@nilgiri";
const std::string phone = "9812345670";

// Prints the events, and what the port said of a failed load as it said it.
struct PrintingSink : development::JSONLinesEventSink {
    explicit PrintingSink(std::ostream& stream) : JSONLinesEventSink(stream), stream_(stream) {}
    void record(const development::RecordedEvent& event) override {
        JSONLinesEventSink::record(event);
        if (event.eventName != "WEBVIEW_FAILED") return;
        stream_ << platform::description(event.additionalData->at("error")) << '\n';
    }
    std::ostream& stream_;
};

// Everything a checkout can print about: an answer, a hand-off and both ways back from it, a page
// elsewhere, a load that fails.
struct CheckoutRun {
    CheckoutRun() {
        const auto order = book->create({.amountInMinorUnits = 100, .currency = "INR"});
        token = order.value().token;
        platform::setConsoleSink([this](std::string_view line) { console.emplace_back(line); });
        development::Configuration core;
        core.webViewViewUrl = "https://pay.example/checkout?token=%@";
        core.webViewRespCheckUrl = "https://pay.example/response";
        core.upiApps = {{{.upiAppName = "Nilgiri Pay", .packageName = "nilgiri"}, "shopreturn"}};
        core.runInBackground = platform::Environment::runInBackground;
        core.eventSink = std::make_shared<PrintingSink>(printed);
        core.orderBook = book;
        development::DevelopmentCore::shared().configure(core);
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        play();
        platform::setConsoleSink({});
        printed << testing::internal::GetCapturedStdout() << testing::internal::GetCapturedStderr();
    }

    void play() {
        HeadlessPlatform port;
        port.application().install("upi");
        port.web().onLoad([](const std::string&) { return ScriptedLoad(); });
        port.web().onEvaluate([](const std::string&) { return platform::ScriptValue(); });
        const auto presenter = platform::makeOnMainThread<platform::UIViewController>();
        presenter->setShownByStage(true);
        const auto settle = [&port] {
            port.scheduler().settle();
            port.scheduler().advanceBy(1);
            port.scheduler().settle();
        };
        const auto open = [&] {
            ZorvikCheckoutSDK::shared().checkout(presenter, {.orderToken = token});
            settle();
        };
        const std::string payer = "?pa=" + vpa + "&mobile=" + phone;
        open();
        const std::string url = "upi://pay" + payer;
        port.web().page().post("openUpiIntent",
                               {platform::ScriptValue::Type::string,
                                R"({"package_name":"nilgiri","tr":"T","url":")" + url + "\"}"});
        settle();
        port.application().becomeActive();
        port.web().page().showPanel({platform::ScriptPanel::Kind::alert, vpa, std::nullopt});
        port.web().page().navigate("https://bank.example/processing" + payer);
        settle();
        port.application().becomeActive();
        ZorvikCheckoutSDK::shared().handleDeviceBackButtonPress();
        settle();
        for (const char* status : {"success", "failure", "cancelled", "pending"}) {
            port.web().page().navigate("shopreturn://upi" + payer + "&tr=T&status=" + status);
            settle();
            open();
        }
        port.web().page().navigate(
            "https://pay.example/response?response={\"payload\":{\"vpa\":\"" + vpa +
            "\",\"mobile\":\"" + phone + "\"}}");
        settle();
        port.web().onLoad([](const std::string&) { return std::nullopt; });
        open();
        presenter->dismiss(false);
        settle();
        ZorvikCheckoutSDK::reset();
    }

    // The tags of the console lines that hold one of these.
    std::set<std::string> tagsWith(const std::vector<std::string>& secrets) const {
        std::set<std::string> tags;
        for (const auto& line : console) {
            const auto holds = [&](const auto& secret) { return line.find(secret) != line.npos; };
            if (std::ranges::any_of(secrets, holds))
                tags.insert(line.substr(0, line.find(']') + 1));
        }
        return tags;
    }

    const std::shared_ptr<development::MemoryOrderBook> book =
        std::make_shared<development::MemoryOrderBook>();
    std::string token;
    std::vector<std::string> console;
    std::ostringstream printed;
};

TEST(SecretsTest, OnlyTheComponentsOwnLinesHoldTokensAndPersonalDataAndTheseAreThey) {
    const CheckoutRun run;
    const std::string claims = run.token.substr(run.token.find('.') + 1, 20);
    for (const std::string& secret : {claims, vpa, phone, std::string("canary")})
        EXPECT_THAT(run.printed.str(), testing::Not(testing::HasSubstr(secret)));
    EXPECT_THAT(run.printed.str(),
                testing::HasSubstr("No answer is scripted for the load of https://pay.exam"));
    EXPECT_THAT(run.tagsWith({claims}),
                testing::ElementsAre("[APP STATE]", "[BACK HANDLER]", "[UPI RETURN]",
                                     "[UPI SCHEME]", "[URL INTERCEPT]"));
    EXPECT_THAT(
        run.tagsWith({vpa, phone}),
        testing::ElementsAre("[APP STATE]", "[BACK HANDLER]", "[REDIRECT]", "[UPI CANCELLATION]",
                             "[UPI FAILURE]", "[UPI RETURN]", "[UPI SCHEME]", "[UPI SUCCESS]",
                             "[UPI UNKNOWN]", "[URL INTERCEPT]", "[WEBVIEW]"));
}

}  // namespace
}  // namespace zorvik
