#pragma once

#include <cstddef>

#include "platform/foundation/Export.h"
#include "platform/headless/HeadlessApplication.h"
#include "platform/headless/HeadlessDefaults.h"
#include "platform/headless/HeadlessScheduler.h"
#include "platform/headless/HeadlessStage.h"
#include "platform/headless/ScriptedWebEngine.h"

namespace zorvik::platform::headless {

// The headless port: installed from construction to destruction, on the thread that makes it. For
// tests of a host's integration. What is still pending at the end is dropped, not run; where
// nobody ever ran anything, a line on standard error says so.
class ZORVIK_API HeadlessPlatform {
  public:
    explicit HeadlessPlatform(
        HeadlessScheduler::Background background = HeadlessScheduler::Background::manual);
    HeadlessPlatform(const HeadlessPlatform&) = delete;
    HeadlessPlatform& operator=(const HeadlessPlatform&) = delete;
    ~HeadlessPlatform();

    HeadlessScheduler& scheduler() { return scheduler_; }
    ScriptedWebEngine& web() { return web_; }
    HeadlessApplication& application() { return application_; }
    HeadlessDefaults& defaults() { return defaults_; }
    HeadlessStage& stage() { return stage_; }
    // Registrations with the notification centre that nobody removed: a screen has one, from its
    // view's load to its end.
    std::size_t observerCount() const;

  private:
    HeadlessScheduler scheduler_;
    ScriptedWebEngine web_{scheduler_};
    HeadlessApplication application_{scheduler_};
    HeadlessDefaults defaults_;
    HeadlessStage stage_{scheduler_};
};

}  // namespace zorvik::platform::headless
