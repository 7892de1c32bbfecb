#include "trace/Recording.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>

#include "platform/foundation/Console.h"
#include "platform/foundation/JSONSerialization.h"
#include "platform/runtime/Environment.h"
#include "testkit/CheckoutTestKit.h"

namespace zorvik::trace {
namespace {

using platform::Dictionary;
using platform::Value;
using testing::ElementsAre;
using testing::HasSubstr;
using testkit::CheckoutTestKit;
using testkit::UPIApp;
using testkit::UPIStatus;

std::string path(const std::string& name) {
    return testing::TempDir() + name;
}

std::string contentOf(const std::string& file) {
    std::ostringstream text;
    text << std::ifstream(file).rdbuf();
    return text.str();
}

// The entries of a page, as a script in it reads them.
class Page {
  public:
    explicit Page(const Recording& recording) {
        const std::string file = path("trace.html");
        EXPECT_TRUE(recording.writeHtml(file));
        text = contentOf(file);
        const std::string begin = "id=\"recording\">";
        const std::size_t start = text.find(begin) + begin.size();
        const auto read = platform::JSONSerialization::jsonObject(
            text.substr(start, text.find('<', start) - start),
            platform::JSONSerialization::ReadingOptions::none);
        EXPECT_TRUE(read);
        for (const Value& entry : *read.value().dictionary()->at("entries").array())
            entries.push_back(*entry.dictionary());
        about = *read.value().dictionary()->at("about").dictionary();
    }

    static std::string textOf(const Dictionary& entry, const char* key) {
        return *entry.at(key).string();
    }
    // "lane kind: title"
    static std::string lineOf(const Dictionary& entry) {
        return textOf(entry, "lane") + " " + textOf(entry, "kind") + ": " + textOf(entry, "title");
    }
    const Dictionary* find(std::string_view part) const {
        for (const Dictionary& entry : entries)
            if (lineOf(entry).find(part) != std::string::npos) return &entry;
        return nullptr;
    }
    // From the entry whose line has this part back to what has no cause.
    std::vector<std::string> chain(std::string_view part) const {
        std::vector<std::string> lines;
        for (const Dictionary* entry = find(part); entry != nullptr;) {
            lines.push_back(lineOf(*entry));
            const auto cause = *entry->at("cause").integer();
            entry = nullptr;
            for (const Dictionary& other : entries)
                if (*other.at("id").integer() == cause) entry = &other;
        }
        return lines;
    }

    std::string text;
    std::vector<Dictionary> entries;
    Dictionary about;
};

void payAndReturnTwice(CheckoutTestKit& kit) {
    kit.openCheckout();
    kit.customerPicks(UPIApp::opens);
    kit.customerComesBackAfter(3);
    kit.customerPressesBack();
    kit.enquiryAnswers({{"payment_status", "SUCCESS"}});
    kit.upiAppReturns(UPIStatus::success);
    kit.pageCannotBeReached();
    kit.openCheckout();
    kit.pageCanBeReached();
    kit.customerPressesRetry();
    kit.page().showPanel({platform::ScriptPanel::Kind::confirm, "Leave?", std::nullopt});
    kit.settle();
    kit.windowCloses();
}

// Everything that a checkout does and a recording might change.
std::vector<std::string> transcriptOf(CheckoutTestKit& kit) {
    std::vector<std::string> lines = kit.consoleLines();
    for (const auto& event : kit.events())
        lines.push_back(event.name + platform::description(event.additionalData));
    for (const auto& response : kit.responses())
        lines.push_back(platform::description(response));
    for (const auto& message : kit.messagesToPage())
        lines.push_back(platform::description(message));
    for (const auto& url : kit.platform().application().openedUrls())
        lines.push_back(url);
    lines.push_back(std::to_string(kit.platform().scheduler().turnCount()) + " turns");
    lines.push_back(kit.platform().scheduler().describePending());
    return lines;
}

TEST(RecordingTest, ChangesNothingOfACheckout) {
    std::vector<std::string> without;
    {
        CheckoutTestKit kit;
        payAndReturnTwice(kit);
        without = transcriptOf(kit);
    }
    CheckoutTestKit kit;
    {
        const Recording recording;
        payAndReturnTwice(kit);
        EXPECT_EQ(transcriptOf(kit), without);
        EXPECT_GT(Page(recording).entries.size(), 200u);
    }
    // And nothing is left of it in the way of the next checkout.
    EXPECT_EQ(&platform::Environment::scheduler(), &kit.platform().scheduler());
    EXPECT_EQ(&platform::Environment::stage(), &kit.platform().stage());
    kit.openCheckout();
    EXPECT_TRUE(kit.isScreenOpen());
    EXPECT_GT(kit.consoleLines().size(), without.size() - kit.events().size());
}

TEST(RecordingTest, AnEffectLeadsBackToItsCause) {
    CheckoutTestKit kit;
    const Recording recording;
    kit.openCheckout();
    kit.customerPicks(UPIApp::opens);
    kit.customerComesBackAfter(2);
    kit.upiAppReturns(UPIStatus::success);
    const Page page(recording);
    EXPECT_THAT(page.chain("onCheckoutResponse"),
                ElementsAre("host call: onCheckoutResponse", "mainQueue turn: turn",
                            "coreServices answer: getTransactionEnquiry",
                            "mainQueue task: background task",
                            "coreServices call: getTransactionEnquiry",
                            "page question: may it go to "
                            "testkit-return://upi?status=success&tr=transaction-1"));
    EXPECT_THAT(page.chain("page post"),
                ElementsAre(HasSubstr("upi_intent_back_response"), "mainQueue turn: turn",
                            "coreServices answer: getTransactionEnquiry",
                            "mainQueue task: background task",
                            "coreServices call: getTransactionEnquiry", "mainQueue turn: turn",
                            "upiApp active: the customer is back in this application",
                            "upiApp open: is opened: testkit-opens",
                            HasSubstr("page message: says openUpiIntent: {")));
}

}  // namespace
}  // namespace zorvik::trace
