// Every scenario of the demonstration, as scripts/demo plays it: processes of their own on the real
// engine, under a display and a window manager, with the automatic customer.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "examples/merchant/Scenario.h"

namespace zorvik::tests {
namespace {

using ::testing::Contains;
using ::testing::ContainsRegex;
using ::testing::Each;
using ::testing::ElementsAreArray;
using ::testing::HasSubstr;
using ::testing::IsSupersetOf;
using ::testing::Not;
using Lines = std::vector<std::string>;

// What one run of the demonstration printed, sorted by who told it.
class DemoRun {
  public:
    DemoRun(const std::string& scenario, const std::string& options) {
        const std::string command =
            "ZORVIK_DEMO_IS_READY=1 ZORVIK_DEMO_PROGRAMS='" ZORVIK_DEMO_PROGRAMS
            "' timeout 120 '" ZORVIK_SOURCE_FOLDER "/scripts/demo' --port " ZORVIK_DEMO_PORT
            " --scenario " +
            scenario + " " + options + " 2>&1";
        std::FILE* output = popen(command.c_str(), "r");
        char piece[4096];
        std::string line;
        while (std::fgets(piece, sizeof piece, output) != nullptr) {
            line += piece;
            if (line.back() != '\n') continue;
            line.pop_back();
            all.push_back(std::move(line));
            line.clear();
        }
        exitStatus = pclose(output);
    }

    // The lines with this label, without it.
    Lines told(const std::string& label) const {
        Lines lines;
        for (const auto& line : all) {
            if (line.starts_with(label + " ")) lines.push_back(line.substr(9));
        }
        return lines;
    }
    // The steps, without their numbers, which must be 1, 2, 3…
    Lines story() const {
        Lines steps;
        for (const auto& line : all) {
            const std::string number = std::to_string(steps.size() + 1) + "  ";
            const std::size_t at = line.find_first_not_of(' ');
            if (at != line.npos && at > 0 && line.substr(at).starts_with(number))
                steps.push_back(line.substr(at + number.size()));
        }
        return steps;
    }
    // The main thread's events in order: those logged in the background come in no order with
    // them, and are counted instead.
    Lines mainEvents() const {
        Lines names = eventNames();
        std::erase_if(names, isBackground);
        return names;
    }
    std::size_t backgroundEvents(std::string_view name) const {
        const Lines names = eventNames();
        return static_cast<std::size_t>(std::count(names.begin(), names.end(), name));
    }
    std::string everything() const {
        std::string text;
        for (const auto& line : all)
            text += line + "\n";
        return text;
    }

    Lines all;
    int exitStatus = -1;

  private:
    static bool isBackground(const std::string& name) {
        return name == "SDK_INITIALIZED" || name == "CHECKOUT_INITIATED" ||
               name == "PAYMENT_STATUS" || name == "BACK_BUTTON_PRESSED";
    }
    Lines eventNames() const {
        Lines names;
        constexpr std::string_view key = R"("event":")";
        for (const auto& line : told("event")) {
            const auto start = line.find(key);
            if (start == std::string::npos) continue;
            const auto from = start + key.size();
            names.push_back(line.substr(from, line.find('"', from) - from));
        }
        return names;
    }
};

const Lines emptyStore{"at the end, current_transaction_id: none",
                       "at the end, current_package_name: none",
                       "at the end, transaction_start_time: none"};

// The events up to the customer's choice of an app, and those after it.
Lines chosen(const Lines& after = {}) {
    Lines events{"UPDATE_ORDER_PAYLOAD", "UPI_APPS_LISTED", "WEBVIEW_LAUNCH",
                 "URL_INTERCEPTED",      "WEBVIEW_LOADED",  "UPI_INTENT_STARTED"};
    events.insert(events.end(), after.begin(), after.end());
    return events;
}

// The claims of the order's token, the payee's VPA.
constexpr const char* secrets = "[.]ey[A-Za-z0-9+/]{12}|tealheron(@|%40)";

// What a run shows beside its end.
struct Facts {
    Lines host = {};     // among what the host is told
    Lines console = {};  // among the console's lines
    Lines page = {};     // parts of what the page wrote into its journal, all of it
    std::optional<Lines> events = {};
    std::string neverSaid = {};  // part of no console line
    std::size_t paymentStatuses = 1;
};

const std::map<std::string, Facts> facts{
    {"upi-success",
     {.host = {"order: [\"status\": \"SUCCESS\"]", "payment_method: UPI",
               "transaction_id: TXN000000001"},
      .console = {"[UPI RETURN] 📊 Status found: success",
                  "[UPI SUCCESS] 📞 Calling delegate success method"},
      .events = chosen()}},
    // A failure is logged by the screen and by the bridge.
    {"upi-declined", {.events = chosen(), .paymentStatuses = 2}},
    {"upi-cancelled", {.events = chosen(), .paymentStatuses = 2}},
    {"upi-unknown-status", {.events = chosen(), .paymentStatuses = 2}},
    {"upi-empty-return", {.events = chosen(), .paymentStatuses = 2}},
    {"upi-back",
     {.host = {"payment_method: CARD", "status: SUCCESS"},
      .console = {"[APP STATE] 📊 Quick return detected (< 5 seconds)"},
      .page = {"upi_intent_back_response, enquiry \"PENDING\" -> Looked again at the payment."},
      .events = chosen()}},
    {"upi-extended",
     {.host = {"payment_method: UPI", "status: SUCCESS"},
      .console = {"[APP STATE] 📊 Extended return detected (≥ 5 seconds)"},
      .events = chosen({"URL_INTERCEPTED", "WEBVIEW_LOADED", "REDIRECT_URL_HIT"}),
      .neverSaid = "[UPI BACK]"}},
    {"upi-pending", {.host = {"order: [\"status\": \"PENDING\"]"}}},
    {"upi-twice", {.host = {"transaction_id: TXN000000002"}}},
    {"network-lost",
     {.host = {"payment_method: UPI"},
      .console = {"[UPI BACK] ❌ Transaction enquiry failed: Connection terminated unexpectedly"}}},
    {"app-not-installed",
     {.host = {"payment_method: BANK"},
      .page = {"unregistered: UPI app not installed -> Went back to the ways to pay."},
      .neverSaid = "[TRANSACTION STORE]"}},
    {"launch-fails",
     {.host = {"payment_method: CARD"},
      .page = {"unavailable: Failed to launch UPI app -> Went back to the ways to pay."},
      .neverSaid = "[TRANSACTION STORE]"}},
    {"bank", {.host = {"payment_method: BANK"}}},
    {"device-back",
     {.console = {"[BACK HANDLER] ⚠️ URL not within expected base"},
      .page = {"browser_back=true", "device_back_initiated"}}},
    {"killed-and-restarted", {.host = {"payment_method: UPI", "transactionId: TXN000000001"}}},
};

class HandOff : public testing::TestWithParam<std::string> {};

TEST_P(HandOff, EndsAsExpected) {
    const demo::Scenario& scenario = *demo::scenarioByName(GetParam());
    const DemoRun run(scenario.name, "--no-pictures --verbose");
    SCOPED_TRACE(run.everything());
    EXPECT_EQ(run.exitStatus, 0);
    EXPECT_THAT(run.all, Contains("expected " + scenario.expected + ", seen " + scenario.expected));
    EXPECT_THAT(run.everything(), Not(ContainsRegex(secrets)));
    EXPECT_THAT(run.told("store"), IsSupersetOf(emptyStore));

    const auto found = facts.find(scenario.name);
    const Facts expected = found == facts.end() ? Facts() : found->second;
    EXPECT_THAT(run.told("host"), IsSupersetOf(expected.host));
    EXPECT_THAT(run.told("console"), IsSupersetOf(expected.console));
    if (!expected.neverSaid.empty()) {
        EXPECT_THAT(run.told("console"), Each(Not(HasSubstr(expected.neverSaid))));
    }
    for (const auto& part : expected.page)
        EXPECT_THAT(run.told("page"), Contains(HasSubstr(part)));
    if (expected.events) {
        EXPECT_EQ(run.mainEvents(), *expected.events);
    }
    EXPECT_EQ(run.backgroundEvents("PAYMENT_STATUS"), expected.paymentStatuses);

    if (scenario.name != "killed-and-restarted") return;
    EXPECT_THAT(run.told("store"),
                IsSupersetOf({"at the start, current_transaction_id: TXN000000001",
                              "at the start, current_package_name: demo.nilgiri.pay"}));
    EXPECT_THAT(run.told("store"), Not(Contains("at the start, transaction_start_time: none")));
    EXPECT_EQ(run.backgroundEvents("CHECKOUT_INITIATED"), 2U);
}

// The first is played below.
Lines scenarioNames() {
    Lines names;
    for (const auto& scenario : demo::scenarios())
        names.push_back(scenario.name);
    names.erase(names.begin());
    return names;
}
std::string testName(const testing::TestParamInfo<std::string>& scenario) {
    std::string name = scenario.param;
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
}
INSTANTIATE_TEST_SUITE_P(Scenario, HandOff, testing::ValuesIn(scenarioNames()), testName);

TEST(Demonstration, TellsItsStoryOnAScreenfulAndShowsItInOnePicture) {
    const std::string folder =
        std::filesystem::temp_directory_path() / ("zorvik-story-" + std::to_string(getpid()));
    const DemoRun run("tour", "--png-folder '" + folder + "'");
    SCOPED_TRACE(run.everything());
    EXPECT_EQ(run.exitStatus, 0);
    EXPECT_LE(run.all.size(), 25U);
    Lines story = run.story();
    // The customer comes back while the back end is asked: before its word or after it.
    EXPECT_THAT(story, Contains("customer is back in the shop"));
    std::erase(story, "customer is back in the shop");
    EXPECT_THAT(story, ElementsAreArray(
                           {"shop opens", "customer presses Pay", "checkout screen opens",
                            "page cannot be reached; the screen offers Retry",
                            "customer presses Retry", "page is there", "customer taps Nilgiri Pay",
                            "Nilgiri Pay opens", "customer pays in Nilgiri Pay",
                            "host is told: SUCCESS", "shop shows \"Thank you\""}));
    EXPECT_THAT(run.all, Contains("expected SUCCESS, seen SUCCESS"));
    for (const char* name :
         {"shop", "skeleton", "error-panel", "page", "upi-app", "result", "contact-sheet"})
        EXPECT_GT(std::filesystem::file_size(folder + "/" + name + ".png"), 1000U) << name;
    std::ostringstream trace;
    trace << std::ifstream(folder + "/trace.html").rdbuf();
    for (const char* part : {"customer taps Nilgiri Pay", "Nilgiri Pay opens", "onCheckoutResponse",
                             "UPI_INTENT_STARTED", "update order", "data:image/png;base64,"})
        EXPECT_THAT(trace.str(), HasSubstr(part));
    EXPECT_THAT(trace.str(), Not(ContainsRegex(secrets)));
    std::filesystem::remove_all(folder);
}

}  // namespace
}  // namespace zorvik::tests
