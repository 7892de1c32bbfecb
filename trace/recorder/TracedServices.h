#pragma once

#include <memory>

#include "platform/runtime/Environment.h"
#include "trace/recorder/Log.h"

// What stands in the place of a port's services: each forwards to the port's and records. Main
// thread, but for what Scheduler says.
namespace zorvik::trace {

class TracedScheduler : public platform::Scheduler {
  public:
    TracedScheduler(platform::Scheduler& port, std::shared_ptr<Log> log);

    void runOnMain(platform::Task task) override;
    TaskId runOnMainAfter(double seconds, platform::Task task) override;
    void cancel(TaskId id) override { port_.cancel(id); }
    void runInBackground(platform::Task task) override;
    double steadySeconds() const override { return port_.steadySeconds(); }
    double wallSeconds() const override { return port_.wallSeconds(); }

  private:
    // The task inside an entry of its own, caused by what posts it now.
    platform::Task traced(platform::Task task, Entry entry) const;

    platform::Scheduler& port_;
    const std::shared_ptr<Log> log_;
};

class TracedApplication : public platform::ApplicationService,
                          private platform::ApplicationDelegate {
  public:
    TracedApplication(platform::ApplicationService& port, std::shared_ptr<Log> log);

    bool canOpen(const platform::URL& url) override;
    void open(const platform::URL& url, std::function<void(bool opened)> completion) override;
    void setDelegate(platform::ApplicationDelegate* delegate) override;

  private:
    void applicationDidBecomeActive() override;

    platform::ApplicationService& port_;
    const std::shared_ptr<Log> log_;
    platform::ApplicationDelegate* delegate_ = nullptr;
    EntryId lastOpening_ = 0;  // what the next return is a return from
};

class TracedDefaults : public platform::DefaultsStore {
  public:
    TracedDefaults(platform::DefaultsStore& port, std::shared_ptr<Log> log);

    std::optional<platform::DefaultsValue> read(const std::string& key) const override;
    void write(const std::string& key, const platform::DefaultsValue& value) override;
    void remove(const std::vector<std::string>& keys) override;

  private:
    platform::DefaultsStore& port_;
    const std::shared_ptr<Log> log_;
};

class TracedStage : public platform::Stage {
  public:
    TracedStage(platform::Stage& port, std::shared_ptr<Log> log);

    void show(std::shared_ptr<platform::UIViewController> presented,
              platform::UIViewController& presenter, bool animated,
              std::function<void()> shown) override;
    void hide(platform::UIViewController& presented, bool animated,
              std::function<void()> hidden) override;
    void viewDidChange(platform::UIView& view) override { port_.viewDidChange(view); }
    platform::Size measureText(const std::string& text, double fontSize,
                               double maximumWidth) override;

  private:
    platform::Stage& port_;
    const std::shared_ptr<Log> log_;
};

class TracedWebEngine : public platform::WebEngine {
  public:
    TracedWebEngine(platform::WebEngine& port, std::shared_ptr<Log> log);

    std::unique_ptr<platform::WebPage> makePage(
        const platform::WebPageConfiguration& configuration,
        std::weak_ptr<platform::WebPageDelegate> delegate) override;

  private:
    platform::WebEngine& port_;
    const std::shared_ptr<Log> log_;
};

}  // namespace zorvik::trace
