#pragma once

#include <deque>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/foundation/Export.h"
#include "platform/services/ApplicationService.h"
#include "platform/services/Scheduler.h"

namespace zorvik::platform::headless {

// An application on a machine where only the installed schemes can be opened. Main thread only.
class ZORVIK_API HeadlessApplication : public ApplicationService {
  public:
    explicit HeadlessApplication(Scheduler& scheduler) : scheduler_(scheduler) {}

    // An application for the scheme is there; `accepts`: whether its launches succeed.
    void install(const std::string& scheme, bool accepts = true);
    void uninstall(const std::string& scheme);
    // Whether launches are confirmed by themselves, or wait as those of an app that takes its time;
    // for those from now on. The one that waited longest is confirmed in a turn of its own; false
    // when there is none.
    enum class Answers { given, waiting };
    void setAnswers(Answers answers) { answers_ = answers; }
    bool giveAnswer();
    // Every address open was asked for, in order, refused launches included.
    const std::vector<std::string>& openedUrls() const { return openedUrls_; }
    // The customer comes back to this application.
    void becomeActive();

    bool canOpen(const URL& url) override;
    void open(const URL& url, std::function<void(bool opened)> completion) override;
    void setDelegate(ApplicationDelegate* delegate) override { delegate_ = delegate; }

  private:
    Scheduler& scheduler_;
    ApplicationDelegate* delegate_ = nullptr;
    std::set<std::string> accepting_;
    std::set<std::string> refusing_;
    std::vector<std::string> openedUrls_;
    Answers answers_ = Answers::given;
    std::deque<std::function<void()>> waiting_;
};

}  // namespace zorvik::platform::headless
