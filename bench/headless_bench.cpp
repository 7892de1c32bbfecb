// Ratios of the component's own work to the least that work could be, each within one run: the two
// sides take turns, and the medians are compared. Console lines go to standard output (send it to
// /dev/null), figures to standard error.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "core/development/DevelopmentCore.h"
#include "core/development/OrderToken.h"
#include "platform/foundation/Console.h"
#include "platform/foundation/Data.h"
#include "platform/foundation/JSONSerialization.h"
#include "platform/headless/HeadlessPlatform.h"
#include "platform/runtime/DispatchQueue.h"
#include "zorvik_mobile_kit_ios_webview_sdk/ZorvikCheckoutSDK.h"
#include "zorvik_mobile_kit_ios_webview_sdk/ZorvikCheckoutWebView.h"

namespace {

using namespace zorvik;

double secondsOf(const std::function<void()>& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

// Runs both sides in turn, 41 batches each.
void compare(const char* name, int batch, const std::function<void()>& work,
             const std::function<void()>& least) {
    std::vector<double> workSeconds;
    std::vector<double> leastSeconds;
    const auto many = [batch](const std::function<void()>& once) {
        return [batch, &once] {
            for (int count = 0; count < batch; ++count) {
                once();
            }
        };
    };
    for (int round = 0; round < 41; ++round) {
        workSeconds.push_back(secondsOf(many(work)));
        leastSeconds.push_back(secondsOf(many(least)));
    }
    const double microseconds = 1e6 / batch;
    std::fprintf(stderr, "%-28s %8.2f us against %8.2f us, ratio %.2f\n", name,
                 median(workSeconds) * microseconds, median(leastSeconds) * microseconds,
                 median(workSeconds) / median(leastSeconds));
}

std::string sampleToken() {
    return development::makeOrderToken({{"order_id", "ORD-20417"},
                                        {"sub_merchant_id", "SM-1001"},
                                        {"amount", 149900},
                                        {"currency", "INR"},
                                        {"merchant", "Juniper & Oak Books"},
                                        {"issued_at", 1763844000}});
}

volatile std::size_t keptAlive = 0;

void compareClaims() {
    const std::string token = sampleToken();
    const std::size_t first = token.find('.') + 1;
    const std::string segment = token.substr(first, token.find('.', first) - first);
    compare(
        "both claims of a token", 500,
        [&] {
            keptAlive = ZorvikCheckoutSDK::getOrderID(token).size() +
                        ZorvikCheckoutSDK::getSubMerchantID(token).size();
        },
        [&] {
            const auto bytes = platform::base64Decode(segment);
            keptAlive = platform::JSONSerialization::jsonObject(
                            *bytes, platform::JSONSerialization::ReadingOptions::none)
                            .isSuccess();
        });
}

void compareDecision() {
    const std::string address =
        "http://127.0.0.1:8080/checkout/methods?order=ORD-20417&method=card&step=2";
    auto& view = *platform::makeOnMainThread<platform::WKWebView>(
        platform::Rect{}, platform::WKWebViewConfiguration{});
    const auto screen =
        ZorvikCheckoutWebView::initWithOptions({sampleToken(), {}, {}, {}, {}}, std::nullopt);
    const platform::WKNavigationAction action{{platform::URL::parse(address)}};

    std::vector<std::string> lines;
    platform::setConsoleSink([&](std::string_view line) { lines.emplace_back(line); });
    screen->webViewDecidePolicyFor(view, action, [](platform::WKNavigationActionPolicy) {});
    platform::setConsoleSink({});
    compare(
        "an ordinary decision", 100,
        [&] {
            screen->webViewDecidePolicyFor(view, action, [](platform::WKNavigationActionPolicy) {});
        },
        [&] {
            for (const auto& line : lines) {
                platform::printLine(line);
            }
        });
}

struct Receiver : ZorvikCheckoutSDKDelegate {
    int results = 0;
    void onCheckoutResponse(const platform::Dictionary&) override { ++results; }
};

// From the host's call to its callback and the screen's dismissal: the page loads, is given the
// apps, and goes to the response address.
void countCheckouts(platform::headless::HeadlessPlatform& port) {
    auto& core = development::DevelopmentCore::shared();
    const auto receiver = std::make_shared<Receiver>();
    auto& sdk = ZorvikCheckoutSDK::shared();
    sdk.setDelegate(receiver);
    const auto presenter = platform::makeOnMainThread<platform::UIViewController>();
    presenter->view();

    constexpr int checkouts = 300;
    const double seconds = secondsOf([&] {
        for (int count = 0; count < checkouts; ++count) {
            std::string token;
            core.createOrder(1499, "INR", {}, std::nullopt,
                             [&](const platform::Result<OrderResponse>& created) {
                                 token = created.value().orderToken.value();
                             });
            port.scheduler().settle();
            sdk.checkout(presenter, {token, {}, {}, {}, {}});
            port.scheduler().settle();
            port.scheduler().advanceBy(1);
            port.web().page().navigate(
                "http://127.0.0.1/response?response=%7B%22payload%22:%7B%22paid%22:true%7D%7D");
            port.scheduler().settle();
            port.scheduler().advanceBy(1);
        }
    });
    std::fprintf(stderr, "%-28s %8.0f a second on one core (%d of %d answered)\n",
                 "whole headless checkouts", checkouts / seconds, receiver->results, checkouts);
}

}  // namespace

int main() {
    platform::headless::HeadlessPlatform port;
    port.web().onLoad([](const std::string&) { return platform::headless::ScriptedLoad{}; });
    port.web().onEvaluate([](const std::string&) { return platform::ScriptValue{}; });
    development::Configuration configuration;
    configuration.webViewViewUrl = "http://127.0.0.1:8080/checkout?token=%@";
    configuration.webViewRespCheckUrl = "http://127.0.0.1/response";
    configuration.upiApps = {{{"one", "Kestrel Pay", "app.kestrel", "data:,"}, "kestrel"},
                             {{"two", "Bluebell", "app.bluebell", "data:,"}, "bluebell"}};
    configuration.runInBackground = [](std::function<void()> task) {
        using platform::DispatchQueue;
        DispatchQueue::global(DispatchQueue::QualityOfService::background).async(std::move(task));
    };
    development::DevelopmentCore::shared().configure(std::move(configuration));

    compareClaims();
    compareDecision();
    countCheckouts(port);
    return 0;
}
