#include "testkit/story/StoryLines.h"

namespace zorvik::testkit {

using Moment = Story::Moment;

namespace {

// One of these lines comes for each of those, or at the most one.
enum class Relation { oneForEach, atMostOneForEach };

struct LineLaw {
    std::initializer_list<std::string_view> lines;
    Relation relation;
    std::initializer_list<std::string_view> causes;
};

const LineLaw lineLaws[] = {
    {{"[URL INTERCEPT] 🎯 Found redirect URL", "[UPI RETURN] 🔍 isUPIAppReturnURL called for URL"},
     Relation::oneForEach,
     {"[URL INTERCEPT] 🔍 Intercepted URL"}},
    {{"[UPI SCHEME] 🔍 Checking URL scheme"},
     Relation::oneForEach,
     {"[UPI RETURN] 🔍 isUPIAppReturnURL called for URL"}},
    {{"[UPI RETURN] 🎯 Detected UPI app return URL!", "[URL INTERCEPT] ✅ Allowing URL to load"},
     Relation::oneForEach,
     {"[UPI SCHEME] 📊 Is UPI return by scheme"}},
    {{"[REDIRECT] 🚀 handleWebViewRespCheckUrl called!"},
     Relation::oneForEach,
     {"[URL INTERCEPT] 🎯 Found redirect URL", "[APP STATE] 🎯 Found response parameter!"}},
    {{"[REDIRECT] ✅ Response parameter found", "[REDIRECT] ❌ No response parameter found",
      "[REDIRECT] ❌ Failed to parse URL components"},
     Relation::oneForEach,
     {"[REDIRECT] 🚀 handleWebViewRespCheckUrl called!"}},
    {{"[REDIRECT] 🚀 handleParsedResponse called with data",
      "[REDIRECT] ❌ Both JSON and Base64 decoding failed"},
     Relation::oneForEach,
     {"[REDIRECT] ✅ Response parameter found"}},
    {{"[UPI RETURN] 🚀 User returned from UPI app!"},
     Relation::oneForEach,
     {"[UPI RETURN] 🎯 Detected UPI app return URL!"}},
    {{"[UPI SUCCESS] 🚀 Handling UPI success callback!",
      "[UPI FAILURE] 🚀 Handling UPI failure callback!",
      "[UPI CANCELLATION] 🚀 Handling UPI cancellation callback!",
      "[UPI UNKNOWN] 🚀 Handling UPI unknown status callback!"},
     Relation::oneForEach,
     {"[UPI RETURN] 🚀 User returned from UPI app!"}},
    // The first task of a failure's report holds the screen, so its line comes whatever happens.
    {{"[UPI FAILURE] 📞 Calling delegate failure method"},
     Relation::oneForEach,
     {"[UPI FAILURE] 🚀 Handling UPI failure callback!"}},
    {{"[UPI CANCELLATION] 📞 Calling delegate failure method"},
     Relation::oneForEach,
     {"[UPI CANCELLATION] 🚀 Handling UPI cancellation callback!"}},
    {{"[UPI UNKNOWN] 📞 Calling delegate failure method"},
     Relation::oneForEach,
     {"[UPI UNKNOWN] 🚀 Handling UPI unknown status callback!"}},
    {{"[UPI SUCCESS] 📞 Calling delegate success method",
      "[UPI SUCCESS] 📞 Calling delegate failure method"},
     Relation::atMostOneForEach,
     {"[UPI SUCCESS] ✅ Transaction enquiry successful",
      "[UPI SUCCESS] ❌ Transaction enquiry failed"}},
    {{"[APP STATE] ⚠️ No stored transaction details found",
      "[APP STATE] 🎯 UPI app was launched - checking return status..."},
     Relation::oneForEach,
     {"[APP STATE] 🚀 App became active - user returned from UPI app!"}},
    {{"[APP STATE] 📊 Extended return detected (≥ 5 seconds)",
      "[APP STATE] ✅ Webview is still visible - treating as UPI app return",
      "[APP STATE] ⚠️ Webview is not visible - might be user back navigation"},
     Relation::oneForEach,
     {"[APP STATE] 🎯 UPI app was launched - checking return status..."}},
    {{"[UPI BACK] 🚀 User went back from UPI app - Android-style handling!"},
     Relation::oneForEach,
     {"[APP STATE] ✅ Webview is still visible - treating as UPI app return"}},
    {{"[BACK HANDLER] 🚀 insertJSToWebview called"},
     Relation::oneForEach,
     {"[BACK HANDLER] 🚀 Device back button pressed - Android-style handling",
      "[UPI BACK] 🚀 User went back from UPI app - Android-style handling!"}},
    {{"[BACK HANDLER] 📱 Handling UPI intent back"},
     Relation::atMostOneForEach,
     {"[UPI BACK] 🚀 User went back from UPI app - Android-style handling!"}},
    {{"[UPI BACK] 🚀 UPI intent back - Android-style handling"},
     Relation::oneForEach,
     {"[BACK HANDLER] 📱 Handling UPI intent back"}},
    {{"[UPI BACK] 📜 Executing JavaScript"},
     Relation::oneForEach,
     {"[UPI BACK] ✅ Transaction enquiry successful", "[UPI BACK] ❌ Transaction enquiry failed"}},
    {{"[BACK HANDLER] 📜 Executing JavaScript", "[BACK HANDLER] ❌ Failed to parse URLs"},
     Relation::oneForEach,
     {"[BACK HANDLER] 🚀 Device back pressed - Android-style handling"}},
    {{"[BACK HANDLER] ✅ JavaScript executed successfully", "[BACK HANDLER] ❌ JavaScript error"},
     Relation::atMostOneForEach,
     {"[BACK HANDLER] 📜 Executing JavaScript"}},
    {{"[UPI BACK] ✅ JavaScript executed successfully", "[UPI BACK] ❌ JavaScript error"},
     Relation::atMostOneForEach,
     {"[UPI BACK] 📜 Executing JavaScript"}},
    {{"[UPI RESPONSE] ✅ Response sent successfully", "[UPI RESPONSE] ❌ Error sending response"},
     Relation::atMostOneForEach,
     {"[UPI RESPONSE] 📜 JavaScript to execute"}},
    {{"[UPI LAUNCH] ❌ UPI app not installed", "[UPI LAUNCH] ✅ UPI app is installed, launching..."},
     Relation::oneForEach,
     {"[UPI LAUNCH] ✅ URL created successfully"}},
    {{"[UPI LAUNCH] ✅ UPI app launched successfully!", "[UPI LAUNCH] ❌ Failed to launch UPI app"},
     Relation::oneForEach,
     {"[UPI LAUNCH] ✅ UPI app is installed, launching..."}},
    {{"[TRANSACTION STORE] ✅ Transaction details stored successfully"},
     Relation::atMostOneForEach,
     {"[UPI LAUNCH] ✅ UPI app launched successfully!"}},
    {{"[VIEW LIFECYCLE] 🧹 Performing cleanup due to dismissal",
      "[VIEW LIFECYCLE] ⏸️ Skipping cleanup - might be UPI app return"},
     Relation::oneForEach,
     {"[VIEW LIFECYCLE] 🚀 viewWillDisappear called", "[VIEW LIFECYCLE] 🚀 viewDidDisappear called"}},
};

}  // namespace

std::size_t total(const Story& story, std::initializer_list<std::string_view> lines) {
    std::size_t sum = 0;
    for (const std::string_view line : lines)
        sum += story.lineCount(line);
    return sum;
}

std::string counted(std::size_t count, std::size_t causes, std::string_view what) {
    return std::to_string(count) + " for " + std::to_string(causes) +
           " causes: " + std::string(what);
}

std::string linesFollow(const Story& story, Moment moment) {
    // What was under way when a platform ended is dropped.
    if (moment != Moment::end || story.didPlatformEnd) return "";
    for (const LineLaw& law : lineLaws) {
        const std::size_t count = total(story, law.lines);
        const std::size_t causes = total(story, law.causes);
        if (count > causes || (law.relation == Relation::oneForEach && count < causes))
            return counted(count, causes, *law.lines.begin());
    }
    const std::size_t enquiries =
        story.lineCount("[UPI SUCCESS] ✅ Transaction enquiry successful") +
        story.lineCount("[UPI SUCCESS] ❌ Transaction enquiry failed");
    if (enquiries != story.successEnquiries)
        return counted(enquiries, story.successEnquiries, "answers to enquiries");
    for (const auto& [tag, count] : story.evaluations) {
        const std::size_t outcomes = total(
            story, {tag + " ✅ JavaScript executed successfully", tag + " ❌ JavaScript error",
                    tag + " ✅ Response sent successfully", tag + " ❌ Error sending response"});
        if (outcomes < count) return counted(outcomes, count, tag + " outcomes of scripts");
    }
    return "";
}

}  // namespace zorvik::testkit
