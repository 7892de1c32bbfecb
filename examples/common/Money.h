#pragma once

#include <string>

namespace zorvik::demo {

// "₹1,23,456.50"; other currencies by their code.
std::string moneyText(const std::string& amount, const std::string& currency);

}  // namespace zorvik::demo
