#include "examples/common/Money.h"

namespace zorvik::demo {

std::string moneyText(const std::string& amount, const std::string& currency) {
    if (currency != "INR") return currency + " " + amount;
    const std::size_t point = amount.find('.');
    const std::string whole = amount.substr(0, point);
    const std::string cents = point == amount.npos ? "" : amount.substr(point);
    // Indian grouping: the last three digits, then pairs.
    std::string grouped;
    for (std::size_t i = 0; i < whole.size(); ++i) {
        const std::size_t left = whole.size() - i;
        if (i > 0 && left >= 3 && left % 2 == 1) grouped += ',';
        grouped += whole[i];
    }
    if (cents != ".00") grouped += cents;
    return "₹" + grouped;
}

}  // namespace zorvik::demo
