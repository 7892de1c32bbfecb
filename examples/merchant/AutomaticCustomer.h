#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <string>

#include "examples/merchant/Desktop.h"
#include "examples/merchant/Scenario.h"
#include "platform/webkit/WKWebView.h"

namespace zorvik::demo {

// Plays a scenario's customer on the real widgets and the real page: looks, clicks, types. Owned
// by the merchant's program; main thread only.
class AutomaticCustomer {
  public:
    struct Surroundings {
        Desktop& desktop;
        std::function<bool(const std::string& name)> savePng;  // false: not yet
        bool takesPictures;
        std::function<void(const std::string& story)> tell;
        std::function<void()> deviceBack;
        // Calls `done` in a later turn, once the back end has taken the fault over.
        std::function<void(const std::string& fault, bool isOn, std::function<void()> done)>
            setFault;
        std::function<bool()> isHandedOff;  // whether the record of a hand-off is written
        std::function<bool()> isInApp;      // whether a UPI app has opened and was not left yet
    };

    AutomaticCustomer(std::vector<Step> steps, Surroundings surroundings);
    ~AutomaticCustomer();
    AutomaticCustomer(const AutomaticCustomer&) = delete;
    AutomaticCustomer& operator=(const AutomaticCustomer&) = delete;

    // Begins with the first step. `stuck` is told what was waited for in vain.
    void start(std::function<void(const std::string& waitedFor)> stuck);

  private:
    void next();
    // Does the step; false when its moment has not come.
    bool attempt(const Step& step);
    void look(const std::string& script);
    void setFault(const Step& step);
    // The page of the checkout screen on top; nullptr without one.
    std::shared_ptr<platform::WKWebView> page() const;
    double secondsInStep() const;

    std::deque<Step> steps_;
    Surroundings surroundings_;
    std::function<void(const std::string&)> stuck_;
    // Answers of the page that come after this object find it gone through this.
    std::shared_ptr<AutomaticCustomer*> self_ = std::make_shared<AutomaticCustomer*>(this);
    double stepStart_ = 0;
    bool isAsking_ = false;  // the page or the back end, whose answer is on its way
    bool hasAnswer_ = false;
};

}  // namespace zorvik::demo
