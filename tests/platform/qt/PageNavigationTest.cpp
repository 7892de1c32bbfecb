#include "platform/qt/PageNavigation.h"

#include <gmock/gmock.h>

#include <sstream>

namespace zorvik::tests {
namespace {

using platform::qt::PageNavigation;
using Outcome = PageNavigation::Outcome;

// Feeds what the engine tells, one word and its address an event, and writes down what the page
// reports, with "|" between one event and the next where anything was reported.
class Driver {
  public:
    std::string run(const std::string& events) {
        std::istringstream stream(events);
        for (std::string event, address; std::getline(stream, event, ',');) {
            std::istringstream words(event);
            words >> event >> address;
            tell(feed(event, address));
        }
        return said_ + "; " + navigation_.address().value_or("none");
    }

  private:
    PageNavigation::Reports feed(const std::string& event, const std::string& address) {
        const platform::Error error{"test", 1, "text"};
        const auto& a = address;
        auto& n = navigation_;
        if (event == "load") {
            n.want(a);
            return n.begin();
        }
        if (event == "want") return n.want(a), PageNavigation::Reports{};
        if (event == "allow") return n.allowRequest();
        if (event == "decline") return n.cancelRequest(), n.takeDue();
        if (event == "go" || event == "refuse" || event == "unknown") {
            // The engine calls a script's load a redirect at times.
            const auto kind = n.kindOf(true);
            tell(n.ask(a, kind));
            const auto answer =
                event == "go" ? PageNavigation::Answer::allow : PageNavigation::Answer::cancel;
            if (event == "unknown") {
                n.answerUnopenable(a, error);
            } else {
                n.answer(a, kind, answer);
            }
            if (event != "go") n.refused(a);
            return {};
        }
        if (event == "document") return n.documentCreated(a);
        if (event == "loaded") return n.documentLoaded();
        if (event == "address") return n.addressChanged(a), n.takeDue();
        if (event == "succeeded") return n.ended(Outcome::succeeded, a, error);
        if (event == "stopped") return n.ended(Outcome::stopped, a, error);
        if (event == "failed") return n.ended(Outcome::failed, a, error);
        if (event == "unexplained") return n.ended(Outcome::unexplained, a, error);
        if (event == "died") return n.processEnded(error);
        if (event == "stop") {
            n.endWillCome();
            n.stop(error);
            return {};
        }
        if (event == "turn") return n.takeDue();
        ADD_FAILURE() << event;
        return {};
    }

    void tell(const PageNavigation::Reports& reports) {
        static const char* const names[] = {"start", "commit", "finish", "early", "late"};
        if (reports.empty()) return;
        std::string text;
        for (const auto& report : reports)
            text += (text.empty() ? "" : " ") + std::string(names[static_cast<int>(report.kind)]);
        said_ += (said_.empty() ? "" : " | ") + text;
    }

    PageNavigation navigation_;
    std::string said_;
};

TEST(PageNavigationTest, WhatTheEngineTellsBecomesWhatThePageReports) {
    const std::string shown = "load /a, allow, document /a, succeeded /a, ";
    const std::string shows = "start | commit | finish";
    const struct {
        const char* name;
        std::string events;
        std::string expected;
    } cases[] = {
        {"a load", "want /a", "; /a"},
        {"declined", "load /a, decline", "; none"},
        {"allowed", "load /a, allow, document /a", "start | commit; /a"},
        {"to its end", "load /a, allow, document /a, succeeded /a", shows + "; /a"},
        {"the end before the document", "load /a, allow, succeeded /a, document /a",
         "start | commit finish; /a"},
        {"refused connection", "load /a, allow, failed /a", "start | early; none"},
        {"nothing to show", "load /a, allow, stopped /a", "start | early; none"},
        {"body cut", "load /a, allow, document /a, failed /a", "start | commit | late; /a"},
        {"redirects", "load /a, allow, go /b, go /c, document /c, succeeded /c", shows + "; /c"},
        {"redirect refused", shown + "load /b, allow, refuse /c, turn, stopped /c",
         shows + " | start; /a"},
        {"redirect to no page",
         shown + "load /b, allow, unknown x:, turn, stopped x:", shows + " | start | early; /a"},
        {"failure leaves the old page", shown + "load /b, allow, failed /b",
         shows + " | start | early; /a"},
        {"page starts a load", shown + "go /b, turn", shows + " | start; /a"},
        {"which the engine is quick with", shown + "go /b, document /b, succeeded /b",
         shows + " | start commit | finish; /b"},
        {"refused", shown + "refuse /b, turn, stopped /b", shows + "; /a"},
        {"unknown as the host loads another",
         shown + "want /b, unknown x:, turn, stopped x:, allow", shows + " | start; /b"},
        {"whose end is told as the load's",
         shown + "load /b, allow, unexplained /b, document /b, loaded",
         shows + " | start | commit | finish; /b"},
        {"refused once, allowed then", shown + "refuse /b, stopped /b, go /b, failed /b",
         shows + " | start early; /a"},
        {"of a scheme that nobody opens",
         shown + "unknown x:, turn, stopped x:", shows + " | start early; /a"},
        {"which turns out to be no page", shown + "go /b, turn, stopped /b",
         shows + " | start; /a"},
        {"or fails", shown + "go /b, turn, failed /b", shows + " | start | early; /a"},
        {"the page's first one has nothing to leave", "go /a, stopped /a", "start early; none"},
        {"within the page", shown + "address /a#b", shows + "; /a#b"},
        {"old address while provisional", shown + "go /b, turn, address /b, stopped /b",
         shows + " | start; /a"},
        {"about:blank unasked", shown + "succeeded about:blank, document about:blank",
         shows + " | start commit finish; about:blank"},
        {"load over a provisional one", "load /a, allow, load /b, allow, document /b",
         "start | early | start | commit; /b"},
        {"whose end comes later", "load /a, allow, stop, turn, want /b, allow, stopped /a",
         "start | early | start; /b"},
        {"load over an unfinished page", "load /a, allow, document /a, load /b, allow",
         "start | commit | late start; /b"},
        {"declined over one", "load /a, allow, document /a, load /b, decline, succeeded /a",
         shows + "; /a"},
        {"page goes on from one", "load /a, allow, document /a, go /b, document /b",
         "start | commit | late start commit; /b"},
        {"refused over one, loaded then",
         "load /a, allow, document /a, refuse /b, stopped /b, loaded", shows + "; /a"},
        {"loaded before", "load /a, allow, document /a, loaded, refuse /b, stopped /b",
         shows + "; /a"},
        {"stop provisional", "load /a, allow, stop, turn, stopped /a", "start | early; none"},
        {"stop committed", "load /a, allow, document /a, stop, turn, stopped /a",
         "start | commit | late; /a"},
        {"stop asked", "load /a, stop, turn", "; none"},
        {"no page over one that is shown", shown + "load /b, allow, stopped /b",
         shows + " | start | early; /a"},
        {"the page after a loaded one is not loaded yet",
         "load /a, allow, document /a, loaded, succeeded /a, go /b, document /b, refuse /c, "
         "stopped /c",
         shows + " | start commit; /b"},
        {"a dead process owes no ends",
         shown + "load /b, allow, stop, died, load /b, allow, failed /b",
         shows + " | start | early early | start | early; none"},
        {"nor answers", shown + "refuse /b, died, load /b, allow, failed /b",
         shows + " | early | start | early; none"},
        {"process dies idle", shown + "died, failed /a", shows + " | early; none"},
        {"provisional", "load /a, allow, died", "start | early; none"},
        {"committed", "load /a, allow, document /a, died, failed /a",
         "start | commit | early; none"},
        {"unused", "died", "; none"},
        {"before its start was told", shown + "go /b, died", shows + " | start early; none"},
        {"and loads again", shown + "died, load /a, allow, document /a, succeeded /a",
         shows + " | early | " + shows + "; /a"},
    };
    for (const auto& row : cases)
        EXPECT_EQ(Driver().run(row.events), row.expected) << row.name;
}

}  // namespace
}  // namespace zorvik::tests
