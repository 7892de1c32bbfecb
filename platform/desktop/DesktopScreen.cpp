#include "platform/desktop/DesktopScreen.h"

#include <algorithm>
#include <utility>

#include "platform/desktop/DesktopStage.h"

namespace zorvik::platform::desktop {
namespace {

double easeOut(double share) {
    const double left = 1 - std::clamp(share, 0.0, 1.0);
    return 1 - left * left * left;
}

}  // namespace

DesktopScreen::DesktopScreen(DesktopStage& stage, std::shared_ptr<UIViewController> shown)
    : controller(std::move(shown)), stage_(stage) {}

DesktopScreen::~DesktopScreen() {
    cancelTask();
}

void DesktopScreen::follow() {
    needsFollowing_ = true;
    requestFrames();
}

void DesktopScreen::followTexts() {
    tree().renewTexts();
    follow();
}

void DesktopScreen::slide(double from, double to) {
    slide_ = {from, to, stage_.scheduler().steadySeconds()};
    moveTo(from);
    requestFrames();
}

void DesktopScreen::endSlide() {
    if (slide_) moveTo(slide_->to);
    slide_.reset();
}

void DesktopScreen::runLater(double seconds, Task task) {
    cancelTask();
    task_ = stage_.scheduler().runOnMainAfter(seconds, std::move(task));
}

void DesktopScreen::cancelTask() {
    if (const auto task = std::exchange(task_, std::nullopt)) stage_.scheduler().cancel(*task);
}

void DesktopScreen::moveTo(double offset) {
    offset_ = offset;
    setOffset(offset);
}

bool DesktopScreen::frame() {
    if (std::exchange(needsFollowing_, false)) {
        tree().follow();
        if (size_.width > 0) tree().place(size_, stage_.safeArea());
        ShownView* const focused = hasKeyboard() ? tree().newFocus() : nullptr;
        if (focused != nullptr) focused->takeFocus();
    }
    const bool isFading = tree().showOpacities();
    if (slide_) {
        const double elapsed = stage_.scheduler().steadySeconds() - slide_->start;
        const double share = easeOut(elapsed / slideSeconds);
        moveTo(slide_->from + (slide_->to - slide_->from) * share);
        if (elapsed >= slideSeconds) slide_.reset();
    }
    return isFading || slide_ || needsFollowing_;
}

void DesktopScreen::resized(const Size& size) {
    size_ = size;
    tree().place(size, stage_.safeArea());
}

}  // namespace zorvik::platform::desktop
