// The demonstration's UPI app, a process of its own, used with the keyboard alone.
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/examples/CheckoutPageTest.h"

namespace zorvik::tests {
namespace {

class UPIAppTest : public CheckoutPageTest {
  protected:
    // The app with a new payment request.
    void openApp() {
        open();
        request =
            post("/api/checkout/upi", {{"token", token}, {"package_name", "demo.nilgiri.pay"}});
        const std::string backendUrl = "http://127.0.0.1:" + std::to_string(server->port());
        const std::string url = text(request, "url");
        const char* const words[] = {ZORVIK_UPI_APP,     "--app",     "NILGIRI", "--backend",
                                     backendUrl.c_str(), url.c_str(), nullptr};
        ASSERT_EQ(posix_spawn(&app, words[0], nullptr, nullptr, const_cast<char**>(words), environ),
                  0);
        // Shown, and with the focus.
        ASSERT_TRUE(askUntil([] {
            return std::system("xdotool getactivewindow getwindowname | grep -qx 'Nilgiri Pay'") ==
                   0;
        }));
    }
    bool hasEnded() {
        if (app != 0 && waitpid(app, nullptr, WNOHANG) == app) app = 0;
        return app == 0;
    }
    void endApp() {
        if (hasEnded()) return;
        kill(app, SIGKILL);
        waitpid(app, nullptr, 0);
        app = 0;
    }
    std::string reported() {
        const auto response =
            backend.handle({"GET",
                            "/api/checkout/transaction",
                            {{"token", token}, {"transaction_id", text(request, "transaction_id")}},
                            ""});
        const auto fields = JSONSerialization::jsonObject(response.body, {});
        return text(*fields.value().dictionary(), "status") + " " +
               text(*fields.value().dictionary(), "message");
    }

    pid_t app = 0;
    Dictionary request;
};

TEST_F(UPIAppTest, APaymentIsAnsweredWithTheKeyboardAlone) {
    const struct {
        const char* keys;
        const char* reported;
    } cases[] = {
        {"Return", "SUCCESS Paid"},
        {"Tab Return", "FAILED Declined in the app"},
        {"Escape", "FAILED Cancelled in the app"},
        {"Tab Tab Tab space", "PENDING "},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.keys);
        openApp();
        ASSERT_EQ(
            std::system((std::string("timeout 10 xdotool key --delay 40 ") + row.keys).c_str()), 0);
        // What was answered is shown for a while; going back is at once.
        const bool isAnswer = std::string(row.reported) != "PENDING ";
        EXPECT_TRUE(askUntil([&] { return isAnswer ? reported() == row.reported : hasEnded(); }));
        EXPECT_EQ(reported(), row.reported);
        endApp();
    }
}

}  // namespace
}  // namespace zorvik::tests
