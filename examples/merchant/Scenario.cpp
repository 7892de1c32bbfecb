#include "examples/merchant/Scenario.h"

#include <algorithm>

#include "examples/merchant/Shop.h"

namespace zorvik::demo {

namespace {

using enum Step::Action;
using Steps = std::vector<Step>;

constexpr double quickly = 0.8;
constexpr double slowly = 6;  // beyond the five seconds that tell a quick return

std::string appButton(const char* packageName) {
    return std::string("[data-package=\"") + packageName + "\"]";
}

std::string isShown(const char* id) {
    return "!!document.getElementById('" + std::string(id) + "') && !document.getElementById('" +
           id + "').hidden";
}

std::string noticeSays(const char* words) {
    return isShown("notice") + " && document.getElementById('notice').textContent.includes('" +
           words + "')";
}

Steps operator+(Steps first, const Steps& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

Step tap(const char* selector, const char* what) {
    return {click, selector, "", std::string("customer ") + what};
}

Step read(const char* words, const char* story) {
    return {see, noticeSays(words), "", story};
}

const Step shopOpens{seeButton, payTitle(), "", "shop opens"};
const Steps openShop{shopOpens, {savePng, "shop", "0.3"}, {press, payTitle()}};

const Step screenOpens{seeScreen, "", "", "checkout screen opens"};
// The skeleton has faded in, and no page is there yet.
const Steps openScreen = openShop + Steps{screenOpens, {savePng, "skeleton", "0.45"}};
const Steps openPage = openScreen + Steps{{see, isShown("methods"), "", "page is there"}};

// The first load finds no page; Retry does.
const Steps openScreenOffline =
    Steps{{setFault, "pages_gone", "true"}} + openScreen +
    Steps{{seeButton, "Retry", "", "page cannot be reached; the screen offers Retry"},
          {savePng, "error-panel"},
          {setFault, "pages_gone", "false"},
          {press, "Retry", "", "customer presses Retry"},
          {see, isShown("methods"), "", "page is there"}};

Steps chooseApp(const char* packageName, const char* name) {
    return {{see, "!!document.querySelector('" + appButton(packageName) + "')"},
            {savePng, "page"},
            {click, appButton(packageName), "", std::string("customer taps ") + name}};
}

Steps pickApp(const char* packageName, const char* name) {
    return openPage + chooseApp(packageName, name);
}

Steps payByCard(const char* number) {
    return {{click, "#card-method summary"},
            {fill, "#card-number", number},
            {fill, "#card-expiry", "0830"},
            {fill, "#card-cvv", "123", "customer fills in a card"},
            {savePng, "card"},
            tap("#card-pay", "pays by card")};
}

const Steps chooseBank{{click, "#bank-method summary"},
                       {click, "#banks input"},
                       {savePng, "banks"},
                       tap("#bank-pay", "chooses a bank")};

const Steps payByBank = chooseBank + Steps{{see,
                                            "!!document.getElementById('approve') && "
                                            "!document.getElementById('approve').disabled",
                                            "", "bank's page is there"},
                                           {savePng, "bank"},
                                           tap("#approve", "approves")};

const Steps tapNilgiri = chooseApp("demo.nilgiri.pay", "Nilgiri Pay");
const Steps pickNilgiri = openPage + tapNilgiri;
const Steps pickTamarind = pickApp("demo.tamarind.upi", "Tamarind UPI");
constexpr const char* goodCard = "9900000000000010";
constexpr const char* badCard = "9900000000000028";

}  // namespace

const std::vector<Scenario>& scenarios() {
    static const std::vector<Scenario> all{
        {"tour", "no connection at first, Retry, then a UPI payment from start to finish", "pay",
         quickly, "SUCCESS", openScreenOffline + tapNilgiri},
        {"upi-success", "the UPI app pays and returns by its address with status=success", "pay",
         quickly, "SUCCESS", pickNilgiri},
        {"upi-declined", "the UPI app declines: status=failure", "decline", quickly,
         "FAILURE (Declined in Nilgiri Pay)", pickNilgiri},
        {"upi-cancelled", "the UPI app cancels: status=cancelled", "cancel", quickly,
         "CANCELLED (Payment cancelled by user)", pickNilgiri},
        {"upi-unknown-status", "the UPI app returns with a status word nobody knows", "odd",
         quickly, "FAILURE (Unknown payment status)", pickNilgiri},
        {"upi-no-status", "a return address without a status but with a reference", "quiet",
         quickly, "SUCCESS", pickNilgiri},
        {"upi-empty-return", "a return address with neither status nor reference", "silent",
         quickly, "FAILURE (Unknown payment status)", pickNilgiri},
        {"upi-back", "the customer just goes back at once, then pays by card", "back", 1, "SUCCESS",
         pickNilgiri +
             Steps{{see,
                    "document.getElementById('waiting-text').textContent."
                    "includes('not been confirmed')",
                    "", "page was told of it: it says \"not confirmed yet\""},
                   {savePng, "came-back"},
                   tap("#choose-other", "chooses another way")} +
             payByCard(goodCard)},
        {"upi-extended", "the payment takes its time and ends in the response redirect", "pay",
         slowly, "SUCCESS", pickTamarind},
        {"upi-pending", "the app says success, the enquiry says PENDING", "pending", quickly,
         "UNKNOWN (PENDING)", pickNilgiri},
        {"upi-twice", "a second app is asked while the first is still open", "pay", 2, "SUCCESS",
         pickTamarind +
             Steps{
                 {seeApp}, tap("#choose-other", "chooses another way"), {see, isShown("methods")}} +
             tapNilgiri},
        {"enquiry-fails", "the app says success, the enquiry fails", "pay", quickly,
         "FAILURE (Transaction enquiry failed)",
         Steps{{setFault, "enquiry_fails", "true"}} + pickNilgiri},
        {"network-lost", "no network on the return; the page finds out once it is back", "pay",
         quickly, "SUCCESS",
         pickTamarind + Steps{{seeApp},
                              {setFault, "network_gone", "true", "network goes away"},
                              {seeBack},
                              read("No connection", "page says \"No connection\""),
                              {savePng, "no-connection"},
                              {setFault, "network_gone", "false", "network is back"}}},
        {"app-not-installed", "the chosen app is not installed; the customer pays at a bank", "pay",
         quickly, "SUCCESS",
         pickApp("demo.lotuspond.wallet", "Lotuspond Wallet") +
             Steps{read("not installed", "page was told: the app is not installed"),
                   {savePng, "not-installed"}} +
             payByBank},
        {"launch-fails", "the chosen app cannot be opened; the customer pays by card", "pay",
         quickly, "SUCCESS",
         pickApp("demo.brassbell.pay", "Brassbell Pay") +
             Steps{read("could not be opened", "page was told: the app could not be opened"),
                   {savePng, "launch-failed"}} +
             payByCard(goodCard)},
        {"card", "a card payment", "pay", quickly, "SUCCESS",
         openPage + Steps{{savePng, "page"}} + payByCard(goodCard)},
        {"card-declined", "a card is declined, the next one pays", "pay", quickly, "SUCCESS",
         openPage + payByCard(badCard) +
             Steps{{see, isShown("outcome-retry"), "", "page says that the card is declined"},
                   {savePng, "declined"},
                   {click, "#outcome-retry"},
                   {fill, "#card-number", goodCard, "customer fills in another card"},
                   tap("#card-pay", "pays by card")}},
        {"bank", "a payment on a bank's own page; the response comes in base64", "pay", quickly,
         "SUCCESS", openPage + Steps{{savePng, "page"}} + payByBank},
        {"unreachable", "the page cannot be reached; Retry, then a bank payment", "pay", quickly,
         "SUCCESS", openScreenOffline + payByBank},
        {"device-back", "back from a bank's page, back on the page, then leaving without paying",
         "pay", quickly, "CANCELLED",
         openPage + chooseBank +
             Steps{{see, "!!document.getElementById('approve')", "", "bank's page is there"},
                   {deviceBack, "", "", "customer goes back"},
                   read("back at the checkout", "page is back at the ways to pay"),
                   {savePng, "browser-back"},
                   {deviceBack, "", "", "customer goes back again"},
                   {see, "document.getElementById('leave').open", "", "page asks whether to leave"},
                   {savePng, "leave"},
                   tap("#leave-now", "leaves without paying")}},
        {"killed-and-restarted",
         "the shop's process is killed after the hand-off and started again", "pay", 2, "SUCCESS",
         pickNilgiri +
             Steps{{dieAtHandOff, "", "", "hand-off is on record; the shop's process is killed"}}},
    };
    return all;
}

const Scenario* scenarioByName(std::string_view name) {
    const auto& all = scenarios();
    const auto found = std::find_if(all.begin(), all.end(),
                                    [name](const Scenario& one) { return one.name == name; });
    return found == all.end() ? nullptr : &*found;
}

std::vector<Step> stepsAfterRestart() {
    return {{seeButton, payTitle(), "", "shop opens again"},
            {press, payTitle()},
            screenOpens,
            {see,
             "!document.getElementById('loading')?.getClientRects().length && "
             "!!document.getElementById('methods')",
             "", "page is there; it knows of the payment"},
            {savePng, "after-restart"}};
}

std::vector<Step> stepsOfOpening() {
    return {shopOpens, {savePng, "shop", "0.3"}};
}

std::vector<Step> stepsOfOnlooker() {
    return {screenOpens,
            {savePng, "skeleton", "0.45"},
            {see, "!!document.querySelector('#upi-apps button')", "", "page is there"},
            {savePng, "page"}};
}

}  // namespace zorvik::demo
