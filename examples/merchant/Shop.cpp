#include "examples/merchant/Shop.h"

#include "examples/common/Money.h"
#include "examples/common/OrderRecordJSON.h"
#include "platform/foundation/Shortened.h"

namespace zorvik::demo {

using platform::Dictionary;

namespace {

// The order's status wherever the answer keeps it: at the top, as the checkout page writes it, or
// within "order", as an enquiry does.
std::string statusIn(const Dictionary& data) {
    const auto order = data.find("order");
    if (order != data.end() && order->second.dictionary()) {
        return textOf(*order->second.dictionary(), "status");
    }
    return textOf(data, "status");
}

// An order token is longer than anybody reads.
std::string shortened(const std::string& text) {
    constexpr std::size_t most = 32;
    if (text.size() <= most) return text;
    std::size_t end = most;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xc0) == 0x80)
        --end;
    return text.substr(0, end) + "…";
}

}  // namespace

const std::vector<BasketItem>& basket() {
    static const std::vector<BasketItem> items{
        {"Brass desk lamp", "Warm light, dimmable", "1899.00"},
        {"Handmade paper", "A5, 40 sheets, deckle edge", "649.00"},
    };
    return items;
}

std::string basketTotal() {
    return "2548.00";
}

std::string payTitle() {
    return "Pay " + moneyText(basketTotal(), "INR");
}

Outcome outcomeOf(const Dictionary& data) {
    using enum Outcome::Kind;
    const std::string status = statusIn(data);
    const std::string error = textOf(data, "error");
    if (status == "CANCELLED" || error == "Payment cancelled by user") {
        return {cancelled, "Not paid", "You left the payment. Your basket is waiting for you.",
                "Back to the basket"};
    }
    if (data.contains("error") || status == "FAILED") {
        const std::string message = error.empty() ? textOf(data, "message") : error;
        return {failure, "Payment not completed",
                message.empty() ? "Nothing was charged for this order." : message,
                "Back to the basket"};
    }
    if (status == "SUCCESS") {
        return {success, "Thank you", "Your order is on its way to you.", "Done"};
    }
    return {unknown, "Payment under way", "We will write as soon as your bank confirms it.",
            "Done"};
}

std::string inShort(const Dictionary& data) {
    static constexpr const char* names[] = {"SUCCESS", "FAILURE", "CANCELLED", "UNKNOWN"};
    const std::string name = names[static_cast<std::size_t>(outcomeOf(data).kind)];
    const std::string error = textOf(data, "error");
    std::string words = error.empty() ? statusIn(data) : error;
    if (words == "FAILED") words = textOf(data, "message");
    return words.empty() || words == name ? name : name + " (" + platform::shortened(words) + ")";
}

std::vector<std::pair<std::string, std::string>> rowsOf(const Dictionary& data) {
    std::vector<std::pair<std::string, std::string>> rows;
    for (const auto& [key, value] : data)
        rows.emplace_back(key, shortened(platform::description(value)));
    if (rows.empty()) rows.emplace_back("(an empty dictionary)", "");
    return rows;
}

}  // namespace zorvik::demo
