#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <thread>

#include "platform/headless/HeadlessPlatform.h"
#include "platform/runtime/DispatchQueue.h"
#include "platform/uikit/UILabel.h"
#include "platform/uikit/UIViewController.h"
#include "zorvik_mobile_kit_ios_webview_sdk/ZorvikCheckoutSDK.h"

namespace zorvik {
namespace {

using platform::DispatchQueue, platform::makeOnMainThread, platform::UIViewController;
using platform::headless::HeadlessPlatform;
using testing::HasSubstr, testing::IsEmpty;

std::string toldWhile(const std::function<void()>& action) {
    testing::internal::CaptureStderr();
    action();
    return testing::internal::GetCapturedStderr();
}

void onAnotherThread(const std::function<void()>& action) {
    std::thread(action).join();
}

TEST(MisuseDeathTest, ACallOffTheMainThreadEndsTheProcessWithItsNameAndTheRemedy) {
    HeadlessPlatform platform;
    auto& sdk = ZorvikCheckoutSDK::shared();
    const auto presenter = makeOnMainThread<UIViewController>();
    const std::pair<const char*, std::function<void()>> calls[] = {
        {"delegate", [&] { sdk.delegate(); }},
        {"setDelegate", [&] { sdk.setDelegate(nullptr); }},
        {"environmentUrl", [&] { sdk.environmentUrl(); }},
        {"setEnvironmentUrl", [&] { sdk.setEnvironmentUrl("https://pay.example"); }},
        {"initialize", [&] { sdk.initialize("shop"); }},
        {"checkout", [&] { sdk.checkout(presenter, {}); }},
        {"handleDeviceBackButtonPress", [&] { sdk.handleDeviceBackButtonPress(); }},
    };
    for (const auto& [name, call] : calls) {
        EXPECT_DEATH(onAnotherThread(call), std::string("ZorvikCheckoutSDK::") + name +
                                                " was called off the main thread; .*"
                                                "DispatchQueue::main\\(\\)\\.async");
    }
    platform.scheduler().settle();
#ifndef NDEBUG
    const auto label = makeOnMainThread<platform::UILabel>();
    EXPECT_DEATH(onAnotherThread([&] { label->setText("late"); }),
                 "a toolkit object was used off the main thread; .*DispatchQueue::main");
#endif
}

TEST(MisuseTest, APresenterThatDiesUnderItsScreenIsToldOfButNotWhereThatIsTheEnd) {
    const auto present = [](const std::shared_ptr<UIViewController>& presenter) {
        presenter->present(makeOnMainThread<UIViewController>(), true);
    };
    HeadlessPlatform platform;
    EXPECT_THAT(toldWhile([&] {
                    present(makeOnMainThread<UIViewController>());
                    platform.scheduler().advanceBy(1);
                }),
                HasSubstr("keep the presenter until its screen has closed"));
    EXPECT_THAT(toldWhile([&] {
                    const auto dismissed = makeOnMainThread<UIViewController>();
                    present(dismissed);
                    platform.scheduler().advanceBy(1);
                    dismissed->dismiss(true);  // as a window does that closes
                }),
                IsEmpty());
    EXPECT_THAT(toldWhile([&] { platform.scheduler().advanceBy(1); }), IsEmpty());
}

TEST(MisuseTest, AMessageToANameNobodyHandlesIsToldOfWithTheNamesThatAreHandled) {
    HeadlessPlatform platform;
    const auto page = platform.web().makePage({}, {});
    EXPECT_THAT(toldWhile([&] { EXPECT_FALSE(platform.web().page().post("pay", {})); }),
                HasSubstr(R"("pay", which nobody handles; no name is handled yet)"));
    page->addMessageHandler("openUpiIntent");
    page->addMessageHandler("close");
    EXPECT_THAT(toldWhile([&] { EXPECT_FALSE(platform.web().page().post("pay", {})); }),
                HasSubstr(R"("pay", which nobody handles; post to one of: close, openUpiIntent)"));
    EXPECT_THAT(toldWhile([&] { EXPECT_TRUE(platform.web().page().post("close", {})); }),
                IsEmpty());
    platform.scheduler().runUntilIdle();
}

TEST(MisuseTest, TasksThatNobodyEverRanAreToldOfWhenThePlatformEnds) {
    const auto post = [] {
        DispatchQueue::global(DispatchQueue::QualityOfService::background).async([] {});
        DispatchQueue::global(DispatchQueue::QualityOfService::background).async([] {});
        DispatchQueue::main().async([] {});
    };
    EXPECT_THAT(toldWhile([&] {
                    const HeadlessPlatform platform;
                    post();
                }),
                HasSubstr("2 background tasks and 1 main-queue turn that nobody ever ran; call "
                          "settle()"));
    EXPECT_THAT(toldWhile([&] {
                    HeadlessPlatform platform;
                    platform.scheduler().runOneTurn();
                    post();
                    const auto presenter = makeOnMainThread<UIViewController>();
                    presenter->present(makeOnMainThread<UIViewController>(), true);
                }),
                IsEmpty())
        << "a test may stop where it likes";
    EXPECT_THAT(toldWhile([&] { const HeadlessPlatform platform; }), IsEmpty());
}

}  // namespace
}  // namespace zorvik
