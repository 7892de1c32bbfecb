#include "c/Completion.h"

#include <memory>
#include <string_view>

#include "c/Boundary.h"

namespace zorvik::c {

using platform::Dictionary;
using platform::Value;

namespace {

// Reads members into a record of optional strings; an absent member and null are nullopt.
class Members {
  public:
    explicit Members(const Dictionary& object) : object_(object) {}

    Members& read(std::string_view name, std::optional<std::string>& into) {
        const auto member = object_.find(name);
        if (member == object_.end() || member->second.isNull()) return *this;
        if (const auto* text = member->second.string()) {
            into = *text;
        } else {
            areStrings_ = false;
        }
        return *this;
    }
    bool areStrings() const { return areStrings_; }

  private:
    const Dictionary& object_;
    bool areStrings_ = true;
};

}  // namespace

platform::Error serviceError(std::string description) {
    return {"zorvik.c", 1, std::move(description)};
}

std::optional<OrderResponse> Reading<OrderResponse>::read(const Value& value) {
    if (value.dictionary() == nullptr) return std::nullopt;
    OrderResponse order;
    Members members(*value.dictionary());
    members.read("orderId", order.orderId)
        .read("orderToken", order.orderToken)
        .read("status", order.status);
    if (!members.areStrings()) return std::nullopt;
    return order;
}

std::optional<std::vector<UPIAppsVO>> Reading<std::vector<UPIAppsVO>>::read(const Value& value) {
    if (value.array() == nullptr) return std::nullopt;
    std::vector<UPIAppsVO> apps;
    for (const Value& element : *value.array()) {
        if (element.dictionary() == nullptr) return std::nullopt;
        UPIAppsVO& app = apps.emplace_back();
        Members members(*element.dictionary());
        members.read("upiAppCode", app.upiAppCode)
            .read("upiAppName", app.upiAppName)
            .read("packageName", app.packageName)
            .read("logoUrl", app.logoUrl);
        if (!members.areStrings()) return std::nullopt;
    }
    return apps;
}

std::optional<TransactionEnquiryResponse> Reading<TransactionEnquiryResponse>::read(
    const Value& value) {
    if (value.dictionary() == nullptr) return std::nullopt;
    TransactionEnquiryResponse response{std::nullopt, *value.dictionary()};
    const auto order = response.fields.find("order");
    if (order == response.fields.end() || order->second.dictionary() == nullptr) return response;
    response.order.emplace();
    const auto status = order->second.dictionary()->find("status");
    if (status != order->second.dictionary()->end() && status->second.string() != nullptr) {
        response.order->status = *status->second.string();
    }
    return response;
}

std::optional<Dictionary> Reading<Dictionary>::read(const Value& value) {
    if (value.dictionary() == nullptr) return std::nullopt;
    return *value.dictionary();
}

namespace {

zorvik_result answeredAlready() {
    return refuse(ZORVIK_WRONG_STATE, "the completion was answered already");
}

}  // namespace

}  // namespace zorvik::c

using namespace zorvik;
using namespace zorvik::c;

extern "C" {

zorvik_result zorvik_completion_succeed(zorvik_completion* completion, const char* json) {
    return atBoundary([&] {
        Call call;
        if (!call.given(completion, "completion")) return call.result();
        if (completion->isAnswered()) return answeredAlready();
        const auto value = call.json(json, "json");
        if (!call) return call.result();
        if (const char* expected = completion->refusal(value)) {
            return refuse(ZORVIK_INVALID_ARGUMENT,
                          "json is not what answers " + completion->service() + ": " + expected);
        }
        if (!completion->claim()) return answeredAlready();
        completion->succeed(value);
        return ZORVIK_OK;
    });
}

zorvik_result zorvik_completion_fail(zorvik_completion* completion, const char* message) {
    return atBoundary([&] {
        Call call;
        if (!call.given(completion, "completion").text(message, "message")) return call.result();
        if (!completion->claim()) return answeredAlready();
        completion->fail(serviceError(message));
        return ZORVIK_OK;
    });
}

void zorvik_completion_free(zorvik_completion* completion) {
    atBoundary([&] {
        const std::unique_ptr<zorvik_completion> freed(completion);
        if (freed && freed->claim()) {
            freed->fail(serviceError("The core services let go of " + freed->service() +
                                     " without an answer"));
        }
        return ZORVIK_OK;
    });
}

}  // extern "C"
