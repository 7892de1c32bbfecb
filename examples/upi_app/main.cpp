// zorvik-demo-upi-app: the demonstration's UPI apps. Opened by a desktop file with a deep link, it
// shows the payment, reports the customer's answer to the bank and closes.
//
// Without a customer it answers by itself: ZORVIK_DEMO_UPI names the answer (pay, decline, cancel,
// back, pending, odd, quiet, silent), ZORVIK_DEMO_UPI_DELAY the seconds before it, and
// ZORVIK_DEMO_PNG_FOLDER where to write upi-app.png first.
#include <gtk/gtk.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "examples/upi_app/Registration.h"
#include "examples/upi_app/UPIWindow.h"

namespace {

constexpr const char* usage =
    "usage: zorvik-demo-upi-app --app CODE --backend URL DEEP-LINK\n"
    "       zorvik-demo-upi-app --register ICON-FOLDER --backend URL\n"
    "       zorvik-demo-upi-app --unregister\n"
    "The second makes the apps the handlers of their schemes for this user, the third undoes it.\n";

std::string variable(const char* name) {
    const char* value = std::getenv(name);
    return value ? value : "";
}

int open(const std::string& code, const std::string& backendUrl, const std::string& deepLink) {
    const auto* app = zorvik::demo::demoUPIAppByCode(code);
    if (!app) {
        g_printerr("There is no app \"%s\" in the demonstration\n", code.c_str());
        return 2;
    }
    const std::string answerName = variable("ZORVIK_DEMO_UPI");
    const auto* answer = zorvik::demo::answerByName(answerName);
    if (!answerName.empty() && !answer) {
        g_printerr("There is no answer \"%s\"\n", answerName.c_str());
        return 2;
    }
    if (!gtk_init_check()) {
        g_printerr("There is no display to open a window on\n");
        return 1;
    }
    zorvik::demo::UPIWindow window(*app, zorvik::demo::paymentRequestFrom(deepLink), backendUrl);
    if (answer) {
        window.answerAfter(g_ascii_strtod(variable("ZORVIK_DEMO_UPI_DELAY").c_str(), nullptr),
                           *answer, variable("ZORVIK_DEMO_PNG_FOLDER"));
    }
    while (window.isOpen())
        g_main_context_iteration(nullptr, TRUE);
    return 0;
}

}  // namespace

int main(int count, char** arguments) {
    const std::vector<std::string> words(arguments + 1, arguments + count);
    if (words.size() == 5 && words[0] == "--app" && words[2] == "--backend") {
        return open(words[1], words[3], words[4]);
    }
    if (words.size() == 4 && words[0] == "--register" && words[2] == "--backend") {
        char* program = g_file_read_link("/proc/self/exe", nullptr);
        const bool isRegistered =
            program && zorvik::demo::registerApps(program, words[1], words[3]);
        g_free(program);
        return isRegistered ? 0 : 1;
    }
    if (words.size() == 1 && words[0] == "--unregister") {
        zorvik::demo::unregisterApps();
        return 0;
    }
    g_printerr("%s", usage);
    return 2;
}
