#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "core/development/OrderBook.h"
#include "examples/backend/Http.h"
#include "examples/common/DemoUPIApps.h"

namespace zorvik::demo {

// The demonstration's payment service: orders for the merchant, methods and payments for the
// hosted checkout page, and the desk at which UPI apps report as a bank would. Answers requests;
// knows nothing of sockets. One thread.
class Backend {
  public:
    // pagesFolder holds the checkout page's files; the page itself is answered, and hears of a
    // UPI app's report, so many milliseconds late, as over a network.
    Backend(std::string pagesFolder, unsigned latency)
        : pagesFolder_(std::move(pagesFolder)), latency_(latency) {}

    // Where the pages are served, and the same place under another host name, where the
    // demonstration's banks live.
    void setOrigins(std::string origin, std::string bankOrigin);

    HttpResponse handle(const HttpRequest& request);

  private:
    // A UPI payment request that was handed to an app.
    struct Collection {
        std::string orderId;
        const DemoUPIApp* app = nullptr;
        std::optional<std::chrono::steady_clock::time_point> reported;
        std::optional<std::string> returnStatus;  // the app's word for the return address
        bool returnsReference = true;
    };

    using Fields = platform::Dictionary;
    using Handler = HttpResponse (Backend::*)(const HttpRequest&, const Fields& body,
                                              const std::string& name);

    // "*" in a pattern stands for one path segment, handed to the handler as `name`.
    struct Route {
        const char* method;
        const char* pattern;
        Handler handler;
    };
    static const std::vector<Route>& routes();

    // For the merchant.
    HttpResponse createOrder(const HttpRequest&, const Fields&, const std::string&);
    HttpResponse readOrder(const HttpRequest&, const Fields&, const std::string& orderId);
    HttpResponse updateOrder(const HttpRequest&, const Fields&, const std::string& orderId);
    HttpResponse recordPayment(const HttpRequest&, const Fields&, const std::string& orderId);
    // For the page (CheckoutAPI.cpp). Each needs the order's token.
    HttpResponse readCheckout(const HttpRequest&, const Fields&, const std::string&);
    HttpResponse readTransaction(const HttpRequest&, const Fields&, const std::string&);
    HttpResponse payByCard(const HttpRequest&, const Fields&, const std::string&);
    HttpResponse startBankPayment(const HttpRequest&, const Fields&, const std::string&);
    HttpResponse answerBankPayment(const HttpRequest&, const Fields&, const std::string&);
    HttpResponse startUpiPayment(const HttpRequest&, const Fields&, const std::string&);
    HttpResponse closePayments(const HttpRequest&, const Fields&, const std::string&);
    // For the UPI apps and for the demonstration's scenarios.
    HttpResponse reportFromUpiApp(const HttpRequest&, const Fields&, const std::string&);
    HttpResponse setFaults(const HttpRequest&, const Fields&, const std::string&);
    HttpResponse writeJournal(const HttpRequest&, const Fields&, const std::string&);
    // Files of the pages.
    HttpResponse servePage(const HttpRequest&, const Fields&, const std::string&);
    HttpResponse serveIcon(const HttpRequest&, const Fields&, const std::string& name);

    HttpResponse serveFile(const std::string& name, const std::string& contentType) const;
    platform::Result<development::OrderRecord> orderByToken(const std::string& token);
    std::string newTransactionId();
    HttpResponse settle(const std::string& orderId, const development::Payment& payment);
    // Whether the page may know by now what the app reported.
    bool isHandedBack(const Collection& collection) const;
    // Where the page goes once the app has handed the payment back; "" before.
    std::string wayBack(const std::string& token, const std::string& transactionId) const;
    std::string processingPage(const std::string& token, const std::string& transactionId) const;
    void closeOpenPayments(const development::OrderRecord& order);

    std::string pagesFolder_;
    unsigned latency_;
    std::string origin_;
    std::string bankOrigin_;
    development::MemoryOrderBook book_;
    std::map<std::string, Collection> collections_;  // by transaction id
    unsigned lastTransaction_ = 0;
    bool enquiryFails_ = false;
    bool arePagesGone_ = false;
    bool isNetworkGone_ = false;
};

}  // namespace zorvik::demo
