#include "TemplateStage.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "platform/uikit/UIViewController.h"

namespace port_template {

using zorvik::platform::Size;
using zorvik::platform::UIViewController;

// PORTER: put the controller's view over the presenter's in the presenter's window, sliding in when
// animated, and call `shown` once it is in place. Dismiss the controller inside this call when the
// presenter is in no window, and in the moment when that window goes.
void TemplateStage::show(std::shared_ptr<UIViewController> presented,
                         UIViewController& /*presenter*/, bool /*animated*/,
                         std::function<void()> shown) {
    const UIViewController* const key = presented.get();
    shown_.push_back(std::move(presented));
    coming_[key] = scheduler_.runOnMainAfter(0, [this, key, shown = std::move(shown)] {
        coming_.erase(key);
        if (shown) shown();
    });
}

// PORTER: take it out of the window again, sliding out when animated.
void TemplateStage::hide(UIViewController& presented, bool /*animated*/,
                         std::function<void()> hidden) {
    const UIViewController* const key = &presented;
    if (const auto coming = coming_.extract(key)) scheduler_.cancel(coming.mapped());
    scheduler_.runOnMain([this, key, hidden = std::move(hidden)] {
        const auto place = std::find_if(shown_.begin(), shown_.end(),
                                        [key](const auto& shown) { return shown.get() == key; });
        std::shared_ptr<UIViewController> leaving;  // kept until it has heard of it
        if (place != shown_.end()) {
            leaving = std::move(*place);
            shown_.erase(place);
        }
        if (hidden) hidden();
    });
}

// PORTER: arrange for a frame. At the frame: layoutTree(root, size, safeArea) of Layout.h, place
// every view at its frame(), draw it at its presentationAlpha() unless it isHidden(), put the page
// of a WKWebView at that view's place. Once no presentationAlpha() moves any more, stop drawing: an
// idle screen costs nothing. A tap on a button is sendTouchUpInside().
void TemplateStage::viewDidChange(zorvik::platform::UIView& /*view*/) {}

// PORTER: measure with the font that draws. This takes every character for half the font size.
Size TemplateStage::measureText(const std::string& text, double fontSize, double maximumWidth) {
    const double width = 0.5 * fontSize * static_cast<double>(text.size());
    const double lineHeight = 1.2 * fontSize;
    if (maximumWidth <= 0 || width <= maximumWidth) return {width, lineHeight};
    return {maximumWidth, std::ceil(width / maximumWidth) * lineHeight};
}

void TemplateStage::dropScreens() {
    coming_.clear();
    std::exchange(shown_, {}).clear();
}

}  // namespace port_template
