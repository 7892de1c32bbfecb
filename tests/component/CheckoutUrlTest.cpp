#include "platform/uikit/UIButton.h"
#include "tests/component/CheckoutFixture.h"

namespace zorvik {
namespace {

using testing::IsEmpty;

struct UrlCase {
    const char* name;
    std::string base;
    ZorvikCheckoutOptions options;
    std::optional<std::string> url;  // nullopt: the invalid-URL panel
};

ZorvikCheckoutOptions options(const std::optional<std::string>& token, const char* mode,
                              const char* bank, const char* wallet, const char* flow) {
    const auto optional = [](const char* text) {
        return text == nullptr ? std::nullopt : std::optional<std::string>(text);
    };
    return {token, optional(wallet), optional(flow), optional(mode), optional(bank)};
}

class CheckoutUrlTest : public CheckoutTest {
  protected:
    void expectUrl(const std::optional<std::string>& url) {
        if (!url) {
            EXPECT_THAT(page().requests(), IsEmpty());
            EXPECT_TRUE(isErrorShown());
            EXPECT_EQ(errorText(), "Invalid checkout URL. Please try again or contact support.");
            return;
        }
        ASSERT_EQ(page().requests().size(), 1u);
        EXPECT_EQ(page().requests()[0].url.absoluteString(), *url);
        EXPECT_EQ(page().requests()[0].timeoutInterval, 60);
        EXPECT_FALSE(isErrorShown());
    }
};

TEST_F(CheckoutUrlTest, TheAddressHoldsTheTokenAndWhatIsPreselected) {
    const std::string plain = "https://pay.example/checkout";
    const UrlCase cases[] = {
        {"placeholder", plain + "?token=%@", optionsOf("abc"), plain + "?token=abc"},
        {"no placeholder, empty bank code", plain, options("abc", "UPI", "", "W1", nullptr),
         plain + "?token=abc&payment_mode=UPI&wallet_code=W1"},
        {"everything, in order", plain, options("abc", "NB", "B 1", "W1", "F"),
         plain + "?token=abc&payment_mode=NB&bank_code=B%201&wallet_code=W1&payment_flow=F"},
        {"a query is replaced, a fragment stays", plain + "?x=1#top", optionsOf("abc"),
         plain + "?token=abc#top"},
        {"every placeholder goes", "https://pay.example/?token=%@a?token=%@", optionsOf("t"),
         "https://pay.example/a?token=t"},
        {"another spelling stays and is no address", plain + "?TOKEN=%@", optionsOf("t"),
         std::nullopt},
        {"empty token", plain, optionsOf(""), plain + "?token="},
        {"no token", plain, optionsOf(std::nullopt), std::nullopt},
        {"a space in the base", "https://pay.example/check out", optionsOf("t"), std::nullopt},
        {"a broken escape in the base", plain + "/%zz", optionsOf("t"), std::nullopt},
        {"not ASCII", "https://pay.example/é", optionsOf("t"), std::nullopt},
        {"an empty base leaves a query", "", optionsOf("t"), "?token=t"},
        {"what is escaped", plain, optionsOf("a&b=c+d e/é?:@!$'()*,;#%[]{}\"\\^`|<>~-._"),
         plain + "?token=a%26b%3Dc+d%20e/%C3%A9?:@!$'()*,;"
                 "%23%25%5B%5D%7B%7D%22%5C%5E%60%7C%3C%3E~-._"},
        {"control characters", plain, optionsOf(std::string("\0\n\x7f", 3)),
         plain + "?token=%00%0A%7F"},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.name);
        core.webViewViewUrl = row.base;
        presentScreen(row.options);
        expectUrl(row.url);
        dismissScreen();
    }
}

TEST_F(CheckoutUrlTest, ATokenOfAnyBytesEitherLoadsOrShowsThePanel) {
    for (int byte = 0; byte < 256; ++byte) {
        presentScreen(optionsOf(std::string(3, static_cast<char>(byte))));
        EXPECT_NE(page().requests().empty(), !isErrorShown()) << byte;
        dismissScreen();
    }
}

TEST_F(CheckoutUrlTest, EveryLoadIsBuiltFromTheOptionsAndTheBaseOfItsMoment) {
    load.ending = platform::headless::ScriptedLoad::Ending::failBeforeCommit;
    openScreen(optionsOf("first"));
    screen()->setOptions(options("second", "UPI", nullptr, nullptr, nullptr));
    core.webViewViewUrl = "https://other.example/";
    find<platform::UIButton>()->sendTouchUpInside();
    EXPECT_EQ(page().requests().back().url.absoluteString(),
              "https://other.example/?token=second&payment_mode=UPI");
}

}  // namespace
}  // namespace zorvik
