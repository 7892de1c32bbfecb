#include <algorithm>
#include <utility>

#include "platform/runtime/Environment.h"
#include "testkit/story/StoryPlayer.h"

namespace zorvik::testkit {

using platform::Dictionary;
using platform::Error;
using Excuse = StoryRequest::Excuse;

namespace {

ScriptedCoreServices& core() {
    return ScriptedCoreServices::instance();
}

constexpr std::string_view backLine = "[BACK HANDLER] 📱 Handling device back pressed";
constexpr std::string_view askedFor = "[URL INTERCEPT] 🔍 Intercepted URL: ";
constexpr std::string_view responseAt = "[REDIRECT] 🔗 Processing URL: ";
constexpr std::string_view returnAt = "[UPI RETURN] 🔗 Return URL: ";

// What comes only on request.
constexpr std::array requested{"[TRANSACTION STORE] 🔢 Transaction ID",
                               "[UPI RESPONSE] 📝 Message",
                               "[UPI INTENT] Missing required fields",
                               "[UPI INTENT] Failed to parse JSON from message body",
                               "[UPI INTENT] Invalid message format - expected string",
                               "[BACK HANDLER] 📱 Handling device back pressed"};

}  // namespace

// The answers of a call, told apart by its number.
void StoryPlayer::setAnswers(std::size_t number) {
    CoreAnswers& answers = core().answers();
    failing_[number] = coreWay_ == 1;
    const std::string text = std::to_string(number);
    if (coreWay_ == 1) {
        const Error error{"network", 1, "no line " + text};
        answers.orderUpdate = error;
        answers.appList = error;
        answers.enquiry = error;
        return;
    }
    answers.orderUpdate = OrderResponse{};
    answers.appList = std::vector<UPIAppsVO>{{"code", "Some app", "app.some", std::nullopt}};
    TransactionEnquiryResponse response{std::nullopt, {{"enquiry", static_cast<int>(number)}}};
    if (coreWay_ == 0) response.order = Order{"status-" + text};
    answers.enquiry = response;
}

void StoryPlayer::giveAnswer(unsigned way) {
    const auto calls = core().waitingCalls();
    if (calls.empty()) return;
    const std::size_t place = way == 1 || way == 4 ? calls.size() - 1 : 0;
    const std::size_t number = calls[place].number;
    const unsigned former = coreWay_;
    if (way == 3 || way == 4) coreWay_ = 1;
    setAnswers(number);
    coreWay_ = former;
    using Timing = ScriptedCoreServices::Timing;
    if (way == 5) {
        const auto found = enquiries_.find(number);
        if (found != enquiries_.end() && found->second.isOfSuccess)
            --story_.checkouts[found->second.checkout].waitingEnquiries;
        core().forgetCall(place);
    } else {
        core().answerCall(place, way == 2 ? Timing::inBackground : Timing::atOnce);
    }
}

void StoryPlayer::called(const CoreCall& call) {
    setAnswers(call.number);
    if (call.operation == "getTransactionEnquiry") {
        Enquiry enquiry;
        enquiry.checkout = checkoutOf(*call.arguments.at("token").string());
        enquiry.isOfSuccess = lastLine_.starts_with("[UPI SUCCESS]");
        if (enquiry.isOfSuccess) ++story_.checkouts[enquiry.checkout].waitingEnquiries;
        enquiries_.emplace(call.number, enquiry);
    }
}

void StoryPlayer::answered(const CoreCall& call) {
    const std::string number = std::to_string(call.number);
    const std::size_t checkout = checkoutOf(*call.arguments.at("token").string());
    const std::string& token = story_.checkouts[checkout].token;
    const bool isFailing = failing_[call.number];
    if (call.operation == "getTransactionEnquiry") {
        const Enquiry enquiry = enquiries_[call.number];
        if (!enquiry.isOfSuccess) return;
        --story_.checkouts[checkout].waitingEnquiries;
        ++story_.successEnquiries;
        if (isFailing) {
            owe({"an enquiry that failed", checkout,
                 failure(checkout, "Transaction enquiry failed"), 2});
        } else {
            owe({"an enquiry", checkout, {{"enquiry", static_cast<int>(call.number)}}, 1});
        }
        return;
    }
    const bool isUpdate = call.operation == "updateOrderDetails";
    if (isFailing) {
        const std::string what =
            isUpdate ? "Failed to update order details: " : "Failed to get UPI apps: ";
        owe({"a core service that failed", checkout, failure(checkout, what + "no line " + number),
             1},
            true);
    }
    const char* const event = isFailing  ? "EXCEPTION_THROWN "
                              : isUpdate ? "UPDATE_ORDER_PAYLOAD "
                                         : "UPI_APPS_LISTED ";
    request(event + token, checkout, Excuse::none);
}

Dictionary StoryPlayer::failure(std::size_t checkout, const std::string& error) const {
    const StoryCheckout& of = story_.checkouts[checkout];
    return {{"error", error},
            {"order_id", of.orderId},
            {"zorvik_order_id", of.orderId},
            {"token", of.token},
            {"subMerchantId", of.subMerchantId}};
}

void StoryPlayer::owe(const Owed& owed, bool isByFacade) {
    StoryReport report;
    report.cause = owed.cause;
    report.checkout = owed.checkout;
    report.data = owed.data;
    report.turn = turn();
    report.turnsLater = owed.turnsLater;
    report.isByFacade = isByFacade;
    report.mayBeLost = !isAlive(currentHost_);
    story_.reports.push_back(std::move(report));
}

void StoryPlayer::request(std::string text, std::size_t checkout, Excuse excuse,
                          bool isInBackground) {
    StoryRequest open;
    open.text = std::move(text);
    open.checkout = checkout;
    open.turn = turn();
    open.excuse = excuse;
    open.isInBackground = isInBackground;
    story_.requests.push_back(std::move(open));
}

bool StoryPlayer::isRequested(const std::string& text) {
    // Of several that read alike, one that has to be done comes first.
    StoryRequest* found = nullptr;
    for (std::size_t place = firstOpenRequest_; place < story_.requests.size(); ++place) {
        StoryRequest& open = story_.requests[place];
        if (open.isDone || open.text != text) continue;
        if (found == nullptr || found->isExcused || isExcused(*found)) found = &open;
    }
    if (found == nullptr) return false;
    if (text == backLine && found->turn == turn())
        story_.unexplained.push_back("a back action ran inside its call");
    return found->isDone = true;
}

bool StoryPlayer::isExcused(const StoryRequest& open) const {
    const StoryCheckout& checkout = story_.checkouts[open.checkout];
    return !platform_ || checkout.isOver ||
           (open.excuse == Excuse::screenGone && checkout.screen.expired()) ||
           (open.excuse == Excuse::screenLeft && !checkout.stands());
}

void StoryPlayer::excuseScripts() {
    for (StoryRequest& open : story_.requests)
        open.isExcused = open.isExcused || open.text.starts_with("script: ");
}

Happening StoryPlayer::happening(Happening::Kind kind) const {
    Happening one;
    one.kind = kind;
    one.turn = turn();
    one.isOnMainThread = platform::Environment::isMainThread();
    one.isScreenAlive = heldScreen_ != nullptr;
    for (const StoryCheckout& checkout : story_.checkouts)
        one.isScreenAlive = one.isScreenAlive || !checkout.screen.expired();
    if (!platform_) return one;
    for (const auto& controller : platform_->stage().shown()) {
        if (dynamic_cast<const Screen*>(controller.get()) == nullptr) continue;
        one.isScreenAlive = true;
        one.isScreenShown = one.isScreenShown || !controller->isBeingDismissed();
    }
    return one;
}

void StoryPlayer::heardLine(std::string_view line) {
    Happening heard = happening(Happening::Kind::line);
    heard.text = line;
    const std::string_view key = line.substr(0, line.find(':'));
    const auto found = story_.lines.find(key);
    if (found == story_.lines.end()) {
        story_.lines.emplace(key, 1);
    } else {
        ++found->second;
    }
    const bool wasRequested = isRequested(heard.text);
    if (!wasRequested && std::ranges::any_of(requested, [&](const char* start) {
            return line.starts_with(start);
        })) {
        story_.unexplained.push_back("nobody asked for the line " + heard.text);
    }
    if (line.starts_with(askedFor)) {
        const auto owed = owed_.find(line.substr(askedFor.size()));
        if (owed != owed_.end() && std::exchange(owed->second.wasAskedFor, true))
            story_.unexplained.push_back("asked for twice: " + owed->first);
    } else if (line.starts_with(responseAt) || line.starts_with(returnAt)) {
        const auto start = line.starts_with(responseAt) ? responseAt : returnAt;
        const auto owed = owed_.find(line.substr(start.size()));
        if (owed != owed_.end()) owe(owed->second);
    } else {
        noteScript(line);
    }
    lastLine_ = heard.text;
    story_.happenings.push_back(std::move(heard));
}

// A script is evaluated as soon as its line is there, or in the next turn, in a screen that stands.
void StoryPlayer::noteScript(std::string_view line) {
    const auto start = line.find("window.");
    if (line.find("📜 ") == std::string_view::npos || start == std::string_view::npos) return;
    // With several, the screen whose line this is cannot be told from another one's.
    if (story_.checkouts.size() != 1) return;
    request("script: " + std::string(line.substr(start)), 0);
    const bool isAtOnce = !line.starts_with("[UPI BACK]");
    if (isAtOnce && story_.checkouts.front().stands())
        ++story_.evaluations[std::string(line.substr(0, line.find(']') + 1))];
}

void StoryPlayer::heardEvent(const Event& event) {
    Happening heard = happening(Happening::Kind::event);
    heard.text = event.name;
    heard.orderId = event.orderId;
    heard.token = event.token;
    heard.subMerchantId = event.subMerchantId;
    heard.data = event.additionalData;
    ++story_.events[event.name];
    const std::size_t of = checkoutOf(event.token.value_or(""));
    if (event.name == "WEBVIEW_LOADED" && story_.checkouts[of].injectedIn > 0)
        story_.checkouts[of].loadedAgainIn = turn();
    const bool isStart = event.name == "UPI_APPS_LISTED" || event.name == "UPDATE_ORDER_PAYLOAD";
    if (isStart && story_.checkouts[of].isOver)
        story_.unexplained.push_back(event.name + " of a checkout that is over");
    if (event.name == "UPI_APPS_LISTED") facadesScreen_ = of;
    const auto parameters = event.additionalData.find("parameters");
    if (parameters != event.additionalData.end() && parameters->second.string() != nullptr) {
        const std::string& body = *parameters->second.string();
        if (!isRequested(event.name + " " + body))
            story_.unexplained.push_back("nobody posted " + body);
        oweForIntent(body, of);
    } else {
        isRequested(event.name + " " + event.token.value_or("none"));
    }
    story_.happenings.push_back(std::move(heard));
}

void StoryPlayer::hostWasGiven(int host, const Dictionary& data) {
    Happening heard = happening(Happening::Kind::response);
    heard.data = data;
    story_.happenings.push_back(std::move(heard));
    for (StoryReport& report : story_.reports) {
        if (report.state != StoryReport::State::due || report.data != data) continue;
        const StoryCheckout& checkout = story_.checkouts[report.checkout];
        const bool isRight = report.isByFacade ? host == currentHost_ && !checkout.isOver
                                               : host == checkout.host && checkout.isBridgeAlive;
        if (!isRight) continue;
        report.state = StoryReport::State::made;
        report.mayCloseLater = report.mayCloseLater || checkout.isCovered;
        report.madeIn = turn();
        return;
    }
    story_.unexplained.push_back("the host was given " + platform::description(data));
}

}  // namespace zorvik::testkit
