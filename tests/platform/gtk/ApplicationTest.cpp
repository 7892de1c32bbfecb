#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "platform/runtime/NotificationCenter.h"
#include "platform/uikit/UIApplication.h"
#include "tests/platform/gtk/GtkPortTest.h"

namespace zorvik::tests {
namespace {

namespace fs = std::filesystem;

class ApplicationTest : public GtkPortTest {
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

  private:
    std::string handlers_;
};

TEST_F(ApplicationTest, AnAddressGoesToTheApplicationOfItsScheme) {
    const fs::path received = data / "received";
    install("zorvikgood", "#!/bin/sh\nprintf '%s\\n' \"$1\" >> '" + received.string() + "'\n");
    install("zorvikmissing", "");
    install("zorviklocked", "#!/bin/sh\n", fs::perms::owner_read);
    install("zorvikbroken", "#!/no/such/interpreter\n");
    settle(0.5);  // the desktop's files are watched, not read at each question
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
        EXPECT_EQ(UIApplication::shared().canOpenURL(url), row.canOpen) << row.address;
        std::vector<bool> answers;
        UIApplication::shared().open(url, [&](bool opened) { answers.push_back(opened); });
        EXPECT_TRUE(answers.empty()) << "never inside the call";
        waitUntil([&] { return !answers.empty(); });
        settle(0.1);
        EXPECT_THAT(answers, testing::ElementsAre(row.opened)) << row.address;
    }
    std::string first;
    EXPECT_TRUE(waitUntil([&] { return !!std::getline(std::ifstream(received), first); }));
    EXPECT_EQ(first, cases[0].address);
}

struct Observer {
    int activations = 0;
    void becameActive() { ++activations; }
};

TEST_F(ApplicationTest, EachReturnFromAnotherApplicationIsToldOnceAndNoOtherMove) {
    const auto observer = std::make_shared<Observer>();
    NotificationCenter::defaultCenter().addObserver(std::weak_ptr(observer),
                                                    &Observer::becameActive,
                                                    UIApplication::didBecomeActiveNotification);
    settle(0.5);
    GtkWindow* second = platform->openWindow("second", {300, 300});
    settle(0.5);
    platform->closeWindow(second);
    settle(0.5);
    EXPECT_EQ(observer->activations, 0) << "neither the start nor a window of its own is a return";
    for (int round = 1; round <= 2; ++round) {
        const pid_t other = fork();
        if (other == 0) execl(ZORVIK_OTHER_APPLICATION, "other", nullptr);
        settle(1.5);
        EXPECT_EQ(observer->activations, round - 1);
        kill(other, SIGTERM);
        EXPECT_TRUE(waitUntil([&] { return observer->activations == round; }));
        waitpid(other, nullptr, 0);
        settle();
        EXPECT_EQ(observer->activations, round);
    }
}

}  // namespace
}  // namespace zorvik::tests
