// zorvik-demo-merchant: a small shop that takes its payment through the checkout component, with
// the development core services and a desktop port. Ends with 0 only when the shop was told of
// the checkout's outcome.
#include <cstdlib>
#include <iostream>
#include <optional>
#include <string>
#include <string_view>

#include "examples/merchant/Demonstration.h"
#include "examples/merchant/Journal.h"
#include "examples/merchant/Scenario.h"

namespace {

using zorvik::demo::DemonstrationOptions;

constexpr const char* usage =
    "usage: zorvik-demo-merchant --backend URL [--customer auto|person] [--scenario NAME]\n"
    "                            [--png-folder FOLDER] [--trace FILE] [--order-file FILE] "
    "[--resume]\n"
    "       zorvik-demo-merchant --list\n";

void listScenarios() {
    for (const auto& scenario : zorvik::demo::scenarios()) {
        std::cout << scenario.name << std::string(24 - scenario.name.size(), ' ')
                  << scenario.summary << '\n';
    }
}

// nullopt, with a line on standard error, for arguments that make no sense.
std::optional<DemonstrationOptions> optionsFrom(int count, char** arguments) {
    DemonstrationOptions options;
    options.scenario = &zorvik::demo::scenarios().front();
    for (int i = 1; i < count; ++i) {
        const std::string_view option = arguments[i];
        if (option == "--resume") {
            options.resumesOrder = true;
            continue;
        }
        const std::string value = i + 1 < count ? arguments[++i] : "";
        if (option == "--backend") {
            options.backendUrl = value;
        } else if (option == "--png-folder") {
            options.pngFolder = value;
        } else if (option == "--trace") {
            options.traceFile = value;
        } else if (option == "--order-file") {
            options.orderFile = value;
        } else if (option == "--customer" && (value == "auto" || value == "person")) {
            options.hasAutomaticCustomer = value == "auto";
        } else if (option == "--scenario") {
            options.scenario = zorvik::demo::scenarioByName(value);
            if (!options.scenario) {
                std::cerr << "There is no scenario \"" << value << "\"; --list names them all\n";
                return std::nullopt;
            }
        } else {
            std::cerr << usage;
            return std::nullopt;
        }
    }
    if (options.backendUrl.empty()) {
        std::cerr << usage;
        return std::nullopt;
    }
    return options;
}

}  // namespace

int main(int count, char** arguments) {
    if (count == 2 && std::string_view(arguments[1]) == "--list") {
        listScenarios();
        return 0;
    }
    const auto options = optionsFrom(count, arguments);
    if (!options) return 2;
    if (options->hasAutomaticCustomer) {
        // The UPI apps inherit what their customer does.
        setenv("ZORVIK_DEMO_UPI", options->scenario->upiAnswer.c_str(), 1);
        setenv("ZORVIK_DEMO_UPI_DELAY", std::to_string(options->scenario->upiDelay).c_str(), 1);
        setenv("ZORVIK_DEMO_PNG_FOLDER", options->pngFolder.c_str(), 1);
    }
    zorvik::demo::printConsoleLines();
    const auto desktop = zorvik::demo::Desktop::open();
    if (!desktop) {
        std::cerr << "There is no display to open a window on\n";
        return 1;
    }
    zorvik::demo::Demonstration demonstration(*desktop, *options);
    return demonstration.run() ? EXIT_SUCCESS : EXIT_FAILURE;
}
