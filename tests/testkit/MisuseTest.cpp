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
    HeadlessPlatform platform;
    const auto presentAnd = [&](const std::function<void(UIViewController&)>& act) {
        return toldWhile([&] {
            auto presenter = makeOnMainThread<UIViewController>();
            presenter->present(makeOnMainThread<UIViewController>(), true);
            act(*presenter);
            presenter.reset();
            platform.scheduler().advanceBy(1);
        });
    };
    EXPECT_THAT(presentAnd([](auto&) {}),
                HasSubstr("keep the presenter until its screen has closed"));
    EXPECT_THAT(presentAnd([&](auto& presenter) {
                    platform.scheduler().advanceBy(1);
                    presenter.dismiss(true);  // as a window does that closes
                }),
                IsEmpty());
}

TEST(MisuseTest, AMessageToANameNobodyHandlesIsToldOfWithTheNamesThatAreHandled) {
    HeadlessPlatform platform;
    const auto page = platform.web().makePage({}, {});
    const auto toldOf = [&](const char* name) {
        return toldWhile([&] { platform.web().page().post(name, {}); });
    };
    EXPECT_THAT(toldOf("pay"), HasSubstr("\"pay\", which nobody handles; no name is handled yet"));
    page->addMessageHandler("openUpiIntent");
    page->addMessageHandler("close");
    EXPECT_THAT(toldOf("pay"), HasSubstr("which nobody handles; post to one of: close, openUpi"));
    EXPECT_THAT(toldOf("close"), IsEmpty());
    platform.scheduler().runUntilIdle();
}

TEST(MisuseTest, TasksThatNobodyEverRanAreToldOfWhenThePlatformEnds) {
    const auto toldOf = [](const std::function<void(HeadlessPlatform&)>& before, int tasks) {
        return toldWhile([&] {
            HeadlessPlatform platform;
            before(platform);
            for (int count = 0; count < tasks; ++count)
                DispatchQueue::global(DispatchQueue::QualityOfService::background).async([] {});
            if (tasks > 0) DispatchQueue::main().async([] {});
        });
    };
    EXPECT_THAT(toldOf([](auto&) {}, 2), HasSubstr("2 background tasks and 1 main-queue turn that "
                                                   "nobody ever ran; call settle()"));
    const auto begin = [](auto& platform) {
        platform.scheduler().runOneTurn();
        const auto presenter = makeOnMainThread<UIViewController>();
        presenter->present(makeOnMainThread<UIViewController>(), true);
    };
    EXPECT_THAT(toldOf(begin, 2), IsEmpty()) << "a test may stop where it likes";
    EXPECT_THAT(toldOf([](auto&) {}, 0), IsEmpty());
}

}  // namespace
}  // namespace zorvik
