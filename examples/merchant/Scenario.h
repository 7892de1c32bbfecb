#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace zorvik::demo {

// One thing the automatic customer does, or waits for. Waiting ends with a failure after twenty
// seconds.
struct Step {
    enum class Action {
        pay,           // presses the shop's Pay button
        seeScreen,     // waits until the checkout screen is there
        see,           // waits until this expression holds in the page
        click,         // clicks what this selector finds in the page, once it can be seen
        fill,          // types `value` into what the selector finds
        seeButton,     // waits for a button of the checkout screen with this title
        press,         // presses it, once it is there
        deviceBack,    // the host's back button
        setFault,      // switches this fault of the back end: "true" or "false" in `value`
        savePng,       // writes the window under this name
        wait,          // seconds
        dieAtHandOff,  // ends the process as kill -9 does, once the hand-off was confirmed
        seeHandOff,    // waits until the hand-off was confirmed
    };

    Action action;
    std::string text = {};
    std::string value = {};
};

// A story the demonstration can tell. All but a killed process end with the
// host being called.
struct Scenario {
    std::string name;
    std::string summary;    // one line
    std::string upiAnswer;  // what the UPI app's customer does; see zorvik-demo-upi-app
    double upiDelay;        // seconds until then
    std::vector<Step> steps;
};

// The first is the default.
const std::vector<Scenario>& scenarios();
// nullptr for an unknown name.
const Scenario* scenarioByName(std::string_view name);

}  // namespace zorvik::demo
