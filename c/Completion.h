#pragma once

#include <atomic>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "core/OrderRecords.h"
#include "core/UPIAppsVO.h"
#include "platform/foundation/Error.h"
#include "platform/foundation/Value.h"

// A core service's answer that is waited for. The host's to free; any thread.
struct zorvik_completion {
    explicit zorvik_completion(std::string service) : service_(std::move(service)) {}
    zorvik_completion(const zorvik_completion&) = delete;
    zorvik_completion& operator=(const zorvik_completion&) = delete;
    virtual ~zorvik_completion() = default;

    const std::string& service() const { return service_; }
    // True for one caller alone, who then answers.
    bool claim() { return !isAnswered_.exchange(true); }
    bool isAnswered() const { return isAnswered_; }

    // What a success must be; nullptr: this value is one.
    virtual const char* refusal(const zorvik::platform::Value& value) const = 0;
    // Called once, after the claim.
    virtual void succeed(const zorvik::platform::Value& value) = 0;
    virtual void fail(const zorvik::platform::Error& error) = 0;

  private:
    const std::string service_;
    std::atomic<bool> isAnswered_ = false;
};

namespace zorvik::c {

platform::Error serviceError(std::string description);

// The record that a JSON value stands for; nullopt when it is not of the kind that `expected` says.
template <class T>
struct Reading;
template <>
struct Reading<OrderResponse> {
    static constexpr const char* expected = "an object whose members are strings";
    static std::optional<OrderResponse> read(const platform::Value& value);
};
template <>
struct Reading<std::vector<UPIAppsVO>> {
    static constexpr const char* expected = "an array of objects whose members are strings";
    static std::optional<std::vector<UPIAppsVO>> read(const platform::Value& value);
};
template <>
struct Reading<TransactionEnquiryResponse> {
    static constexpr const char* expected = "an object";
    static std::optional<TransactionEnquiryResponse> read(const platform::Value& value);
};
template <>
struct Reading<platform::Dictionary> {
    static constexpr const char* expected = "an object";
    static std::optional<platform::Dictionary> read(const platform::Value& value);
};

template <class T>
class CompletionOf : public zorvik_completion {
  public:
    using Receiver = std::function<void(const platform::Result<T>&)>;

    CompletionOf(std::string service, Receiver receiver)
        : zorvik_completion(std::move(service)), receiver_(std::move(receiver)) {}

    const char* refusal(const platform::Value& value) const override {
        return Reading<T>::read(value) ? nullptr : Reading<T>::expected;
    }
    void succeed(const platform::Value& value) override {
        if (auto record = Reading<T>::read(value)) give(std::move(*record));
    }
    void fail(const platform::Error& error) override { give(error); }

  private:
    // What the receiver holds goes with the answer, not with the handle.
    void give(const platform::Result<T>& result) {
        if (const auto receiver = std::exchange(receiver_, nullptr)) receiver(result);
    }

    Receiver receiver_;
};

// The host's to free.
template <class T>
zorvik_completion* makeCompletion(std::string service,
                                  std::function<void(const platform::Result<T>&)> receiver) {
    return new CompletionOf<T>(std::move(service), std::move(receiver));
}

}  // namespace zorvik::c
