#include "tests/component/CheckoutFixture.h"

namespace zorvik {
namespace {

class CheckoutUrlTest : public CheckoutTest {
  protected:
    // `url`: "" when the error panel is shown instead. Options: token, wallet, flow, mode, bank.
    void expectUrl(const char* name, const std::string& base, const ZorvikCheckoutOptions& options,
                   const std::string& url) {
        SCOPED_TRACE(name);
        core.webViewViewUrl = base;
        presentScreen(options);
        EXPECT_EQ(isErrorShown(), url.empty());
        ASSERT_EQ(page().requests().size(), url.empty() ? 0u : 1u);
        for (const auto& request : page().requests()) {
            EXPECT_EQ(request.url.absoluteString(), url);
            EXPECT_EQ(request.timeoutInterval, 60);
        }
        dismissScreen();
    }
};

TEST_F(CheckoutUrlTest, TheAddressHoldsTheTokenAndWhatIsPreselectedOrThePanelIsShown) {
    const std::string plain = "https://pay.example/checkout";
    expectUrl("placeholder", plain + "?token=%@", optionsOf("abc"), plain + "?token=abc");
    expectUrl("nothing for an empty bank code", plain, {"abc", "W1", std::nullopt, "UPI", ""},
              plain + "?token=abc&payment_mode=UPI&wallet_code=W1");
    expectUrl("everything, in order", plain, {"abc", "W1", "F", "NB", "B 1"},
              plain + "?token=abc&payment_mode=NB&bank_code=B%201&wallet_code=W1&payment_flow=F");
    expectUrl("a query is replaced, a fragment stays", plain + "?x=1#top", optionsOf("abc"),
              plain + "?token=abc#top");
    expectUrl("every placeholder goes", "https://pay.example/?token=%@a?token=%@", optionsOf("t"),
              "https://pay.example/a?token=t");
    expectUrl("no token", plain, optionsOf(std::nullopt), "");
    expectUrl("a broken escape in the base", plain + "/%zz", optionsOf("t"), "");
    expectUrl("not ASCII", "https://pay.example/é", optionsOf("t"), "");
    expectUrl("what is escaped", plain, optionsOf("a&b=c+d e/é?:@!$'()*,;#%[]{}\"\\^`|<>~-._"),
              plain +
                  "?token=a%26b%3Dc+d%20e/%C3%A9?:@!$'()*,;"
                  "%23%25%5B%5D%7B%7D%22%5C%5E%60%7C%3C%3E~-._");
}

}  // namespace
}  // namespace zorvik
