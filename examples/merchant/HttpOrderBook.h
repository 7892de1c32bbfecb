#pragma once

#include <optional>
#include <string>

#include "core/development/OrderBook.h"

namespace zorvik::demo {

// The orders of the demonstration's back end, so that they outlive the merchant's process. Each
// call waits for the network: not for the main thread. Any other thread.
class HttpOrderBook : public development::OrderBook {
  public:
    explicit HttpOrderBook(std::string backendUrl) : backendUrl_(std::move(backendUrl)) {}

    platform::Result<development::OrderRecord> create(
        const development::OrderDraft& draft) override;
    platform::Result<development::OrderRecord> updateDetails(
        const std::string& token, const std::string& orderId,
        const development::OrderDetails& details) override;
    platform::Result<development::OrderRecord> find(const std::string& token,
                                                    const std::string& orderId) override;
    platform::Result<development::OrderRecord> recordPayment(
        const std::string& orderId, const development::Payment& payment) override;

  private:
    // `what` is for a recording of the run.
    platform::Result<development::OrderRecord> ask(
        const char* what, const std::string& method, const std::string& url,
        const std::optional<platform::Dictionary>& body) const;
    std::string orderUrl(const std::string& orderId) const;

    const std::string backendUrl_;
};

}  // namespace zorvik::demo
