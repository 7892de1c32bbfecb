#include "tests/component/CheckoutFixture.h"

namespace zorvik {
namespace {

class CheckoutUrlTest : public CheckoutTest {};

TEST_F(CheckoutUrlTest, TheAddressHoldsTheTokenAndWhatIsPreselectedOrThePanelIsShown) {
    const std::string plain = "https://pay.example/checkout";
    const struct {
        const char* name;
        std::string base;
        ZorvikCheckoutOptions options;  // token, wallet, flow, mode, bank
        std::optional<std::string> url;
    } cases[] = {
        {"placeholder", plain + "?token=%@", optionsOf("abc"), plain + "?token=abc"},
        {"nothing for an empty bank code",
         plain,
         {"abc", "W1", std::nullopt, "UPI", ""},
         plain + "?token=abc&payment_mode=UPI&wallet_code=W1"},
        {"everything, in order",
         plain,
         {"abc", "W1", "F", "NB", "B 1"},
         plain + "?token=abc&payment_mode=NB&bank_code=B%201&wallet_code=W1&payment_flow=F"},
        {"a query is replaced, a fragment stays", plain + "?x=1#top", optionsOf("abc"),
         plain + "?token=abc#top"},
        {"every placeholder goes", "https://pay.example/?token=%@a?token=%@", optionsOf("t"),
         "https://pay.example/a?token=t"},
        {"no token", plain, optionsOf(std::nullopt), std::nullopt},
        {"a broken escape in the base", plain + "/%zz", optionsOf("t"), std::nullopt},
        {"not ASCII", "https://pay.example/é", optionsOf("t"), std::nullopt},
        {"what is escaped", plain, optionsOf("a&b=c+d e/é?:@!$'()*,;#%[]{}\"\\^`|<>~-._"),
         plain + "?token=a%26b%3Dc+d%20e/%C3%A9?:@!$'()*,;"
                 "%23%25%5B%5D%7B%7D%22%5C%5E%60%7C%3C%3E~-._"},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.name);
        core.webViewViewUrl = row.base;
        presentScreen(row.options);
        EXPECT_EQ(isErrorShown(), !row.url);
        ASSERT_EQ(page().requests().size(), row.url ? 1u : 0u);
        for (const auto& request : page().requests()) {
            EXPECT_EQ(request.url.absoluteString(), *row.url);
            EXPECT_EQ(request.timeoutInterval, 60);
        }
        dismissScreen();
    }
}

}  // namespace
}  // namespace zorvik
