#pragma once

#include <algorithm>
#include <string_view>
#include <vector>

#include "platform/foundation/URLComponents.h"

namespace zorvik {

// The items of an address's query; none without a query.
inline std::vector<platform::URLQueryItem> queryItems(const platform::URLComponents& components) {
    return components.queryItems().value_or(std::vector<platform::URLQueryItem>());
}

// The first item that carries a payment response, whether it has a value or not; nullptr: none.
// Later ones are never looked at.
inline const platform::URLQueryItem* responseItem(
    const std::vector<platform::URLQueryItem>& items) {
    const auto item = std::find_if(items.begin(), items.end(), [](const auto& candidate) {
        return candidate.name == "response";
    });
    return item == items.end() ? nullptr : &*item;
}

}  // namespace zorvik
