#include <algorithm>

#include "../TemplatePlatform.h"
#include "tests/contract/PortUnderTest.h"

namespace zorvik::contract {

namespace {

class TemplateUnderTest : public PortUnderTest {
  public:
    // PORTER: serve the pages that PortUnderTest.h lists from a socket on 127.0.0.1.
    URL url(const std::string& path) override {
        return URL::parse("http://127.0.0.1:9" + path).value();
    }
    std::shared_ptr<UIViewController> presenter() override { return platform_.presenter(); }

    bool spinUntil(const std::function<bool()>& condition, double seconds) override {
        auto& scheduler = platform_.scheduler();
        const double end = scheduler.steadySeconds() + seconds;
        while (!condition()) {
            const double left = end - scheduler.steadySeconds();
            if (left <= 0) return false;
            if (scheduler.runOneTurn()) continue;
            // PORTER: wait all the same, once an engine or a window can bring what is not in the
            // queue yet. Here nothing else would ever come.
            if (!scheduler.nextDelay()) return false;
            scheduler.waitForTurn(left);
        }
        return true;
    }

    // PORTER: what a page's script does, by the engine's own means; scripts that are evaluated
    // will do.
    void pagePosts(WKWebView&, const std::string&, const ScriptValue&) override {}
    void pageNavigates(WKWebView&, const std::string&) override {}
    void pageAddsFrame(WKWebView&, const std::string&) override {}
    void killWebProcess(WKWebView&) override {}

  private:
    port_template::TemplatePlatform platform_;
};

}  // namespace

std::unique_ptr<PortUnderTest> PortUnderTest::make() {
    return std::make_unique<TemplateUnderTest>();
}

}  // namespace zorvik::contract
