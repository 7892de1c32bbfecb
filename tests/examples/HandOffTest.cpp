// Whole payments through a UPI app that is a process of its own: the demonstration's programs on
// the real engine, under a window manager, with the demonstration's automatic customer.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace zorvik::tests {
namespace {

using ::testing::Contains;
using ::testing::ContainsRegex;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsSupersetOf;
using ::testing::Not;
using Lines = std::vector<std::string>;

// What one run of the demonstration printed, sorted by who told it.
class DemoRun {
  public:
    explicit DemoRun(const std::string& scenario) {
        const std::string pictures =
            std::filesystem::temp_directory_path() /
            ("zorvik-hand-off-" + std::to_string(getpid()) + "-" + scenario);
        std::filesystem::create_directories(pictures);
        const std::string command =
            "ZORVIK_DEMO_IS_READY=1 ZORVIK_DEMO_PROGRAMS='" ZORVIK_DEMO_PROGRAMS
            "' timeout 120 '" ZORVIK_SOURCE_FOLDER "/scripts/demo' --port " ZORVIK_DEMO_PORT
            " --customer auto --scenario " +
            scenario + " --png-folder '" + pictures + "' 2>'" + pictures + "/errors'";
        std::FILE* output = popen(command.c_str(), "r");
        char piece[4096];
        std::string line;
        while (std::fgets(piece, sizeof piece, output) != nullptr) {
            line += piece;
            if (line.back() != '\n') continue;
            line.pop_back();
            all_.push_back(std::move(line));
            line.clear();
        }
        exitStatus = pclose(output);
        std::ostringstream errors;
        errors << std::ifstream(pictures + "/errors").rdbuf();
        errors_ = errors.str();
        std::filesystem::remove_all(pictures);
    }

    // The lines with this label, without it.
    Lines told(const std::string& label) const {
        Lines lines;
        for (const auto& line : all_) {
            if (line.starts_with(label + " ")) lines.push_back(line.substr(9));
        }
        return lines;
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
        std::string text = errors_;
        for (const auto& line : all_) {
            text += line + "\n";
        }
        return text;
    }

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

    Lines all_;
    std::string errors_;
};

const Lines emptyStore{"at the end, current_transaction_id: none",
                       "at the end, current_package_name: none",
                       "at the end, transaction_start_time: none"};

// The events up to the customer's choice of an app.
Lines chosen(const Lines& after = {}) {
    Lines events{"UPDATE_ORDER_PAYLOAD", "UPI_APPS_LISTED", "WEBVIEW_LAUNCH",
                 "URL_INTERCEPTED",      "WEBVIEW_LOADED",  "UPI_INTENT_STARTED"};
    events.insert(events.end(), after.begin(), after.end());
    return events;
}

// The host was called, the screen's end emptied the store, and so many payment statuses were
// logged; nothing that was printed holds a secret.
void expectAnswered(const DemoRun& run, std::size_t paymentStatuses = 1) {
    EXPECT_EQ(run.exitStatus, 0);
    // The claims of the order's token, the payee's VPA.
    EXPECT_THAT(run.everything(), Not(ContainsRegex("[.]ey[A-Za-z0-9+/]{12}|tealheron(@|%40)")));
    EXPECT_THAT(run.told("store"), IsSupersetOf(emptyStore));
    EXPECT_EQ(run.backgroundEvents("PAYMENT_STATUS"), paymentStatuses);
}

TEST(HandOff, ASuccessByReturnAddressIsConfirmedByTheEnquiry) {
    const DemoRun run("upi-success");
    SCOPED_TRACE(run.everything());
    expectAnswered(run);
    EXPECT_THAT(run.told("host"),
                IsSupersetOf({"order: [\"status\": \"SUCCESS\"]", "payment_method: UPI",
                              "transaction_id: TXN000000001"}));
    EXPECT_THAT(run.told("host"), Not(Contains(HasSubstr("error"))));
    EXPECT_EQ(run.mainEvents(), chosen());
    EXPECT_THAT(run.told("console"),
                IsSupersetOf({"[UPI RETURN] 📊 Status found: success",
                              "[UPI SUCCESS] 📞 Calling delegate success method"}));
}

TEST(HandOff, OtherReturnAddressesReachTheHostAsFailures) {
    struct Case {
        const char* scenario;
        const char* error;
        const char* event;
    };
    const Case cases[] = {
        {"upi-declined", "error: Declined in Nilgiri Pay", R"("status":"failed","transactionId")"},
        {"upi-cancelled", "error: Payment cancelled by user", R"("status":"cancelled")"},
        {"upi-empty-return", "error: Unknown payment status", R"("status":"unknown")"},
    };
    for (const auto& [scenario, error, event] : cases) {
        SCOPED_TRACE(scenario);
        const DemoRun run(scenario);
        SCOPED_TRACE(run.everything());
        // One of the screen's own, one of the bridge's.
        expectAnswered(run, 2);
        EXPECT_THAT(run.told("host"), Contains(error));
        EXPECT_THAT(run.told("host"), testing::SizeIs(7));
        EXPECT_EQ(run.mainEvents(), chosen());
        EXPECT_THAT(run.told("event"), Contains(HasSubstr(event)));
    }
}

TEST(HandOff, AQuickReturnTellsThePageWhichLetsTheCustomerChooseAgain) {
    const DemoRun run("upi-back");
    SCOPED_TRACE(run.everything());
    expectAnswered(run);
    EXPECT_THAT(run.told("page"),
                Contains("upi_intent_back_response, enquiry \"PENDING\" -> Looked again at the "
                         "payment."));
    EXPECT_THAT(run.told("host"), IsSupersetOf({"payment_method: CARD", "status: SUCCESS"}));
    EXPECT_EQ(run.mainEvents(), chosen());
    EXPECT_THAT(run.told("console"), Contains("[APP STATE] 📊 Quick return detected (< 5 seconds)"));
}

TEST(HandOff, AnExtendedReturnEndsInTheResponseRedirect) {
    const DemoRun run("upi-extended");
    SCOPED_TRACE(run.everything());
    expectAnswered(run);
    EXPECT_THAT(run.told("console"),
                Contains("[APP STATE] 📊 Extended return detected (≥ 5 seconds)"));
    EXPECT_THAT(run.told("console"), Not(Contains(HasSubstr("[UPI BACK]"))));
    EXPECT_THAT(run.told("host"), IsSupersetOf({"payment_method: UPI", "status: SUCCESS"}));
    EXPECT_EQ(run.mainEvents(), chosen({"URL_INTERCEPTED", "WEBVIEW_LOADED", "REDIRECT_URL_HIT"}));
}

TEST(HandOff, AMissingAppAndARefusedLaunchAreToldToThePage) {
    struct Case {
        const char* scenario;
        const char* page;
        const char* method;
    };
    const Case cases[] = {
        {"app-not-installed",
         "unregistered: UPI app not installed -> Went back to the ways to pay.",
         "payment_method: BANK"},
        {"launch-fails", "unavailable: Failed to launch UPI app -> Went back to the ways to pay.",
         "payment_method: CARD"},
    };
    for (const auto& [scenario, page, method] : cases) {
        SCOPED_TRACE(scenario);
        const DemoRun run(scenario);
        SCOPED_TRACE(run.everything());
        expectAnswered(run);
        EXPECT_THAT(run.told("page"), Contains(page));
        EXPECT_THAT(run.told("console"), Not(Contains(HasSubstr("[TRANSACTION STORE]"))));
        EXPECT_THAT(run.told("host"), IsSupersetOf({std::string(method), {"status: SUCCESS"}}));
    }
}

TEST(HandOff, AMerchantKilledAfterTheHandOffFindsTheRecordAndThePayment) {
    const DemoRun run("killed-and-restarted");
    SCOPED_TRACE(run.everything());
    expectAnswered(run);
    EXPECT_THAT(run.told("store"),
                IsSupersetOf({"at the start, current_transaction_id: TXN000000001",
                              "at the start, current_package_name: demo.nilgiri.pay"}));
    EXPECT_THAT(run.told("store"), Not(Contains("at the start, transaction_start_time: none")));
    EXPECT_THAT(run.told("host"), IsSupersetOf({"payment_method: UPI", "status: SUCCESS",
                                                "transactionId: TXN000000001"}));
    EXPECT_EQ(run.backgroundEvents("CHECKOUT_INITIATED"), 2U);
}

TEST(HandOff, TroubleOnTheReturnEndsWithAnAnswerAllTheSame) {
    struct Case {
        const char* scenario;
        const char* host;
    };
    const Case cases[] = {
        {"enquiry-fails", "error: Transaction enquiry failed"},
        {"upi-pending", "order: [\"status\": \"PENDING\"]"},
        {"network-lost", "status: SUCCESS"},
        {"upi-twice", "transaction_id: TXN000000002"},
    };
    for (const auto& [scenario, host] : cases) {
        SCOPED_TRACE(scenario);
        const DemoRun run(scenario);
        SCOPED_TRACE(run.everything());
        expectAnswered(run);
        EXPECT_THAT(run.told("host"), Contains(host));
    }
}

TEST(HandOff, BackActionsAreAnsweredByThePage) {
    const DemoRun run("device-back");
    SCOPED_TRACE(run.everything());
    expectAnswered(run);
    EXPECT_THAT(run.told("page"), Contains(HasSubstr("browser_back=true")));
    EXPECT_THAT(run.told("page"), Contains(HasSubstr("device_back_initiated")));
    EXPECT_THAT(run.told("console"),
                Contains("[BACK HANDLER] ⚠️ URL not within expected base"));
    EXPECT_THAT(run.told("host"), Contains("status: CANCELLED"));
}

}  // namespace
}  // namespace zorvik::tests
