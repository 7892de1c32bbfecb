#include "examples/merchant/Scenario.h"

#include <algorithm>

namespace zorvik::demo {

namespace {

using enum Step::Action;
using Steps = std::vector<Step>;

constexpr double quickly = 1.5;
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

// A picture shows what it means to once the screen's fades have ended.
const Step settle{wait, "0.7"};

const Steps openScreen{{pay}, {seeScreen}, {wait, "0.45"}, {savePng, "skeleton"}};
const Steps openPage = openScreen + Steps{{see, isShown("methods")}};

// The first load finds no page; Retry does.
const Steps openScreenOffline = Steps{{setFault, "pages_gone", "true"}} + openScreen +
                                Steps{{seeButton, "Retry"},     settle,
                                      {savePng, "error-panel"}, {setFault, "pages_gone", "false"},
                                      {press, "Retry"},         {see, isShown("methods")}};

Steps chooseApp(const char* packageName) {
    return {{see, "!!document.querySelector('" + appButton(packageName) + "')"},
            settle,
            {savePng, "page"},
            {click, appButton(packageName)}};
}

Steps pickApp(const char* packageName) {
    return openPage + chooseApp(packageName);
}

Steps payByCard(const char* number) {
    return {{click, "#card-method summary"},
            {fill, "#card-number", number},
            {fill, "#card-expiry", "0830"},
            {fill, "#card-cvv", "123"},
            settle,
            {savePng, "card"},
            {click, "#card-pay"}};
}

const Steps payByBank{{click, "#bank-method summary"},
                      {click, "#banks input"},
                      settle,
                      {savePng, "banks"},
                      {click, "#bank-pay"},
                      {see,
                       "!!document.getElementById('approve') && "
                       "!document.getElementById('approve').disabled"},
                      settle,
                      {savePng, "bank"},
                      {click, "#approve"}};

constexpr const char* nilgiri = "demo.nilgiri.pay";
constexpr const char* tamarind = "demo.tamarind.upi";
constexpr const char* lotuspond = "demo.lotuspond.wallet";
constexpr const char* brassbell = "demo.brassbell.pay";
constexpr const char* goodCard = "9900000000000010";
constexpr const char* badCard = "9900000000000028";

}  // namespace

const std::vector<Scenario>& scenarios() {
    static const std::vector<Scenario> all{
        {"tour", "no connection at first, Retry, then a UPI payment from start to finish", "pay",
         quickly, openScreenOffline + chooseApp(nilgiri)},
        {"upi-success", "the UPI app pays and returns by its address with status=success", "pay",
         quickly, pickApp(nilgiri)},
        {"upi-declined", "the UPI app declines: status=failure", "decline", quickly,
         pickApp(nilgiri)},
        {"upi-cancelled", "the UPI app cancels: status=cancelled", "cancel", quickly,
         pickApp(nilgiri)},
        {"upi-unknown-status", "the UPI app returns with a status word nobody knows", "odd",
         quickly, pickApp(nilgiri)},
        {"upi-no-status", "a return address without a status but with a reference", "quiet",
         quickly, pickApp(nilgiri)},
        {"upi-empty-return", "a return address with neither status nor reference", "silent",
         quickly, pickApp(nilgiri)},
        {"upi-back", "the customer just goes back at once, then pays by card", "back", 1,
         pickApp(nilgiri) +
             Steps{{see,
                    "document.getElementById('waiting-text').textContent."
                    "includes('not been confirmed')"},
                   settle,
                   {savePng, "came-back"},
                   {click, "#choose-other"}} +
             payByCard(goodCard)},
        {"upi-extended", "the payment takes its time and ends in the response redirect", "pay",
         slowly, pickApp(tamarind)},
        {"upi-pending", "the app says success, the enquiry says PENDING", "pending", quickly,
         pickApp(nilgiri)},
        {"upi-twice", "a second app is asked while the first is still open", "pay", 3,
         pickApp(tamarind) + Steps{{seeHandOff},
                                   {click, "#choose-other"},
                                   {see, isShown("methods")},
                                   {click, appButton(nilgiri)}}},
        {"enquiry-fails", "the app says success, the enquiry fails", "pay", quickly,
         Steps{{setFault, "enquiry_fails", "true"}} + pickApp(nilgiri)},
        {"network-lost", "no network on the return; the page finds out once it is back", "pay",
         slowly,
         pickApp(tamarind) + Steps{{seeHandOff},
                                   {setFault, "network_gone", "true"},
                                   {see, noticeSays("No connection")},
                                   settle,
                                   {savePng, "no-connection"},
                                   {setFault, "network_gone", "false"}}},
        {"app-not-installed", "the chosen app is not installed; the customer pays at a bank", "pay",
         quickly,
         pickApp(lotuspond) +
             Steps{{see, noticeSays("not installed")}, settle, {savePng, "not-installed"}} +
             payByBank},
        {"launch-fails", "the chosen app cannot be opened; the customer pays by card", "pay",
         quickly,
         pickApp(brassbell) +
             Steps{{see, noticeSays("could not be opened")}, settle, {savePng, "launch-failed"}} +
             payByCard(goodCard)},
        {"card", "a card payment", "pay", quickly,
         openPage + Steps{settle, {savePng, "page"}} + payByCard(goodCard)},
        {"card-declined", "a card is declined, the next one pays", "pay", quickly,
         openPage + payByCard(badCard) +
             Steps{{see, isShown("outcome-retry")},
                   settle,
                   {savePng, "declined"},
                   {click, "#outcome-retry"}} +
             Steps{{fill, "#card-number", goodCard}, {click, "#card-pay"}}},
        {"bank", "a payment on a bank's own page; the response comes in base64", "pay", quickly,
         openPage + Steps{settle, {savePng, "page"}} + payByBank},
        {"unreachable", "the page cannot be reached; Retry, then a bank payment", "pay", quickly,
         openScreenOffline + payByBank},
        {"device-back", "back from a bank's page, back on the page, then leaving without paying",
         "pay", quickly,
         openPage + Steps{{click, "#bank-method summary"},
                          {click, "#banks input"},
                          {click, "#bank-pay"},
                          {see, "!!document.getElementById('approve')"},
                          {deviceBack},
                          {see, noticeSays("back at the checkout")},
                          settle,
                          {savePng, "browser-back"},
                          {deviceBack},
                          {see, "document.getElementById('leave').open"},
                          settle,
                          {savePng, "leave"},
                          {click, "#leave-now"}}},
        {"killed-and-restarted",
         "the merchant's process is killed after the hand-off and started again", "pay", 2,
         pickApp(nilgiri) + Steps{{dieAtHandOff}}},
    };
    return all;
}

const Scenario* scenarioByName(std::string_view name) {
    const auto& all = scenarios();
    const auto found = std::find_if(all.begin(), all.end(),
                                    [name](const Scenario& one) { return one.name == name; });
    return found == all.end() ? nullptr : &*found;
}

}  // namespace zorvik::demo
