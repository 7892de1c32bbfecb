#include "platform/headless/HeadlessStage.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#include "platform/uikit/Layout.h"
#include "platform/uikit/UIViewController.h"

namespace zorvik::platform::headless {

namespace {

constexpr double characterShare = 0.5;  // of the font size
constexpr double lineShare = 1.2;

// Counts lines as words come in; a line holds at most `capacity` characters.
class LineBreaker {
  public:
    explicit LineBreaker(std::size_t capacity) : capacity_(capacity) {}

    void addWord(std::size_t length) {
        if (hasWord_ && used_ + 1 + length > capacity_) {
            startLine();
        } else if (hasWord_) {
            ++used_;
        }
        hasWord_ = true;
        for (; length > capacity_; length -= capacity_) {  // longer than any line
            used_ = capacity_;
            startLine();
            hasWord_ = true;
        }
        used_ += length;
        longest_ = std::max(longest_, used_);
    }
    void startLine() {
        longest_ = std::max(longest_, used_);
        used_ = 0;
        hasWord_ = false;
        ++lines_;
    }
    std::size_t lines() const { return lines_; }
    std::size_t longest() const { return longest_; }

  private:
    const std::size_t capacity_;
    std::size_t used_ = 0;
    std::size_t longest_ = 0;
    std::size_t lines_ = 1;
    bool hasWord_ = false;
};

}  // namespace

void HeadlessStage::layout() {
    if (!shown_.empty()) layoutTree(*shown_.back()->view(), size_, safeArea_);
}

void HeadlessStage::show(std::shared_ptr<UIViewController> presented,
                         UIViewController& /*presenter*/, bool animated,
                         std::function<void()> shown) {
    const UIViewController* const key = presented.get();
    shown_.push_back(std::move(presented));
    slidingIn_[key] = scheduler_.runOnMainAfter(animated ? slideSeconds : 0,
                                                [this, key, shown = std::move(shown)] {
                                                    slidingIn_.erase(key);
                                                    if (shown) shown();
                                                });
}

void HeadlessStage::hide(UIViewController& presented, bool animated, std::function<void()> hidden) {
    const UIViewController* const key = &presented;
    if (const auto sliding = slidingIn_.extract(key)) scheduler_.cancel(sliding.mapped());
    scheduler_.runOnMainAfter(animated ? slideSeconds : 0, [this, key, hidden = std::move(hidden)] {
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

Size HeadlessStage::measureText(const std::string& text, double fontSize, double maximumWidth) {
    const double characterWidth = characterShare * fontSize;
    const std::size_t capacity =
        maximumWidth > 0 ? static_cast<std::size_t>(std::max(1.0, maximumWidth / characterWidth))
                         : std::string::npos / 2;
    LineBreaker breaker(capacity);
    std::size_t word = 0;
    for (const char byte : text) {
        if (byte == ' ' || byte == '\n') {
            breaker.addWord(std::exchange(word, 0));
            if (byte == '\n') breaker.startLine();
        } else if ((static_cast<unsigned char>(byte) & 0xC0U) != 0x80U) {
            ++word;  // the first byte of a character
        }
    }
    breaker.addWord(word);
    return {static_cast<double>(breaker.longest()) * characterWidth,
            static_cast<double>(breaker.lines()) * lineShare * fontSize};
}

}  // namespace zorvik::platform::headless
