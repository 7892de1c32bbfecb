#include <cstdio>
#include <fstream>
#include <sstream>

#include "platform/uikit/NotificationCenter.h"
#include "platform/uikit/UIApplication.h"
#include "tests/desktop/DesktopTest.h"

namespace zorvik::tests {
namespace {

namespace fs = std::filesystem;

class ApplicationTest : public DesktopTest {
  protected:
    // In the folders that scripts/with-display made for this run.
    const fs::path data = std::getenv("XDG_DATA_HOME");
    const fs::path config = std::getenv("XDG_CONFIG_HOME");

    fs::path writeProgram(const std::string& name, const std::string& text) const {
        const fs::path program = data / name;
        std::ofstream(program) << text;
        fs::permissions(program, fs::perms::owner_all);
        return program;
    }
    void install(const std::string& scheme, const std::string& command) {
        const std::string name = "zorvik-test-" + scheme + ".desktop";
        std::ofstream(data / "applications" / name)
            << "[Desktop Entry]\nType=Application\nName=" << scheme << "\nExec=" << command
            << " %u\nMimeType=x-scheme-handler/" << scheme << ";\n";
        handlers_ += "x-scheme-handler/" + scheme + "=" + name + "\n";
        std::ofstream(config / "mimeapps.list") << "[Default Applications]\n" << handlers_;
    }
    std::optional<bool> open(const std::string& address) {
        std::optional<bool> answer;
        int calls = 0;
        UIApplication::shared().open(*URL::parse(address), [&](bool opened) {
            answer = opened;
            ++calls;
        });
        EXPECT_FALSE(answer) << "never inside the call";
        waitUntil([&] { return answer.has_value(); });
        settle(0.1);
        EXPECT_EQ(calls, 1);
        return answer;
    }
    bool canOpen(const std::string& address) {
        return UIApplication::shared().canOpenURL(*URL::parse(address));
    }

  private:
    std::string handlers_;
};

TEST_F(ApplicationTest, AnAddressGoesToTheApplicationOfItsScheme) {
    const fs::path received = data / "received";
    const auto good =
        writeProgram("good", "#!/bin/sh\nprintf %s \"$1\" > '" + received.string() + "'\n");
    install("zorvikgood", good);
    fs::create_directory(data / "a folder");
    install("zorvikquoted", '"' + writeProgram("a folder/app", "#!/bin/sh\n").string() + '"');
    install("zorvikfails", writeProgram("fails", "#!/bin/sh\nexit 1\n"));
    install("zorvikmissing", data / "not-there");
    const auto locked = writeProgram("locked", "#!/bin/sh\n");
    fs::permissions(locked, fs::perms::owner_read);
    install("zorviklocked", locked);
    install("zorvikbroken", writeProgram("broken", "#!/no/such/interpreter\n"));
    settle(0.5);  // the desktop's files are watched, not read at each question
    const struct {
        std::string address;
        bool canOpen;
        bool opened;
    } cases[] = {
        {"zorvikgood://pay?pa=shop@bank&am=1.00&tn=a%20b", true, true},
        {"ZORVIKGOOD:again", true, true},
        {"zorvikquoted:x", true, true},
        {"zorvikfails:x", true, true},  // it was started; what it does is its own business
        {"zorvikmissing:x", false, false},
        {"zorviklocked:x", false, false},
        {"zorvikbroken:x", true, false},
        {"zorvikunknown:x", false, false},
        {"no-scheme", false, false},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(canOpen(row.address), row.canOpen) << row.address;
        EXPECT_EQ(open(row.address), row.opened) << row.address;
    }
    const auto text = [&] {
        std::ostringstream content;
        content << std::ifstream(received).rdbuf();
        return content.str();
    };
    fs::remove(received);
    open(cases[0].address);
    EXPECT_TRUE(waitUntil([&] { return text() == cases[0].address; })) << text();
}

class ActivationTest : public DesktopTest {
  protected:
    struct Observer {
        int activations = 0;
        void becameActive() { ++activations; }
    };
    struct Close {
        void operator()(std::FILE* process) const { pclose(process); }
    };
    using OtherApplication = std::unique_ptr<std::FILE, Close>;

    ActivationTest() {
        NotificationCenter::defaultCenter().addObserver(std::weak_ptr(observer),
                                                        &Observer::becameActive,
                                                        UIApplication::didBecomeActiveNotification);
        settle(0.5);
    }
    OtherApplication startOther() {
        OtherApplication other(popen(ZORVIK_OTHER_APPLICATION, "w"));
        settle(1.5);
        return other;
    }

    const std::shared_ptr<Observer> observer = std::make_shared<Observer>();
};

TEST_F(ActivationTest, EachReturnFromAnotherApplicationIsToldOnce) {
    EXPECT_EQ(observer->activations, 0) << "the start is no return";
    for (int round = 1; round <= 2; ++round) {
        auto other = startOther();
        EXPECT_EQ(observer->activations, round - 1);
        other.reset();
        EXPECT_TRUE(waitUntil([&] { return observer->activations == round; }));
        settle();
        EXPECT_EQ(observer->activations, round);
    }
}

TEST_F(ActivationTest, MovingBetweenTheApplicationsOwnWindowsIsNoReturn) {
    GtkWindow* second = platform->openWindow("second", {300, 300});
    settle(0.5);
    platform->closeWindow(second);
    settle(0.5);
    EXPECT_EQ(observer->activations, 0);
    // The return may be to another window than the one that was left.
    auto other = startOther();
    second = platform->openWindow("second", {300, 300});
    EXPECT_TRUE(waitUntil([&] { return observer->activations == 1; }));
    settle();
    other.reset();
    settle(0.5);
    EXPECT_EQ(observer->activations, 1);
}

}  // namespace
}  // namespace zorvik::tests
