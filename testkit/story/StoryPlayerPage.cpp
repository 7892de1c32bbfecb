#include <algorithm>
#include <array>
#include <utility>

#include "platform/foundation/Data.h"
#include "testkit/story/StoryPlayer.h"

namespace zorvik::testkit {

using platform::Dictionary;
using platform::Result;
using platform::ScriptValue;
using platform::headless::ScriptedLoad;
using platform::headless::ScriptedPage;

namespace {

constexpr std::array endings{
    ScriptedLoad::Ending::finish,          ScriptedLoad::Ending::failBeforeCommit,
    ScriptedLoad::Ending::failAfterCommit, ScriptedLoad::Ending::hang,
    ScriptedLoad::Ending::hangAfterCommit, ScriptedLoad::Ending::nothingToShow};

// What a query item's value may not hold as it is, of the characters used here.
std::string escaped(std::string_view text) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string result;
    for (const char character : text) {
        if (std::string_view("{}\":+=/ ").find(character) == std::string_view::npos) {
            result += character;
            continue;
        }
        const auto code = static_cast<unsigned char>(character);
        result.append(1, '%').append(1, digits[code / 16]).append(1, digits[code % 16]);
    }
    return result;
}

std::string answerJson(unsigned number) {
    return R"({"payload":{"answer":)" + std::to_string(number) + "}}";
}

}  // namespace

ScriptedPage* StoryPlayer::page() const {
    const auto& pages = platform_->web().pages();
    if (pages.empty()) return nullptr;
    return looksAtOldest_ ? pages.front() : pages.back();
}

std::size_t StoryPlayer::checkoutOf(std::string_view address) const {
    for (std::size_t place = story_.checkouts.size(); place-- > 0;) {
        if (address.find(story_.checkouts[place].token) != std::string_view::npos) return place;
    }
    return story_.checkouts.size() - 1;
}

std::size_t StoryPlayer::checkoutOf(const Page& page) const {
    return page.requests().empty() ? story_.checkouts.size() - 1
                                   : checkoutOf(page.requests().front().url.absoluteString());
}

ScriptedLoad StoryPlayer::answerLoad(const std::string& url) {
    ScriptedLoad load;
    if (loadsWay_ < endings.size()) {
        load.ending = endings[loadsWay_];
        return load;
    }
    // Only the checkout page goes elsewhere, so that no load goes on for ever.
    if (url.find("token=") == std::string::npos) return load;
    const std::size_t checkout = checkoutOf(url);
    const unsigned way = loadsWay_ - static_cast<unsigned>(endings.size());
    constexpr std::array<unsigned, 3> places{11, 0, 6};  // the bank, a response, a UPI return
    if (way < places.size()) {
        load.redirects.push_back(addressFor(places.at(way), checkout));
        return load;
    }
    // Once or twice, or never because a script keeps it busy and no other one is answered.
    const unsigned answers = (way - static_cast<unsigned>(places.size()) + 1) % 3;
    for (Page* const loading : platform_->web().pages()) {
        if (checkoutOf(*loading) != checkout) continue;
        for (unsigned left = answers; left > 0; --left)
            go(*loading, addressFor(0, checkout));
    }
    if (answers == 0) perform({Step::Kind::scripts, 2});
    return load;
}

Result<ScriptValue> StoryPlayer::answerScript(const std::string& script) {
    isRequested("script: " + script);
    if (script.starts_with("console.log")) noteInjection();
    if (scriptsWay_ == 1) return platform::Error{"page", 1, "Nothing runs here."};
    if (scriptsWay_ == 3 && script.find("device_back_initiated") != std::string::npos) {
        if (Page* const shown = page()) go(*shown, addressFor(0, checkoutOf(*shown)));
    }
    return ScriptValue();
}

std::string StoryPlayer::responseAddress(const char* base, const std::string& response, Owed owed) {
    std::string address =
        std::string(base) + "n=" + std::to_string(number_) + "&response=" + response;
    owed_.emplace(address, std::move(owed));
    return address;
}

std::string StoryPlayer::returnAddress(unsigned way, std::size_t checkout) {
    struct Return {
        const char* query;
        const char* error;  // nullptr: a success, of which the enquiry decides
    };
    constexpr std::array<Return, 5> returns{{{"?status=SUCCESS&tr=", nullptr},
                                             {"?status=failure&reason=no%20funds&tr=", "no funds"},
                                             {"?status=Cancelled&tr=", "Payment cancelled by user"},
                                             {"?status=failed&tr=", "Unknown payment status"},
                                             {"?tr=", nullptr}}};
    const std::string number = std::to_string(number_);
    const std::string base = std::string(ScriptedCoreServices::returnScheme) + "://upi";
    if (way == returns.size()) {
        Owed owed{"a UPI return with nothing", checkout,
                  failure(checkout, "Unknown payment status"), 2};
        owed.data["transaction_id"] = owed.data["zorvik_transaction_id"] = "";
        return owed_.emplace(base + "?n=" + number, owed).first->first;
    }
    const std::string transaction = "t-" + number;
    std::string address = base + returns.at(way).query + transaction;
    if (returns.at(way).error != nullptr) {
        Owed owed{"a UPI return", checkout, failure(checkout, returns.at(way).error), 2};
        owed.data["transaction_id"] = owed.data["zorvik_transaction_id"] = transaction;
        owed_.emplace(address, owed);
    }
    return address;
}

std::string StoryPlayer::addressFor(unsigned way, std::size_t checkout) {
    ++number_;
    const std::string number = std::to_string(number_);
    const std::string responseUrl = ScriptedCoreServices::responseUrl;
    const Owed answer{"a response", checkout, {{"answer", number_}}, 1};
    const auto respond = [&](const std::string& response, const Owed& owed) {
        std::string address = responseUrl + "?response=" + response + "&n=" + number;
        owed_.emplace(address, owed);
        return address;
    };
    switch (way) {
        case 0:
            return respond(escaped(answerJson(number_)), answer);
        case 1:
            return respond(escaped(platform::base64Encode(answerJson(number_))), answer);
        case 2:
            return respond("unreadable-" + number,
                           {"an unreadable response", checkout,
                            failure(checkout, "Invalid response format"), 0});
        case 3: {
            // Counts as a response for the text it holds, whose query has none.
            std::string address =
                responseUrl + "?n=" + number + "&from=" + responseUrl + "?response=";
            owed_.emplace(address, Owed{"no response", checkout,
                                        failure(checkout, "Invalid payment response"), 2});
            return address;
        }
        case 4:
            return respond(number, {"a bare number", checkout, {}, 1});
        case 11:
            return "https://bank.example/" + number;
        case 12:
            return "https://pay.example/processing?n=" + number;
        case 13:
            return responseAddress("https://pay.example/processing?", escaped(answerJson(number_)),
                                   answer);
        case 14: {
            const Page* const shown = page();
            const auto url = shown != nullptr ? shown->currentUrl() : std::nullopt;
            const std::string current = url ? url->absoluteString() : "https://pay.example/";
            std::string address = current.substr(0, current.find('#')) + "#" + number;
            // The response that an address holds stays in it.
            if (const auto held = owed_.find(current); held != owed_.end())
                owed_.emplace(address, held->second).first->second.wasAskedFor = false;
            return address;
        }
        default:
            return returnAddress(way - 5, checkout);
    }
}

void StoryPlayer::go(Page& from, const std::string& url) {
    // A move within the document is not asked for.
    const auto current = from.currentUrl();
    const auto place = url.find('#');
    const bool staysInDocument = place != url.npos && current &&
                                 current->absoluteString().substr(0, place) == url.substr(0, place);
    if (!staysInDocument) request("[URL INTERCEPT] 🔍 Intercepted URL: " + url, checkoutOf(from));
    from.navigate(url);
}

void StoryPlayer::goInSubframe(unsigned way) {
    constexpr std::array<unsigned, 3> places{0, 6, 11};
    Page* const shown = page();
    if (shown == nullptr) return;
    const std::size_t checkout = checkoutOf(*shown);
    const std::string url = addressFor(places.at(way), checkout);
    request("[URL INTERCEPT] 🔍 Intercepted URL: " + url, checkout);
    shown->navigateSubframe(url);
}

void StoryPlayer::pushState(unsigned way) {
    if (Page* const shown = page()) shown->replaceUrl(addressFor(12 + way, checkoutOf(*shown)));
}

void StoryPlayer::post(unsigned way) {
    Page* const shown = page();
    if (shown == nullptr || !shown->messageHandlers().contains("openUpiIntent")) return;
    const std::string number = std::to_string(++number_);
    const std::string transaction = R"("transactionId":"t-)" + number + "\"";
    const auto intent = [&](const std::string& scheme) {
        return R"({"url":")" + scheme + R"(://pay","package_name":"app.)" + number + "\"," +
               transaction + "}";
    };
    ScriptValue body{ScriptValue::Type::string, ""};
    std::string ending;
    switch (way) {
        case 0:
            body.text = intent("testkit-opens");
            ending = "[TRANSACTION STORE] 🔢 Transaction ID: t-" + number;
            break;
        case 1:
            body.text = intent("testkit-refuses");
            ending = "[UPI RESPONSE] 📝 Message: Failed to launch UPI app";
            break;
        case 2:
            body.text = intent("testkit-missing");
            ending = "[UPI RESPONSE] 📝 Message: UPI app not installed";
            break;
        case 3:
            body.text = "{" + transaction + R"(,"package_name":"app"})";
            ending = "[UPI INTENT] Missing required fields: url or packagename";
            break;
        case 4:
            body.text = R"({"url":"no address","package_name":"app",)" + transaction + "}";
            ending = "[UPI RESPONSE] 📝 Message: Invalid UPI URL";
            break;
        case 5:
            body.text = "{" + transaction + R"(,"amount":1})";
            ending = "[UPI INTENT] Failed to parse JSON from message body";
            break;
        case 6:
            body.text = "no JSON " + number;
            ending = "[UPI INTENT] Failed to parse JSON from message body";
            break;
        case 7:
            body = {ScriptValue::Type::number, number};
            ending = "[UPI INTENT] Invalid message format - expected string";
            break;
        default:
            // A name of the page's own: nobody is told.
            if (shown->messageHandlers().contains("other")) shown->post("other", body);
            return;
    }
    intents_.emplace(body.text, ending);
    request("UPI_INTENT_STARTED " + body.text, checkoutOf(*shown));
    shown->post("openUpiIntent", body);
}

// The message arrived: from here on it is answered as the apps are now.
void StoryPlayer::oweForIntent(const std::string& body, std::size_t checkout) {
    const auto found = intents_.find(body);
    if (found == intents_.end()) return;
    const bool opens = body.find("testkit-opens:") != std::string::npos;
    const auto address = platform::URL::parse("testkit-opens://pay");
    const bool isMissing = opens && !platform_->application().canOpen(*address);
    const bool isAsked = found->second.starts_with("[TRANSACTION") ||
                         found->second.ends_with("Failed to launch UPI app");
    if (isMissing) {
        request("[UPI RESPONSE] 📝 Message: UPI app not installed", checkout);
    } else if (isAppSlow_ && isAsked) {
        waitingLaunches_.emplace_back(found->second, checkout);
    } else {
        request(found->second, checkout);
    }
    intents_.erase(found);
}

void StoryPlayer::changeApp(unsigned way) {
    auto& application = platform_->application();
    using Answers = platform::headless::HeadlessApplication::Answers;
    switch (way) {
        case 0:
            return application.uninstall("testkit-opens");
        case 1:
            isAppSlow_ = false;
            application.setAnswers(Answers::given);
            return application.install("testkit-opens");
        case 2:
            isAppSlow_ = true;
            return application.setAnswers(Answers::waiting);
        default:
            if (waitingLaunches_.empty()) return;
            request(waitingLaunches_.front().first, waitingLaunches_.front().second);
            waitingLaunches_.pop_front();
            application.giveAnswer();
    }
}

// A page that was given the apps is not given them again, unless it is loaded anew; where a story
// has one checkout and nothing that loads its page again, that is easily seen.
void StoryPlayer::noteInjection() {
    constexpr auto loadsAgain = [](const Step& step) {
        return step.kind == Step::Kind::retry || step.kind == Step::Kind::processDies;
    };
    if (story_.checkouts.size() != 1 || std::ranges::any_of(story_.script, loadsAgain)) return;
    StoryCheckout& checkout = story_.checkouts.front();
    if (checkout.injectedIn > 0 && checkout.loadedAgainIn > checkout.injectedIn + 1) {
        story_.unexplained.push_back("the page was given the apps again");
    } else if (scriptsWay_ == 0 && checkout.injectedIn == 0) {
        // Just before the answer.
        platform_->scheduler().runOnMain([this] {
            if (story_.checkouts.size() == 1) story_.checkouts.front().injectedIn = turn();
        });
    }
}

}  // namespace zorvik::testkit
