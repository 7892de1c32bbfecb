#pragma once

#include <array>
#include <map>
#include <string>

namespace zorvik {

// Where a transaction id may stand, in order of preference. A key that is present gives the id even
// when its value is empty. A page's message and a UPI app's return URL prefer different keys.
using TransactionIdKeys = std::array<const char*, 9>;

inline constexpr TransactionIdKeys messageTransactionIdKeys{"transactionId",
                                                            "tr",
                                                            "txnId",
                                                            "txn_id",
                                                            "transaction_id",
                                                            "zorvikTransactionId",
                                                            "pspTransactionId",
                                                            "upiTransactionId",
                                                            "merchantTransactionId"};
inline constexpr TransactionIdKeys returnTransactionIdKeys{"tr",
                                                           "txnId",
                                                           "transactionId",
                                                           "txn_id",
                                                           "transaction_id",
                                                           "zorvikTransactionId",
                                                           "pspTransactionId",
                                                           "upiTransactionId",
                                                           "merchantTransactionId"};

// "" when none of the keys is present.
inline std::string transactionId(const std::map<std::string, std::string>& data,
                                 const TransactionIdKeys& keys) {
    for (const auto* key : keys) {
        if (const auto entry = data.find(key); entry != data.end()) return entry->second;
    }
    return "";
}

}  // namespace zorvik
