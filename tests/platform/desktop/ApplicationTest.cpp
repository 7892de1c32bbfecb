#include <signal.h>
#include <sys/types.h>

#include <filesystem>
#include <fstream>

#include "platform/runtime/NotificationCenter.h"
#include "platform/uikit/UIApplication.h"
#include "platform/uikit/UIButton.h"
#include "tests/platform/desktop/DesktopPortTest.h"

namespace zorvik::tests {
namespace {

namespace fs = std::filesystem;

class ApplicationTest : public DesktopPortTest {
  protected:
    // In the folders that scripts/with-display made for this run.
    const fs::path data = std::getenv("XDG_DATA_HOME");
    const fs::path config = std::getenv("XDG_CONFIG_HOME");

    // Installs a program for a scheme; without text there is none.
    void install(const std::string& scheme, const std::string& text,
                 fs::perms permissions = fs::perms::owner_all) {
        const fs::path program = data / "a folder" / scheme;
        fs::create_directory(program.parent_path());
        if (!text.empty()) {
            std::ofstream(program) << text;
            fs::permissions(program, permissions);
        }
        std::ofstream(data / "applications" / (scheme + ".desktop"))
            << "[Desktop Entry]\nType=Application\nName=" << scheme << "\nExec=" << program
            << " %u\nMimeType=x-scheme-handler/" << scheme << ";\n";
        handlers_ += "x-scheme-handler/" + scheme + "=" + scheme + ".desktop\n";
        std::ofstream(config / "mimeapps.list") << "[Default Applications]\n" << handlers_;
    }

    static bool canOpen(const std::string& address) {
        return UIApplication::shared().canOpenURL(*URL::parse(address));
    }
    // Until a window with this title is on the screen, and has the focus if it takes it.
    void waitForWindow(const std::string& title) {
        xdotool("search --sync --onlyvisible --name '^" + title + "$'");
    }

  private:
    std::string handlers_;
};

TEST_F(ApplicationTest, AnAddressGoesToTheApplicationOfItsScheme) {
    const fs::path received = data / "received";
    install("zorvikgood", "#!/bin/sh\nprintf '%s\\n' \"$1\" >> '" + received.string() + "'\n");
    install("zorvikmissing", "");
    install("zorviklocked", "#!/bin/sh\n", fs::perms::owner_read);
    install("zorvikbroken", "#!/no/such/interpreter\n");
    // The desktop's files are watched, not read at each question.
    ASSERT_TRUE(askUntil([] { return canOpen("zorvikgood:x") && canOpen("zorvikbroken:x"); }));
    const struct {
        std::string address;
        bool canOpen;
        bool opened;
    } cases[] = {
        {"zorvikgood://pay?pa=shop@bank&am=1.00&tn=a%20b", true, true},
        {"ZORVIKGOOD:again", true, true},
        {"zorvikmissing:x", false, false},
        {"zorviklocked:x", false, false},
        {"zorvikbroken:x", true, false},
        {"zorvikunknown:x", false, false},
        {"no-scheme", false, false},
    };
    for (const auto& row : cases) {
        const URL url = *URL::parse(row.address);
        EXPECT_EQ(canOpen(row.address), row.canOpen) << row.address;
        std::vector<bool> answers;
        UIApplication::shared().open(url, [&](bool opened) { answers.push_back(opened); });
        EXPECT_TRUE(answers.empty()) << "never inside the call";
        waitUntil([&] { return !answers.empty(); });
        settle(0.1);
        EXPECT_THAT(answers, testing::ElementsAre(row.opened)) << row.address;
    }
    std::string first;
    EXPECT_TRUE(askUntil([&] { return !!std::getline(std::ifstream(received), first); }));
    EXPECT_EQ(first, cases[0].address);
}

struct Observer {
    int activations = 0;
    int taps = 0;
    void becameActive() { ++activations; }
    void tapped() { ++taps; }
};

TEST_F(ApplicationTest, EachReturnFromAnotherApplicationIsToldOnceAndNoOtherMove) {
    const bool hasWindowManager = std::getenv("ZORVIK_WINDOW_MANAGER") == nullptr;
    const auto observer = std::make_shared<Observer>();
    NotificationCenter::defaultCenter().addObserver(std::weak_ptr(observer),
                                                    &Observer::becameActive,
                                                    UIApplication::didBecomeActiveNotification);
    const auto button = makeOnMainThread<UIButton>(Rect{200, 400, 200, 100});
    button->setTitle("Pay");
    button->setTarget(std::weak_ptr(observer), &Observer::tapped);
    screen->view()->addSubview(button);
    show(screen);
    Window* second = platform->openWindow("second", {300, 300});
    waitForWindow("second");
    platform->closeWindow(second);
    settle();
    click(300, 450);
    EXPECT_EQ(observer->taps, 1);
    EXPECT_EQ(observer->activations, 0) << "neither the start nor a window of its own is a return";

    const fs::path process = data / "process";
    install("zorvikother", "#!/bin/sh\necho $$ > '" + process.string() + "'\nexec '" +
                               ZORVIK_OTHER_APPLICATION + "'\n");
    ASSERT_TRUE(askUntil([] { return canOpen("zorvikother:x"); }));
    for (int round = 1; round <= 2; ++round) {
        bool isOpened = false;
        UIApplication::shared().open(*URL::parse("zorvikother:x"),
                                     [&](bool opened) { isOpened = opened; });
        ASSERT_TRUE(waitUntil([&] { return isOpened; }));
        waitForWindow("other application");
        EXPECT_EQ(observer->activations, round - 1);
        pid_t other = 0;
        std::ifstream(process) >> other;
        kill(other, SIGTERM);
        if (hasWindowManager) {
            EXPECT_TRUE(waitUntil([&] { return observer->activations == round; }));
        } else {
            settle();
            EXPECT_EQ(observer->activations, round - 1) << "nothing tells of it yet";
        }
        if (round == 1) {
            click(300, 450);
        } else {
            xdotool("key space");
        }
        EXPECT_EQ(observer->activations, round);
        EXPECT_EQ(observer->taps, round + 1) << "the input arrives all the same";
    }
}

}  // namespace
}  // namespace zorvik::tests
