#include "tests/component/ScriptedCore.h"

#include <utility>

#include "core/APIUtils.h"
#include "core/EventConstants.h"
#include "core/EventLogging.h"
#include "core/ZorvikUPIAppDetector.h"

namespace zorvik {

void Transcript::add(std::string entry) {
    Text token = plainToken();
    for (auto at = entry.find(token); at != std::string::npos; at = entry.find(token, at)) {
        entry.replace(at, token.size(), "TOKEN");
    }
    const std::scoped_lock lock(mutex_);
    if (!mark_.empty()) entries_.push_back(std::exchange(mark_, ""));
    entries_.push_back(std::move(entry));
}

void Transcript::mark(Text text) {
    const std::scoped_lock lock(mutex_);
    mark_ = "-- " + text;
}

Lines Transcript::entries(Text prefix) const {
    const std::scoped_lock lock(mutex_);
    Lines found;
    for (Text entry : entries_) {
        if (entry.starts_with("--") || !entry.starts_with(prefix)) continue;
        found.push_back(entry.substr(prefix.size()));
    }
    return found;
}

std::string Transcript::take(Text from) {
    const std::scoped_lock lock(mutex_);
    std::string text, mark, tag;
    std::size_t used = 0;
    bool hasBegun = false;
    for (Text entry : std::exchange(entries_, {})) {
        hasBegun = hasBegun || entry.starts_with(from);
        if (!hasBegun) continue;
        if (entry.starts_with("--")) {
            mark = '(' + entry.substr(3) + ") ";
            tag.clear();
        } else if (!tag.empty() && entry.starts_with(tag)) {
            const std::string part = " | " + entry.substr(tag.size());
            const bool fits = used + part.size() <= 140;
            text += (fits ? "" : "\n ") + part;
            used = part.size() + (fits ? used : 0);
        } else {
            const std::string line = std::exchange(mark, "") + entry;
            text += '\n' + line;
            used = line.size();
            tag = entry.starts_with('[') ? entry.substr(0, entry.find(']') + 2) : "";
        }
    }
    mark_.clear();
    return text + '\n';
}

void ScriptedCore::call(Text name, const std::vector<Value>& arguments,
                        std::function<void()> answer) {
    std::string list;
    for (const auto& argument : arguments)
        list += (list.empty() ? "" : ", ") + description(argument);
    transcript.add("call " + name + '(' + list + ')');
    if (answer && holdsAnswers) {
        held_.push_back(std::move(answer));
    } else if (answer) {
        platform::Environment::runInBackground(std::move(answer));
    }
}

ZorvikCoreApiSDK& ZorvikCoreApiSDK::shared() {
    return *ScriptedCore::current;
}

void ZorvikUPIAppDetector::getUPIAppsList(const std::string& token, Completion completion) {
    ScriptedCore::current->call(
        "getUPIAppsList", {token},
        [completion, result = ScriptedCore::current->appsAnswer] { completion(result); });
}

bool ZorvikUPIAppDetector::isUPIAppReturnURL(const std::string& url) {
    ScriptedCore::current->call("isUPIAppReturnURL", {url});
    return url.starts_with("shopreturn");
}

void EventLoggingUtils::safeLogEvent(std::string_view eventName,
                                     const std::optional<std::string>& orderId,
                                     const std::optional<std::string>& token,
                                     const std::optional<std::string>& subMerchantId,
                                     const std::optional<Dictionary>& additionalData,
                                     std::string_view sdkVersion) noexcept {
    std::string event = "event " + std::string(eventName);
    if (!orderId && !token && !subMerchantId) {
        event += " none";
    } else if (orderId != "order-7" || token != plainToken() || subMerchantId != "sub-3") {
        for (const auto& id : {orderId, token, subMerchantId})
            event += id ? " \"" + *id + '"' : " nil";
    }
    EXPECT_EQ(sdkVersion, "2.0.15-alpha.4");
    auto& core = *ScriptedCore::current;
    core.transcript.add(event + ' ' +
                        (core.describesEvents ? description(additionalData.value()) : ""));
}

void EventLoggingService::setAppCode(const std::optional<std::string>& appCode) {
    ScriptedCore::current->call("setAppCode", {appCode.value_or("nil")});
}

std::string APIUtils::webViewViewUrl() {
    return ScriptedCore::current->webViewViewUrl;
}

std::string APIUtils::webViewRespCheckUrl() {
    return ScriptedCore::current->webViewRespCheckUrl;
}

void APIUtils::setZorvikTechUrl(const std::string& url) {
    ScriptedCore::current->call("setZorvikTechUrl", {url});
}

constinit const std::string_view EventConstants::SDK_INITIALIZED = "SDK_INITIALIZED";
constinit const std::string_view EventConstants::CHECKOUT_INITIATED = "CHECKOUT_INITIATED";
constinit const std::string_view EventConstants::UPDATE_ORDER_PAYLOAD = "UPDATE_ORDER_PAYLOAD";
constinit const std::string_view EventConstants::UPI_APPS_LISTED = "UPI_APPS_LISTED";
constinit const std::string_view EventConstants::EXCEPTION_THROWN = "EXCEPTION_THROWN";
constinit const std::string_view EventConstants::BACK_BUTTON_PRESSED = "BACK_BUTTON_PRESSED";
constinit const std::string_view EventConstants::PAYMENT_STATUS = "PAYMENT_STATUS";
constinit const std::string_view EventConstants::WEBVIEW_LAUNCH = "WEBVIEW_LAUNCH";
constinit const std::string_view EventConstants::WEBVIEW_LOADED = "WEBVIEW_LOADED";
constinit const std::string_view EventConstants::WEBVIEW_FAILED = "WEBVIEW_FAILED";
constinit const std::string_view EventConstants::URL_INTERCEPTED = "URL_INTERCEPTED";
constinit const std::string_view EventConstants::REDIRECT_URL_HIT = "REDIRECT_URL_HIT";
constinit const std::string_view EventConstants::UPI_INTENT_STARTED = "UPI_INTENT_STARTED";

}  // namespace zorvik
