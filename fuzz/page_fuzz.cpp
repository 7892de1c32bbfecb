#include <cstdio>

#include "fuzz/Target.h"
#include "testkit/CheckoutExplorer.h"

namespace zorvik::fuzz {

using namespace testkit;

namespace {

// Two bytes a step: what a page, a customer, a host and a machine do, to the explorer's rules.
void check(std::string_view input) {
    constexpr std::size_t kinds = std::size_t{1} + static_cast<std::size_t>(Step::Kind::platform);
    constexpr std::size_t maximumSteps = 60;
    std::string lines;
    for (std::size_t at = 0; at + 1 < input.size() && at < 2 * maximumSteps; at += 2) {
        const auto kind = static_cast<unsigned char>(input[at]) % kinds;
        lines +=
            textOf(Step{static_cast<Step::Kind>(kind), static_cast<std::uint8_t>(input[at + 1])});
        lines += '\n';
    }
    const auto failure = CheckoutExplorer().replay(*scriptOf(lines));
    if (failure) std::fputs(textOf(*failure).c_str(), stderr);
    require(!failure, "every rule of a checkout");
}

const Target target("page", check);

}  // namespace
}  // namespace zorvik::fuzz
