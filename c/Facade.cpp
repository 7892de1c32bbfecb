#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "c/Boundary.h"
#include "core/development/OrderToken.h"
#include "platform/foundation/Console.h"
#include "zorvik_mobile_kit_ios_webview_sdk/SDKVersion.h"
#include "zorvik_mobile_kit_ios_webview_sdk/ZorvikCheckoutSDK.h"

namespace zorvik::c {

using platform::Array;
using platform::Dictionary;
using platform::Result;
using platform::Value;

namespace {

class HostDelegate : public ZorvikCheckoutSDKDelegate {
  public:
    explicit HostDelegate(Callback<zorvik_text_function> response)
        : response_(std::move(response)) {}

    void onCheckoutResponse(const Dictionary& data) override {
        const std::string text = jsonText(data);
        response_(text.c_str());
    }

  private:
    const Callback<zorvik_text_function> response_;
};

void giveFailure(const Callback<zorvik_answer_function>& answer, const platform::Error& error) {
    answer(static_cast<const char*>(nullptr), plainText(error.localizedDescription).c_str());
}

void giveSuccess(const Callback<zorvik_answer_function>& answer, const Dictionary& fields) {
    answer(jsonText(fields).c_str(), static_cast<const char*>(nullptr));
}

// The members of a shop order; one of another type is the call's refusal.
class ShopOrder {
  public:
    ShopOrder(Call& call, Dictionary members) : call_(call), members_(std::move(members)) {}

    std::string text(std::string_view name) {
        const auto* text = member(name).string();
        return check(text, name) ? *text : "";
    }
    bool boolean(std::string_view name) {
        const auto* boolean = member(name).boolean();
        return check(boolean, name) && *boolean;
    }
    std::optional<Dictionary> optionalObject(std::string_view name) {
        if (member(name).isNull()) return std::nullopt;
        const auto* object = member(name).dictionary();
        return check(object, name) ? *object : Dictionary();
    }

  private:
    const Value& member(std::string_view name) const {
        static const Value none;
        const auto found = members_.find(name);
        return found == members_.end() ? none : found->second;
    }
    bool check(const void* content, std::string_view name) {
        call_.require(content != nullptr, ZORVIK_INVALID_ARGUMENT,
                      "order_json: \"" + std::string(name) + "\" is missing or of another type");
        return content != nullptr;
    }

    Call& call_;
    const Dictionary members_;
};

}  // namespace
}  // namespace zorvik::c

struct zorvik_delegate {
    std::shared_ptr<zorvik::c::HostDelegate> receiver;
};

using namespace zorvik;
using namespace zorvik::c;

extern "C" {

const char* zorvik_version(void) {
    return SDKVersion::version.data();
}

zorvik_result zorvik_set_console(zorvik_text_function line, void* user_data,
                                 zorvik_destroy destroy) {
    return atBoundary([&] {
        const Callback sink(line, user_data, destroy);
        if (!sink) {
            platform::setConsoleSink({});
            return ZORVIK_OK;
        }
        platform::setConsoleSink(
            [sink](std::string_view text) { sink(plainText(std::string(text)).c_str()); });
        return ZORVIK_OK;
    });
}

char* zorvik_make_order_token(const char* claims_json) {
    return atBoundary(static_cast<char*>(nullptr), [&]() -> char* {
        Call call;
        const auto claims = call.object(claims_json, "claims_json");
        if (!call) return nullptr;
        return hostString(development::makeOrderToken(claims));
    });
}

zorvik_delegate* zorvik_delegate_make(zorvik_text_function response, void* user_data,
                                      zorvik_destroy destroy) {
    return atBoundary(static_cast<zorvik_delegate*>(nullptr), [&]() -> zorvik_delegate* {
        Callback callback(response, user_data, destroy);
        if (!Call().require(static_cast<bool>(callback), ZORVIK_INVALID_ARGUMENT,
                            "response is NULL")) {
            return nullptr;
        }
        return new zorvik_delegate{std::make_shared<HostDelegate>(std::move(callback))};
    });
}

void zorvik_delegate_free(zorvik_delegate* delegate) {
    delete delegate;
}

zorvik_result zorvik_set_delegate(zorvik_delegate* delegate) {
    return atBoundary([&] {
        Call call;
        if (!call.onMainThread()) return call.result();
        std::weak_ptr<ZorvikCheckoutSDKDelegate> receiver;
        if (delegate != nullptr) receiver = delegate->receiver;
        ZorvikCheckoutSDK::shared().setDelegate(receiver);
        return ZORVIK_OK;
    });
}

zorvik_result zorvik_set_environment_url(const char* url) {
    return atBoundary([&] {
        Call call;
        if (!call.onMainThread().optionalText(url, "url")) return call.result();
        ZorvikCheckoutSDK::shared().setEnvironmentUrl(optionalString(url));
        return ZORVIK_OK;
    });
}

zorvik_result zorvik_initialize(const char* app_code) {
    return atBoundary([&] {
        Call call;
        if (!call.onMainThread().optionalText(app_code, "app_code")) return call.result();
        ZorvikCheckoutSDK::shared().initialize(optionalString(app_code));
        return ZORVIK_OK;
    });
}

zorvik_result zorvik_checkout(zorvik_presenter* presenter, const zorvik_checkout_options* options) {
    return atBoundary([&] {
        const zorvik_checkout_options given =
            options == nullptr ? zorvik_checkout_options{} : *options;
        Call call;
        call.onMainThread().given(presenter, "presenter");
        call.optionalText(given.order_token, "order_token")
            .optionalText(given.wallet_code, "wallet_code")
            .optionalText(given.payment_flow, "payment_flow")
            .optionalText(given.payment_mode_code, "payment_mode_code")
            .optionalText(given.bank_code, "bank_code");
        if (!call) return call.result();
        ZorvikCheckoutSDK::shared().checkout(
            presenter->controller, {.orderToken = optionalString(given.order_token),
                                    .walletCode = optionalString(given.wallet_code),
                                    .paymentFlow = optionalString(given.payment_flow),
                                    .paymentModeCode = optionalString(given.payment_mode_code),
                                    .bankCode = optionalString(given.bank_code)});
        return ZORVIK_OK;
    });
}

zorvik_result zorvik_device_back(void) {
    return atBoundary([&] {
        Call call;
        if (!call.onMainThread()) return call.result();
        ZorvikCheckoutSDK::shared().handleDeviceBackButtonPress();
        return ZORVIK_OK;
    });
}

zorvik_result zorvik_create_order(double amount, const char* currency, const char* line_items_json,
                                  const char* user_json, zorvik_answer_function answer,
                                  void* user_data, zorvik_destroy destroy) {
    return atBoundary([&] {
        const Callback callback(answer, user_data, destroy);
        Call call;
        call.onMainThread()
            .text(currency, "currency")
            .require(static_cast<bool>(callback), ZORVIK_INVALID_ARGUMENT, "answer is NULL");
        const auto items = call.json(line_items_json, "line_items_json");
        std::vector<Dictionary> lineItems;
        bool areObjects = items.array() != nullptr;
        for (const auto& item : areObjects ? *items.array() : Array()) {
            areObjects = areObjects && item.dictionary() != nullptr;
            if (areObjects) lineItems.push_back(*item.dictionary());
        }
        call.require(areObjects, ZORVIK_INVALID_ARGUMENT,
                     "line_items_json is not an array of JSON objects");
        std::optional<Dictionary> user;
        if (user_json != nullptr) user = call.object(user_json, "user_json");
        if (!call) return call.result();
        ZorvikCheckoutSDK::shared().createOrder(
            amount, currency, lineItems, user, [callback](const Result<OrderResponse>& result) {
                if (!result) return giveFailure(callback, result.error());
                Dictionary fields;
                const auto add = [&fields](const char* name, const auto& text) {
                    if (text) fields[name] = *text;
                };
                add("orderId", result.value().orderId);
                add("orderToken", result.value().orderToken);
                add("status", result.value().status);
                giveSuccess(callback, fields);
            });
        return ZORVIK_OK;
    });
}

zorvik_result zorvik_create_shop_order(const char* order_json, zorvik_answer_function answer,
                                       void* user_data, zorvik_destroy destroy) {
    return atBoundary([&] {
        const Callback callback(answer, user_data, destroy);
        Call call;
        call.onMainThread().require(static_cast<bool>(callback), ZORVIK_INVALID_ARGUMENT,
                                    "answer is NULL");
        ShopOrder order(call, call.object(order_json, "order_json"));
        const auto currency = order.text("currency");
        const auto amount = order.text("amount");
        const auto productId = order.text("productId");
        const auto lineItems = order.boolean("orderLineItems");
        const auto experience = order.text("checkoutExperience");
        const auto paymentMode = order.text("paymentMode");
        const auto subPaymentMode = order.text("subPaymentMode");
        const auto user = order.optionalObject("user");
        if (!call) return call.result();
        ZorvikCheckoutSDK::shared().createShopOrder(
            currency, amount, productId, lineItems, experience, paymentMode, subPaymentMode, user,
            [callback](const Result<Dictionary>& result) {
                if (!result) return giveFailure(callback, result.error());
                giveSuccess(callback, result.value());
            });
        return ZORVIK_OK;
    });
}

void zorvik_presenter_free(zorvik_presenter* presenter) {
    delete presenter;
}

}  // extern "C"
