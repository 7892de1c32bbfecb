// Plays the three ways in which a customer comes back from a UPI app, without a window, and writes
// each as a sequence diagram into the folder given.
#include <cstdio>
#include <functional>
#include <string>

#include "testkit/CheckoutTestKit.h"
#include "trace/Recording.h"

using zorvik::testkit::CheckoutTestKit;
using zorvik::testkit::UPIApp;
using zorvik::testkit::UPIStatus;

namespace {

bool draw(const std::string& file, const std::function<void(CheckoutTestKit&)>& comesBack) {
    CheckoutTestKit kit;
    const zorvik::trace::Recording recording;
    kit.openCheckout();
    kit.customerPicks(UPIApp::opens);
    comesBack(kit);
    const auto written = recording.writeSequence(file);
    if (!written) std::fprintf(stderr, "%s\n", written.error().localizedDescription.c_str());
    return written.isSuccess();
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 2) {
        std::fprintf(stderr, "usage: %s FOLDER\n", arguments[0]);
        return 2;
    }
    const std::string folder = std::string(arguments[1]) + "/";
    const bool isDrawn = draw(folder + "return-quick.svg",
                              [](CheckoutTestKit& kit) {
                                  kit.customerComesBackAfter(3);
                                  kit.pageAnswers({{"status", "SUCCESS"}});
                              }) &&
                         draw(folder + "return-extended.svg",
                              [](CheckoutTestKit& kit) {
                                  kit.customerComesBackAfter(40);
                                  kit.advance(2);
                                  kit.pageAnswers({{"status", "SUCCESS"}});
                              }) &&
                         draw(folder + "return-by-address.svg", [](CheckoutTestKit& kit) {
                             kit.advance(25);
                             kit.upiAppReturns(UPIStatus::success);
                         });
    return isDrawn ? 0 : 1;
}
