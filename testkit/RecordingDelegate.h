#pragma once

#include <vector>

#include "platform/foundation/Export.h"
#include "platform/foundation/Value.h"
#include "trace/Recording.h"
#include "zorvik_mobile_kit_ios_webview_sdk/ZorvikCheckoutDelegates.h"

namespace zorvik::testkit {

// Keeps every dictionary a host is given, in order. Main thread.
class ZORVIK_API RecordingDelegate : public ZorvikCheckoutSDKDelegate {
  public:
    const std::vector<platform::Dictionary>& responses() const { return responses_; }
    void clear() { responses_.clear(); }

    void onCheckoutResponse(const platform::Dictionary& data) override {
        const trace::Step step(trace::Lane::host, "onCheckoutResponse", data);
        responses_.push_back(data);
    }

  private:
    std::vector<platform::Dictionary> responses_;
};

}  // namespace zorvik::testkit
