#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace zorvik::demo {

// One thing the automatic customer does, or waits for. Waiting ends with a failure after twenty
// seconds.
struct Step {
    enum class Action {
        seeButton,     // waits for a button of the window with this title
        press,         // presses it, once it is there
        seeScreen,     // waits until the checkout screen is there
        see,           // waits until this expression holds in the page
        click,         // clicks what this selector finds in the page, once it can be seen
        fill,          // types `value` into what the selector finds
        deviceBack,    // the host's back button
        setFault,      // switches this fault of the back end: "true" or "false" in `value`
        savePng,       // writes the window under this name, `value` seconds from now (0.7)
        seeApp,        // waits until a UPI app has opened
        seeBack,       // waits until the customer is back from it
        dieAtHandOff,  // ends the process as kill -9 does, once the hand-off is on record
    };

    Action action;
    std::string text = {};
    std::string value = {};
    std::string story = {};  // what is told of it once it is done; "" tells nothing
};

// A story the demonstration can tell.
struct Scenario {
    std::string name;
    std::string summary;    // one line
    std::string upiAnswer;  // what the UPI app's customer does; see zorvik-demo-upi-app
    double upiDelay;        // seconds until then
    std::string expected;   // what the host is told, as `inShort` says it; each call, if several
    std::vector<Step> steps;
};

// The first is the default.
const std::vector<Scenario>& scenarios();
// nullptr for an unknown name.
const Scenario* scenarioByName(std::string_view name);

// What the customer does whose shop was killed and started again.
std::vector<Step> stepsAfterRestart();
// What is watched for where a person pays: when the shop opens, and at each payment.
std::vector<Step> stepsOfOpening();
std::vector<Step> stepsOfOnlooker();

}  // namespace zorvik::demo
