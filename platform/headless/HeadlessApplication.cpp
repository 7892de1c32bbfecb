#include "platform/headless/HeadlessApplication.h"

#include <utility>

namespace zorvik::platform::headless {

namespace {

// Schemes compare without regard to case.
std::string lowered(std::string scheme) {
    for (char& character : scheme) {
        if (character >= 'A' && character <= 'Z') {
            character = static_cast<char>(character - 'A' + 'a');
        }
    }
    return scheme;
}

}  // namespace

void HeadlessApplication::install(const std::string& scheme, bool accepts) {
    uninstall(scheme);
    (accepts ? accepting_ : refusing_).insert(lowered(scheme));
}

void HeadlessApplication::uninstall(const std::string& scheme) {
    accepting_.erase(lowered(scheme));
    refusing_.erase(lowered(scheme));
}

void HeadlessApplication::becomeActive() {
    scheduler_.runOnMain([this] {
        if (delegate_ != nullptr) delegate_->applicationDidBecomeActive();
    });
}

bool HeadlessApplication::canOpen(const URL& url) {
    const std::string scheme = lowered(url.scheme().value_or(""));
    return accepting_.contains(scheme) || refusing_.contains(scheme);
}

void HeadlessApplication::open(const URL& url, std::function<void(bool opened)> completion) {
    openedUrls_.push_back(url.absoluteString());
    const bool opened = accepting_.contains(lowered(url.scheme().value_or("")));
    waiting_.emplace_back([completion = std::move(completion), opened] {
        if (completion) completion(opened);
    });
    if (answers_ == Answers::given) {
        scheduler_.runOnMain(std::move(waiting_.back()));
        waiting_.pop_back();
    }
}

bool HeadlessApplication::giveAnswer() {
    if (waiting_.empty()) return false;
    scheduler_.runOnMain(std::move(waiting_.front()));
    waiting_.pop_front();
    return true;
}

}  // namespace zorvik::platform::headless
