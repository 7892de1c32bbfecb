#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

#include "platform/gtk/GtkPlatform.h"
#include "tests/desktop/Picture.h"

namespace zorvik::tests {

using namespace zorvik::platform;

// The desktop port with one window on an X server of the test's own.
class DesktopTest : public testing::Test {
  protected:
    static constexpr double patience = 10;  // seconds; none of it is spent when a test passes

    explicit DesktopTest(bool keepsSparePage = false)
        : platform(gtk::GtkPlatform::make(
              {.applicationId = "zorvik-test", .keepsSparePage = keepsSparePage})),
          window(platform->openWindow("test", {600, 800})),
          presenter(platform->presenterFor(window)) {
        screen->setModalPresentationStyle(UIModalPresentationStyle::fullScreen);
    }

    bool waitUntil(const std::function<bool()>& condition) {
        return platform->runUntil(condition, patience);
    }
    // Long enough for what must not come to have come.
    void settle(double seconds = 0.3) {
        platform->runUntil([] { return false; }, seconds);
    }
    void show(const std::shared_ptr<UIViewController>& controller) {
        bool isShown = false;
        presenter->present(controller, false, [&] { isShown = true; });
        ASSERT_TRUE(waitUntil([&] { return isShown; }));
        settle();
    }
    Picture picture() {
        const std::string path = std::filesystem::temp_directory_path() /
                                 ("zorvik-" + std::to_string(getpid()) + ".png");
        EXPECT_TRUE(platform->savePng(window, path));
        const Picture result(path);
        std::filesystem::remove(path);
        return result;
    }
    // The customer's mouse and keyboard.
    void xdotool(const std::string& commands) {
        ASSERT_EQ(std::system(("timeout 10 xdotool " + commands).c_str()), 0);
        settle();
    }
    void click(double x, double y) {
        xdotool("mousemove " + std::to_string(static_cast<int>(x)) + " " +
                std::to_string(static_cast<int>(y)) + " sleep 0.1 click 1");
    }

    const std::unique_ptr<gtk::GtkPlatform> platform;
    GtkWindow* const window;
    const std::shared_ptr<UIViewController> presenter;
    const std::shared_ptr<UIViewController> screen = makeOnMainThread<UIViewController>();
};

}  // namespace zorvik::tests
