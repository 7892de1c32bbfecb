#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <png.h>

#include <array>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include ZORVIK_PORT_HEADER
#include "tests/support/EngineProcesses.h"

namespace zorvik::tests {

using namespace zorvik::platform;

inline std::vector<pid_t> webProcesses() {
    return engineProcesses(EngineProcess::web);
}

// Waits for what no turn of the main loop tells, such as another process's end.
inline bool askUntil(Platform& platform, const std::function<bool()>& condition,
                     double seconds = 10) {
    for (double waited = 0; !condition(); waited += 0.05) {
        if (waited > seconds) return false;
        platform.runUntil([] { return false; }, 0.05);
    }
    return true;
}

using Pixel = std::array<int, 3>;  // red, green and blue from 0 to 255

// A PNG file as pixels, to ask what is where on the screen; empty when there is no such file.
class Picture {
  public:
    explicit Picture(const std::string& path) {
        image_.version = PNG_IMAGE_VERSION;
        if (png_image_begin_read_from_file(&image_, path.c_str()) == 0) return;
        image_.format = PNG_FORMAT_RGB;
        pixels_.resize(PNG_IMAGE_SIZE(image_));
        png_image_finish_read(&image_, nullptr, pixels_.data(), 0, nullptr);
    }

    int width() const { return static_cast<int>(image_.width); }
    int height() const { return static_cast<int>(image_.height); }
    Pixel at(int x, int y) const {
        const auto place = static_cast<std::size_t>(3 * (y * width() + x));
        return {pixels_.at(place), pixels_.at(place + 1), pixels_.at(place + 2)};
    }

  private:
    png_image image_ = {};
    std::vector<unsigned char> pixels_;
};

// A desktop port with one window on an X server of the test's own.
class DesktopPortTest : public testing::Test {
  protected:
    explicit DesktopPortTest(const PlatformOptions& options = {.applicationId = "zorvik-test",
                                                               .keepsSparePage = false})
        : platform(Platform::make(options)) {
        screen->setModalPresentationStyle(UIModalPresentationStyle::fullScreen);
    }

    bool waitUntil(const std::function<bool()>& condition) {
        return platform->runUntil(condition, 20);
    }
    bool askUntil(const std::function<bool()>& condition) {
        return tests::askUntil(*platform, condition);
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
    void dismiss(const std::shared_ptr<UIViewController>& controller) {
        bool isGone = false;
        controller->dismiss(false, [&] { isGone = true; });
        ASSERT_TRUE(waitUntil([&] { return isGone; }));
    }
    Picture picture() {
        const std::string path = std::string(std::getenv("XDG_CACHE_HOME")) + "/picture.png";
        EXPECT_TRUE(askUntil([&] { return platform->savePng(window, path); }));
        return Picture(path);
    }
    // The customer's mouse and keyboard.
    void xdotool(const std::string& commands) {
        ASSERT_EQ(std::system(("timeout 10 xdotool " + commands).c_str()), 0);
        settle();
    }
    void click(int x, int y) {
        xdotool("mousemove " + std::to_string(x) + " " + std::to_string(y) + " sleep 0.1 click 1");
    }

    const std::unique_ptr<Platform> platform;
    Window* const window = platform->openWindow("test", {600, 800});
    const std::shared_ptr<UIViewController> presenter = platform->presenterFor(window);
    const std::shared_ptr<UIViewController> screen = makeOnMainThread<UIViewController>();
};

}  // namespace zorvik::tests
