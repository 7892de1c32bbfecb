#pragma once

#include <array>

namespace zorvik {

// The entries of the user defaults that remember a hand-off to a UPI app: the transaction id and
// the app's package name as strings, the moment of the hand-off as a date.
struct TransactionRecord {
    static constexpr auto transactionId = "current_transaction_id";
    static constexpr auto packageName = "current_package_name";
    static constexpr auto startTime = "transaction_start_time";
    // In the order in which they are written and removed.
    static constexpr std::array keys{transactionId, packageName, startTime};
};

}  // namespace zorvik
