#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "c/Boundary.h"
#include "c/zorvik_checkout.h"
#include "platform/foundation/Value.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr const char* notUtf8 = "a\xFF";

struct NamedCall {
    const char* name;
    std::function<zorvik_result()> call;
};

// A function that returns a handle or text, as a result.
zorvik_result resultOf(const void* made) {
    return made == nullptr ? zorvik_last_result() : ZORVIK_OK;
}

// A headless checkout whose core services are this object's members.
class CInterfaceTest : public testing::Test {
  protected:
    CInterfaceTest() {
        zorvik_set_console([](void*, const char*) {}, nullptr, nullptr);
        services.size = sizeof services;
        services.user_data = this;
        services.destroy = [](void* test) { ++self(test).destroyed; };
        services.update_order = [](void* test, const char*, const char*, const char*, const char*,
                                   const char*, zorvik_completion* asked) {
            self(test).completion = asked;
            self(test).whenUpdated();
        };
        services.list_upi_apps = [](void*, const char*, zorvik_completion* asked) {
            zorvik_completion_succeed(asked, "[]");
            zorvik_completion_free(asked);
        };
        services.page_address = [](void*, zorvik_text* answer) {
            zorvik_text_set(answer, "https://pay.example/checkout");
        };
        platform = zorvik_headless_make(ZORVIK_BACKGROUND_MANUAL);
        presenter = zorvik_headless_presenter(platform);
        delegate = zorvik_delegate_make(
            [](void* test, const char* response) {
                self(test).responses.emplace_back(response);
                self(test).whenAnswered();
            },
            this, countDestroyed);
        zorvik_headless_on_load(
            platform, [](void*, const char*) { return ZORVIK_LOAD_FINISHES; }, nullptr, nullptr);
        zorvik_set_core_services(&services);
        zorvik_set_delegate(delegate);
    }
    ~CInterfaceTest() override {
        zorvik_completion_free(completion);
        zorvik_delegate_free(delegate);
        zorvik_presenter_free(presenter);
        if (platform != nullptr) zorvik_headless_free(platform);
        zorvik_set_core_services(nullptr);
        zorvik_set_console(nullptr, nullptr, nullptr);
    }

    static CInterfaceTest& self(void* test) { return *static_cast<CInterfaceTest*>(test); }
    static void countDestroyed(void* test) { ++self(test).destroyed; }

    void checkout() const {
        zorvik_checkout_options options{};
        options.order_token = "a.b.c";
        EXPECT_EQ(zorvik_checkout(presenter, &options), ZORVIK_OK);
        zorvik_headless_settle(platform);
    }
    // A checkout whose screen is open.
    void openScreen() {
        checkout();
        EXPECT_EQ(zorvik_completion_succeed(completion, "{}"), ZORVIK_OK);
        zorvik_headless_advance(platform, 1);
        EXPECT_EQ(zorvik_headless_screen_count(platform), 1U);
    }
    void answerFailure() {
        checkout();
        EXPECT_EQ(zorvik_completion_fail(completion, "no"), ZORVIK_OK);
        zorvik_headless_settle(platform);
    }

    zorvik_core_services services{};
    zorvik_headless* platform = nullptr;
    zorvik_presenter* presenter = nullptr;
    zorvik_delegate* delegate = nullptr;
    zorvik_completion* completion = nullptr;
    std::function<void()> whenUpdated = [] {};
    std::function<void()> whenAnswered = [] {};
    std::vector<std::string> responses;
    std::atomic<int> destroyed = 0;
};

TEST_F(CInterfaceTest, WhatIsNoArgumentIsRefusedWithAReason) {
    checkout();
    zorvik_checkout_options badToken{};
    badToken.order_token = notUtf8;
    const zorvik_core_services sizeless{};
    const auto answer = [](void*, const char*, const char*) {};
    const std::vector<NamedCall> calls{
        {"presenter", [&] { return zorvik_checkout(nullptr, &badToken); }},
        {"token", [&] { return zorvik_checkout(presenter, &badToken); }},
        {"app code", [] { return zorvik_initialize(notUtf8); }},
        {"environment", [] { return zorvik_set_environment_url(notUtf8); }},
        {"services", [&] { return zorvik_set_core_services(&sizeless); }},
        {"delegate", [] { return resultOf(zorvik_delegate_make(nullptr, nullptr, nullptr)); }},
        {"no claims", [] { return resultOf(zorvik_make_order_token(nullptr)); }},
        {"claims", [] { return resultOf(zorvik_make_order_token("[]")); }},
        {"text", [] { return zorvik_text_set(nullptr, "x"); }},
        {"succeed nothing", [] { return zorvik_completion_succeed(nullptr, "{}"); }},
        {"succeed with nothing", [&] { return zorvik_completion_succeed(completion, nullptr); }},
        {"succeed with no JSON", [&] { return zorvik_completion_succeed(completion, "{"); }},
        {"of another kind", [&] { return zorvik_completion_succeed(completion, "[]"); }},
        {"member", [&] { return zorvik_completion_succeed(completion, "{\"orderId\": 1}"); }},
        {"fail nothing", [] { return zorvik_completion_fail(nullptr, "no"); }},
        {"fail with nothing", [&] { return zorvik_completion_fail(completion, nullptr); }},
        {"fail", [&] { return zorvik_completion_fail(completion, notUtf8); }},
        {"order items",
         [&] { return zorvik_create_order(1, "INR", "[1]", nullptr, answer, nullptr, nullptr); }},
        {"order answer",
         [] { return zorvik_create_order(1, "INR", "[]", nullptr, nullptr, nullptr, nullptr); }},
        {"shop order", [&] { return zorvik_create_shop_order("{}", answer, nullptr, nullptr); }},
        {"free", [] { return zorvik_headless_free(nullptr); }},
        {"settle", [] { return zorvik_headless_settle(nullptr); }},
        {"presenter of", [] { return resultOf(zorvik_headless_presenter(nullptr)); }},
        {"scripts", [] { return resultOf(zorvik_headless_page_scripts(nullptr)); }},
        {"scheme", [&] { return zorvik_headless_install_scheme(platform, nullptr, true); }},
    };
    for (const auto& [name, call] : calls) {
        EXPECT_EQ(call(), ZORVIK_INVALID_ARGUMENT) << name;
        EXPECT_STRNE(zorvik_last_error(), "") << name;
    }
    EXPECT_EQ(zorvik_headless_screen_count(nullptr), 0U);
    zorvik_string_free(nullptr);
    zorvik_delegate_free(nullptr);
    zorvik_presenter_free(nullptr);
    zorvik_completion_free(nullptr);
    EXPECT_EQ(zorvik_completion_succeed(completion, "{}"), ZORVIK_OK) << "still open";
}

TEST_F(CInterfaceTest, ACallAtTheWrongTimeOrPlaceIsRefused) {
    EXPECT_EQ(resultOf(zorvik_headless_make(ZORVIK_BACKGROUND_MANUAL)), ZORVIK_WRONG_STATE);
    EXPECT_EQ(zorvik_headless_page_navigate(platform, "https://pay.example"), ZORVIK_WRONG_STATE);
    std::thread([this] {
        EXPECT_EQ(zorvik_device_back(), ZORVIK_WRONG_THREAD);
        EXPECT_EQ(zorvik_headless_settle(platform), ZORVIK_WRONG_THREAD);
        EXPECT_EQ(zorvik_headless_free(platform), ZORVIK_WRONG_THREAD);
    }).join();
    openScreen();
    EXPECT_EQ(zorvik_headless_page_post(platform, "nobody", "1"), ZORVIK_WRONG_STATE);
    zorvik_headless_free(std::exchange(platform, nullptr));
    EXPECT_EQ(zorvik_initialize("shop"), ZORVIK_WRONG_STATE);
    EXPECT_THAT(zorvik_last_error(), HasSubstr("zorvik_headless_make"));
}

TEST_F(CInterfaceTest, OfTwoThreadsThatAnswerOneIsRefused) {
    checkout();
    std::atomic<int> accepted = 0;
    const auto answer = [&] {
        const auto result = zorvik_completion_succeed(completion, "{}");
        accepted += result == ZORVIK_OK ? 1 : 0;
        if (result != ZORVIK_OK) {
            EXPECT_EQ(result, ZORVIK_WRONG_STATE);
            EXPECT_THAT(zorvik_last_error(), HasSubstr("answered already"));
        }
    };
    std::thread first(answer);
    std::thread second(answer);
    first.join();
    second.join();
    EXPECT_EQ(accepted, 1);
    EXPECT_EQ(zorvik_completion_fail(completion, "late"), ZORVIK_WRONG_STATE);
    zorvik_headless_advance(platform, 1);
    EXPECT_EQ(zorvik_headless_screen_count(platform), 1U);
    EXPECT_THAT(responses, IsEmpty());
}

TEST_F(CInterfaceTest, AnAnswerFromAnotherThreadAfterThePlatformIsDroppedInSilence) {
    for (const bool answers : {true, false}) {
        checkout();
        zorvik_headless_free(platform);
        std::thread([this, answers] {
            EXPECT_TRUE(!answers || zorvik_completion_succeed(completion, "{}") == ZORVIK_OK);
            zorvik_completion_free(std::exchange(completion, nullptr));
        }).join();
        platform = zorvik_headless_make(ZORVIK_BACKGROUND_THREADS);
        zorvik_presenter_free(std::exchange(presenter, zorvik_headless_presenter(platform)));
    }
    EXPECT_THAT(responses, IsEmpty());
}

TEST_F(CInterfaceTest, WithoutAServiceOrItsAnswerTheFailureNamesTheRemedy) {
    checkout();
    zorvik_completion_free(std::exchange(completion, nullptr));
    zorvik_headless_settle(platform);
    services.update_order = nullptr;
    zorvik_set_core_services(&services);
    checkout();
    zorvik_set_core_services(nullptr);
    checkout();
    EXPECT_THAT(responses, ElementsAre(HasSubstr("let go of update_order without an answer"),
                                       HasSubstr("have no update_order"),
                                       HasSubstr("call zorvik_set_core_services")));
}

TEST_F(CInterfaceTest, WhatACallbackLetsGoOfStaysUntilItEndsAndThePlatformCannotGo) {
    whenUpdated = [this] {
        EXPECT_EQ(zorvik_headless_free(platform), ZORVIK_WRONG_STATE);
        EXPECT_THAT(zorvik_last_error(), HasSubstr("inside a callback"));
        zorvik_set_core_services(nullptr);
        EXPECT_EQ(destroyed, 0) << "its data is in use";
    };
    whenAnswered = [this] {
        EXPECT_EQ(zorvik_headless_free(platform), ZORVIK_WRONG_STATE);
        zorvik_delegate_free(std::exchange(delegate, nullptr));
        EXPECT_EQ(destroyed, 1) << "its data is in use, that of the services was let go of";
    };
    answerFailure();
    EXPECT_EQ(destroyed, 2);
    checkout();
    EXPECT_THAT(responses, testing::SizeIs(1)) << "a delegate that went hears nothing more";
}

TEST_F(CInterfaceTest, TheDataOfACallbackIsDestroyedOnceAlsoByARefusedCall) {
    const auto answer = [](void*, const char*, const char*) {};
    const auto load = [](void*, const char*) { return ZORVIK_LOAD_FINISHES; };
    zorvik_delegate_make(nullptr, this, countDestroyed);
    EXPECT_EQ(destroyed, 1) << "no function";
    zorvik_create_order(1, nullptr, "[]", nullptr, answer, this, countDestroyed);
    EXPECT_EQ(destroyed, 2) << "no currency";
    zorvik_headless_on_load(nullptr, load, this, countDestroyed);
    EXPECT_EQ(destroyed, 3) << "no platform";
    zorvik_headless_on_load(platform, load, this, countDestroyed);
    EXPECT_EQ(destroyed, 3) << "in force";
    zorvik_headless_on_load(platform, nullptr, nullptr, nullptr);
    EXPECT_EQ(destroyed, 4) << "replaced";
    zorvik_headless_on_load(platform, load, this, countDestroyed);
    zorvik_headless_free(std::exchange(platform, nullptr));
    EXPECT_EQ(destroyed, 5) << "ended";
}

TEST_F(CInterfaceTest, AnExceptionEndsInTheCallbackThatThrewIt) {
    whenAnswered = [] { throw std::runtime_error("thrown by a delegate"); };
    testing::internal::CaptureStderr();
    answerFailure();
    zorvik_headless_on_load(
        platform, [](void*, const char*) -> zorvik_load { throw 1; }, nullptr, nullptr);
    zorvik_completion_free(std::exchange(completion, nullptr));
    openScreen();
    EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("thrown by a delegate"));
}

TEST(CTextTest, WhatJSONCannotHoldIsReplacedAndTheRestStays) {
    using zorvik::platform::Array;
    using zorvik::platform::Dictionary;
    using zorvik::platform::Value;
    Value deep = 1;
    for (int level = 0; level < 600; ++level)
        deep = Array{deep};
    const Dictionary dictionary{{"bytes", notUtf8}, {"number", 1e308 * 10}, {"text", "₹"}};
    EXPECT_EQ(zorvik::c::jsonText(dictionary),
              "{\"bytes\":\"a\uFFFD\",\"number\":null,\"text\":\"₹\"}");
    EXPECT_THAT(zorvik::c::jsonText(Dictionary{{"deep", deep}, {"text", "₹"}}),
                testing::AllOf(HasSubstr("null]]]"), testing::EndsWith(",\"text\":\"₹\"}")));
}

}  // namespace
