// Every view of the checkout page before an accessibility engine, and measured.
#include <fstream>
#include <sstream>

#include "tests/examples/CheckoutPageTest.h"

namespace zorvik::tests {
namespace {

struct View {
    const char* name;
    const char* script;  // leads there from the view before
    const char* condition;
};

constexpr View views[] = {
    {"the ways to pay", "0", "!byId('methods').hidden"},
    {"a card form with an error",
     "document.querySelector('#card-method summary').click(); byId('card-pay').click()",
     "!byId('card-error').hidden"},
    {"the banks, none chosen",
     "document.querySelector('#bank-method summary').click(); byId('bank-pay').click()",
     "!byId('bank-error').hidden"},
    {"waiting for an app", "document.querySelector('[data-package]').click()",
     "!byId('waiting').hidden"},
    {"a notice, and the inspector with its bodies unfolded",
     R"(window.postMessage('{"sdk_transaction_enquiry_response":"UPI app not installed",)"
     R"("sdk_upi_intent_response":"unregistered"}', '*'); byId('inspector-toggle').click();)"
     "document.querySelectorAll('#inspector details').forEach((fold) => { fold.open = true; })",
     "!byId('notice').hidden && !byId('inspector').hidden"},
    {"the question whether to leave",
     "byId('inspector-close').click(); byId('bank-method').open = false;"
     R"(window.postMessage('{"sdk_action":"device_back_initiated","source":"ios"}', '*'))",
     "byId('leave').open"},
    {"a declined card",
     "byId('stay').click(); document.querySelector('#card-method summary').click();"
     "byId('card-number').value = '9900000000000028'; byId('card-expiry').value = '08/30';"
     "byId('card-cvv').value = '123'; byId('card-pay').click()",
     "!byId('outcome').hidden"},
    {"the bank's page",
     "byId('outcome-retry').click(); document.querySelector('#banks input').click();"
     "byId('bank-pay').click()",
     "byId('approve') && !byId('approve').disabled"},
    {"confirming", "byId('approve').click()", "location.pathname === '/processing'"},
};

struct Size {
    const char* name;
    double width;
    const char* textSize;  // of the page's root
    int textScale;         // of the desktop, which the engine makes its whole page follow
};

constexpr Size sizes[] = {
    {"narrow, with text of twice the size", 320, "200%", 1},
    {"on a desktop with text of twice the size", 390, "", 2},
    {"wide", 1280, "", 1},
    {"a phone's", 390, "", 1},  // the last, for the next view
};

// What is smaller than a finger, keeps its size when the text grows, is cut off, or leaves the
// page.
constexpr const char* faultsOfSize = R"js((() => {
  const shown = (one) => one.getClientRects().length && one.checkVisibility?.() !== false;
  const name = (one) => one.id || one.className || one.outerHTML.slice(0, 60);
  const faults = [];
  for (const one of document.querySelectorAll('button, summary, input, a')) {
    const target = (one.closest('label') ?? one).getBoundingClientRect();
    if (shown(one) && (target.height < 44 || target.width < 44)) {
      faults.push(`${name(one)} is ${target.width} x ${target.height}`);
    }
  }
  const sizeOf = (one) => parseFloat(getComputedStyle(one).fontSize);
  for (const one of document.querySelectorAll('body *')) {
    if (!shown(one) || one.closest('.hidden') || one.closest('svg')) continue;
    if (one.type !== 'radio' && !one.closest('[aria-hidden]') && sizeOf(one) < 0.75 * sizeOf(document.documentElement)) {
      faults.push(`${name(one)} has small text`);
    }
    const { left, right } = one.getBoundingClientRect();
    if (left < -0.5 || right > innerWidth + 0.5) faults.push(`${name(one)} leaves the page`);
    if (one.scrollWidth > one.clientWidth + 1 && one.clientWidth && getComputedStyle(one).display !== 'inline') {
      faults.push(`${name(one)} is cut: ${one.scrollWidth} in ${one.clientWidth}`);
    }
  }
  return faults.join('\n');
})())js";

class AccessibilityTest : public CheckoutPageTest {
  protected:
    AccessibilityTest() { setDesktop("gtk-enable-animations", false); }

    // The accessibility engine's findings, a line each; "" for none.
    std::string findings() {
        evaluate("if (!window.axe) { " + engine +
                 " } window.findings = null;"
                 "axe.run({ rules: { 'target-size': { enabled: true } } })"
                 ".then((result) => result.violations.flatMap((rule) => rule.nodes.map((node) =>"
                 " `${rule.id}: ${node.html} ${node.failureSummary}`)).join('\\n'), String)"
                 ".then((text) => { window.findings = text; });0");
        waitFor("window.findings !== null");
        return evaluate("window.findings");
    }
    std::string faultsIn(const Size& size) {
        setDesktop("gtk-xft-dpi", 96 * 1024 * size.textScale);
        resize(size.width, 844, size.textScale);
        evaluate(std::string("document.documentElement.style.fontSize = '") + size.textSize + "'");
        return evaluate(faultsOfSize);
    }

    const std::string engine = [] {
        std::ostringstream text;
        text << std::ifstream(ZORVIK_AXE).rdbuf();
        return text.str();
    }();
};

TEST_F(AccessibilityTest, NoViewHasAFindingAndEveryViewFits) {
    for (const bool isDark : {false, true}) {
        setDesktop("gtk-application-prefer-dark-theme", isDark);
        open();
        EXPECT_EQ(evaluate("matchMedia('(prefers-color-scheme: dark)').matches"),
                  isDark ? "true" : "false");
        EXPECT_EQ(evaluate("getComputedStyle(document.documentElement).backgroundColor"),
                  isDark ? "rgb(16, 22, 28)" : "rgb(255, 255, 255)")
            << "light, the page's ground is the skeleton's";
        for (const View& view : views) {
            SCOPED_TRACE(std::string(view.name) + (isDark ? ", dark" : ", light"));
            const std::string byId = "window.byId = (id) => document.getElementById(id)";
            evaluate(byId + ";" + view.script + ";0");
            waitFor(byId + ", " + view.condition);
            EXPECT_EQ(findings(), "");
            EXPECT_EQ(evaluate("document.getAnimations().length"), "0") << "despite reduced motion";
            if (isDark) continue;
            for (const Size& size : sizes) {
                EXPECT_EQ(faultsIn(size), "") << size.name;
            }
        }
    }
}

}  // namespace
}  // namespace zorvik::tests
