#pragma once

#include <string>
#include <utility>
#include <vector>

#include "platform/foundation/Value.h"

namespace zorvik::demo {

// What the shop shows, whichever toolkit draws it.

inline constexpr const char* shopName = "Teal Heron";
inline constexpr const char* detailsTitle = "Developer details";

struct BasketItem {
    std::string name;
    std::string detail;
    std::string amount;  // "1899.00"
};

const std::vector<BasketItem>& basket();
std::string basketTotal();
// The title of the basket's button.
std::string payTitle();

// What a customer reads when a checkout has ended.
struct Outcome {
    enum class Kind { success, failure, cancelled, unknown };

    Kind kind;
    std::string title;
    std::string words;
    std::string action;  // of the button below: back to the basket, or done
};

// What became of the payment that the checkout told of with this dictionary.
Outcome outcomeOf(const platform::Dictionary& data);
// The outcome in a few words: "SUCCESS", "FAILURE (Declined in Nilgiri Pay)", personal data
// shortened.
std::string inShort(const platform::Dictionary& data);
// The dictionary as the shop shows it to a developer, long values shortened.
std::vector<std::pair<std::string, std::string>> rowsOf(const platform::Dictionary& data);

}  // namespace zorvik::demo
