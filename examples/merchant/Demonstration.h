#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "examples/common/Words.h"
#include "examples/merchant/AutomaticCustomer.h"
#include "examples/merchant/Desktop.h"
#include "examples/merchant/Merchant.h"
#include "examples/merchant/Scenario.h"
#include "trace/Recording.h"

namespace zorvik::demo {

struct DemonstrationOptions {
    std::string backendUrl;
    std::string pngFolder;  // "" takes no pictures
    std::string traceFile;  // where the run's recording is written; "" records nothing
    std::string orderFile;  // remembers the open order, for a shop that was killed
    const Scenario* scenario = nullptr;
    bool hasAutomaticCustomer = false;
    bool resumesOrder = false;  // checks out the remembered order instead of a new one
};

// One run around the shop: plays the customer, tells the story as it happens, takes the pictures,
// and compares what the host was told with what it should have been. The desktop outlives it. Main
// thread only.
class Demonstration {
  public:
    Demonstration(Desktop& desktop, DemonstrationOptions options);
    ~Demonstration();
    Demonstration(const Demonstration&) = delete;
    Demonstration& operator=(const Demonstration&) = delete;

    // Until the story ended or the window was closed; with an automatic customer, two minutes at
    // most. True when the host was told what was expected; with a person, when it was told at all.
    bool run();

  private:
    class Witness;

    void pressedPay();
    void writeTrace() const;
    // Lets the checkout screen go and the result be seen.
    void awaitResult();
    // False when the window shows nothing yet.
    bool savePng(const std::string& name);
    void play(std::vector<Step> steps);
    void runUntil(const std::function<bool()>& condition);
    std::string seen() const;

    Desktop& desktop_;
    const DemonstrationOptions options_;
    // Shared with what other threads tell. Before what it records, so that it outlives that.
    const std::shared_ptr<trace::Recording> recording_;
    const std::shared_ptr<Merchant> shop_;
    const std::shared_ptr<Witness> witness_;
    std::shared_ptr<ZorvikCheckoutSDKDelegate> receiver_;
    std::unique_ptr<AutomaticCustomer> customer_;
    std::optional<std::string> stuckAt_;
    const Listener upiApps_;
};

}  // namespace zorvik::demo
