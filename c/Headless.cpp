#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "c/Boundary.h"
#include "platform/foundation/JSONSerialization.h"
#include "platform/headless/HeadlessPlatform.h"
#include "platform/runtime/MainThread.h"

namespace headless = zorvik::platform::headless;

struct zorvik_headless {
    explicit zorvik_headless(headless::HeadlessScheduler::Background background)
        : platform(background) {}

    headless::HeadlessPlatform platform;
    std::shared_ptr<zorvik::platform::UIViewController> presenter =
        zorvik::platform::makeOnMainThread<zorvik::platform::UIViewController>();
    int turning = 0;  // functions under way that turn the queue
};

namespace zorvik::c {
namespace {

using headless::ScriptedLoad;
using platform::ScriptValue;
using platform::Value;

std::optional<ScriptedLoad> scriptedLoad(zorvik_load load) {
    ScriptedLoad answer;
    switch (load) {
        case ZORVIK_LOAD_FINISHES:
            return answer;
        case ZORVIK_LOAD_FAILS_BEFORE_COMMIT:
            answer.ending = ScriptedLoad::Ending::failBeforeCommit;
            return answer;
        case ZORVIK_LOAD_FAILS_AFTER_COMMIT:
            answer.ending = ScriptedLoad::Ending::failAfterCommit;
            return answer;
        case ZORVIK_LOAD_HANGS:
            answer.ending = ScriptedLoad::Ending::hang;
            return answer;
        case ZORVIK_LOAD_HANGS_AFTER_COMMIT:
            answer.ending = ScriptedLoad::Ending::hangAfterCommit;
            return answer;
        case ZORVIK_LOAD_NOT_SCRIPTED:
            break;
    }
    return std::nullopt;
}

ScriptValue scriptValue(const Value& value) {
    using Type = ScriptValue::Type;
    if (const auto* text = value.string()) return {Type::string, *text};
    Type type = Type::number;
    if (value.isNull()) type = Type::null;
    if (value.boolean() != nullptr) type = Type::boolean;
    if (value.array() != nullptr) type = Type::array;
    if (value.dictionary() != nullptr) type = Type::object;
    return {type, jsonText(value)};
}

platform::Result<ScriptValue> evaluated(const Callback<zorvik_evaluation_function>& evaluate,
                                        const std::string& script) {
    zorvik_text answer;
    evaluate(script.c_str(), &answer);
    if (!answer.content) {
        return platform::Error{"zorvik.c", 2, "No answer is scripted for this evaluation"};
    }
    const auto value = platform::JSONSerialization::jsonObject(
        *answer.content, platform::JSONSerialization::ReadingOptions::fragmentsAllowed);
    if (!value) return value.error();
    return scriptValue(value.value());
}

std::string jsonArray(const std::vector<std::string>& texts) {
    return jsonText(platform::Array(texts.begin(), texts.end()));
}

// Checks the call and runs the body on the platform.
template <class Body>
zorvik_result onHeadless(zorvik_headless* handle, const Body& body) {
    return atBoundary([&] {
        Call call;
        if (!call.onMainThread().given(handle, "headless")) return call.result();
        body(call, handle->platform);
        return call.result();
    });
}

// The same for a body that turns the queue.
template <class Body>
zorvik_result turning(zorvik_headless* handle, const Body& body) {
    return onHeadless(handle, [&](Call&, headless::HeadlessPlatform& platform) {
        ++handle->turning;
        body(platform.scheduler());
        --handle->turning;
    });
}

// And for one that needs a page.
template <class Body>
zorvik_result onPage(zorvik_headless* handle, const Body& body) {
    return onHeadless(handle, [&](Call& call, headless::HeadlessPlatform& platform) {
        call.require(!platform.web().pages().empty(), ZORVIK_WRONG_STATE,
                     "there is no page: no checkout screen is open");
        if (call) body(call, platform.web().page());
    });
}

}  // namespace
}  // namespace zorvik::c

using namespace zorvik;
using namespace zorvik::c;

extern "C" {

zorvik_headless* zorvik_headless_make(zorvik_background background) {
    return atBoundary(static_cast<zorvik_headless*>(nullptr), [&]() -> zorvik_headless* {
        if (!Call().withoutPlatform()) return nullptr;
        using Background = headless::HeadlessScheduler::Background;
        return new zorvik_headless(background == ZORVIK_BACKGROUND_THREADS ? Background::threads
                                                                           : Background::manual);
    });
}

zorvik_result zorvik_headless_free(zorvik_headless* headless) {
    return atBoundary([&] {
        Call call;
        call.onMainThread().given(headless, "headless").outsideCallbacks();
        if (!call) return call.result();
        if (!call.require(headless->turning == 0, ZORVIK_WRONG_STATE, "the queue is being turned"))
            return call.result();
        delete headless;
        return ZORVIK_OK;
    });
}

zorvik_presenter* zorvik_headless_presenter(zorvik_headless* headless) {
    zorvik_presenter* presenter = nullptr;
    onHeadless(headless,
               [&](Call&, auto&) { presenter = new zorvik_presenter{headless->presenter}; });
    return presenter;
}

zorvik_result zorvik_headless_settle(zorvik_headless* headless) {
    return turning(headless, [](auto& scheduler) { scheduler.settle(); });
}

zorvik_result zorvik_headless_run_one_turn(zorvik_headless* headless, bool* ran) {
    return turning(headless, [&](auto& scheduler) {
        const bool hasRun = scheduler.runOneTurn();
        if (ran != nullptr) *ran = hasRun;
    });
}

zorvik_result zorvik_headless_advance(zorvik_headless* headless, double seconds) {
    return turning(headless, [&](auto& scheduler) { scheduler.advanceBy(seconds); });
}

zorvik_result zorvik_headless_set_now(zorvik_headless* headless, double seconds) {
    return onHeadless(headless,
                      [&](Call&, auto& platform) { platform.scheduler().setNow(seconds); });
}

zorvik_result zorvik_headless_on_load(zorvik_headless* headless, zorvik_load_function load,
                                      void* user_data, zorvik_destroy destroy) {
    const Callback callback(load, user_data, destroy);
    return onHeadless(headless, [&](Call&, auto& platform) {
        if (!callback) return platform.web().onLoad({});
        platform.web().onLoad(
            [callback](const std::string& url) { return scriptedLoad(callback(url.c_str())); });
    });
}

zorvik_result zorvik_headless_on_evaluate(zorvik_headless* headless,
                                          zorvik_evaluation_function evaluate, void* user_data,
                                          zorvik_destroy destroy) {
    const Callback callback(evaluate, user_data, destroy);
    return onHeadless(headless, [&](Call&, auto& platform) {
        if (!callback) return platform.web().onEvaluate({});
        platform.web().onEvaluate(
            [callback](const std::string& script) { return evaluated(callback, script); });
    });
}

zorvik_result zorvik_headless_page_navigate(zorvik_headless* headless, const char* url) {
    return onPage(headless, [&](Call& call, auto& page) {
        if (call.text(url, "url")) page.navigate(url);
    });
}

zorvik_result zorvik_headless_page_post(zorvik_headless* headless, const char* handler,
                                        const char* body_json) {
    return onPage(headless, [&](Call& call, auto& page) {
        call.text(handler, "handler");
        const auto body = scriptValue(call.json(body_json, "body_json"));
        if (!call) return;
        call.require(page.post(handler, body), ZORVIK_WRONG_STATE,
                     "no message handler of this name is registered");
    });
}

char* zorvik_headless_page_scripts(zorvik_headless* headless) {
    char* scripts = nullptr;
    onPage(headless,
           [&](Call&, auto& page) { scripts = hostString(jsonArray(page.evaluatedScripts())); });
    return scripts;
}

size_t zorvik_headless_screen_count(zorvik_headless* headless) {
    size_t count = 0;
    onHeadless(headless, [&](Call&, auto& platform) { count = platform.stage().shown().size(); });
    return count;
}

zorvik_result zorvik_headless_install_scheme(zorvik_headless* headless, const char* scheme,
                                             bool accepts) {
    return onHeadless(headless, [&](Call& call, auto& platform) {
        if (call.text(scheme, "scheme")) platform.application().install(scheme, accepts);
    });
}

char* zorvik_headless_opened_urls(zorvik_headless* headless) {
    char* urls = nullptr;
    onHeadless(headless, [&](Call&, auto& platform) {
        urls = hostString(jsonArray(platform.application().openedUrls()));
    });
    return urls;
}

zorvik_result zorvik_headless_become_active(zorvik_headless* headless) {
    return onHeadless(headless,
                      [](Call&, auto& platform) { platform.application().becomeActive(); });
}

}  // extern "C"
