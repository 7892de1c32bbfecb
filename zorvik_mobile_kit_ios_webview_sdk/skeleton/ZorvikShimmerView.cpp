#include "zorvik_mobile_kit_ios_webview_sdk/ZorvikShimmerView.h"

#include <array>
#include <charconv>
#include <string>
#include <string_view>

#include "platform/runtime/MainThread.h"

namespace zorvik {

using platform::makeOnMainThread;
using platform::NSLayoutConstraint;
using platform::Rect;
using platform::Timer;
using platform::UIColor;
using platform::UIScrollView;
using platform::UIView;

namespace {

constexpr std::string_view skeletonGrey = "#E0E0E0";
constexpr double blockCornerRadius = 4;
constexpr double headerHeight = 74;
constexpr double rowHeight = 40;
constexpr double gap = 16;
constexpr double iconSize = 24;
constexpr double iconGap = 12;
constexpr double textColumnHeight = 28;
constexpr double titleHeight = 16;
constexpr double subtitleGap = 8;
constexpr double subtitleHeight = 12;
constexpr std::array<double, 15> subtitleWidths{200, 180, 220, 160, 190, 210, 170, 200,
                                                180, 190, 180, 220, 160, 240, 200};

constexpr double stagger = 0.1;
constexpr double pulseSeconds = 1.2;
constexpr double dimAlpha = 0.3;
constexpr double litAlpha = 0.8;
constexpr double pauseSeconds = 0.2;
constexpr double fadeSeconds = 0.3;

UIColor colorFromHex(std::string_view text) {
    constexpr std::string_view blanks = " \t\r\n";
    std::string digits;
    for (const char character : text) {
        if (character != '#' && blanks.find(character) == std::string_view::npos) {
            digits += character;
        }
    }
    unsigned long long rgb = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), rgb, 16);
    const auto component = [rgb](int shift) {
        return static_cast<double>((rgb >> shift) & 0xFF) / 255;
    };
    return {component(16), component(8), component(0), 1};
}

template <class View = UIView>
std::shared_ptr<View> makeView() {
    auto view = makeOnMainThread<View>();
    view->setTranslatesAutoresizingMaskIntoConstraints(false);
    return view;
}

}  // namespace

std::shared_ptr<ZorvikShimmerView> ZorvikShimmerView::initWithFrame(const Rect& frame) {
    auto view = makeOnMainThread<ZorvikShimmerView>(frame);
    view->setupShimmerView();
    return view;
}

ZorvikShimmerView::ZorvikShimmerView(const Rect& frame)
    : UIView(frame),
      scrollView(makeOnMainThread<UIScrollView>()),
      contentView(makeOnMainThread<UIView>()) {}

ZorvikShimmerView::~ZorvikShimmerView() {
    stopShimmerAnimation();
}

void ZorvikShimmerView::setupShimmerView() {
    setBackgroundColor(UIColor::white());

    scrollView->setTranslatesAutoresizingMaskIntoConstraints(false);
    scrollView->setShowsVerticalScrollIndicator(false);
    scrollView->setShowsHorizontalScrollIndicator(false);
    addSubview(scrollView);

    contentView->setTranslatesAutoresizingMaskIntoConstraints(false);
    scrollView->addSubview(contentView);

    // The content is as wide as the scroll view: the skeleton scrolls vertically only.
    NSLayoutConstraint::activate({
        scrollView->topAnchor().constraintEqualTo(topAnchor()),
        scrollView->leadingAnchor().constraintEqualTo(leadingAnchor()),
        scrollView->trailingAnchor().constraintEqualTo(trailingAnchor()),
        scrollView->bottomAnchor().constraintEqualTo(bottomAnchor()),
        contentView->topAnchor().constraintEqualTo(scrollView->topAnchor()),
        contentView->leadingAnchor().constraintEqualTo(scrollView->leadingAnchor()),
        contentView->trailingAnchor().constraintEqualTo(scrollView->trailingAnchor()),
        contentView->bottomAnchor().constraintEqualTo(scrollView->bottomAnchor()),
        contentView->widthAnchor().constraintEqualTo(scrollView->widthAnchor()),
    });

    createShimmerContent();
}

std::shared_ptr<UIView> ZorvikShimmerView::createShimmerView(std::optional<double> width,
                                                             double height,
                                                             const UIColor& backgroundColor) {
    auto block = makeView();
    block->setBackgroundColor(backgroundColor);
    block->setCornerRadius(blockCornerRadius);
    if (width) {
        NSLayoutConstraint::activate({block->widthAnchor().constraintEqualToConstant(*width)});
    }
    NSLayoutConstraint::activate({block->heightAnchor().constraintEqualToConstant(height)});
    shimmerViews.push_back(block);
    return block;
}

void ZorvikShimmerView::createShimmerContent() {
    const auto header = createShimmerView(std::nullopt, headerHeight, colorFromHex(skeletonGrey));
    contentView->addSubview(header);
    NSLayoutConstraint::activate({
        header->topAnchor().constraintEqualTo(contentView->topAnchor()),
        header->leadingAnchor().constraintEqualTo(contentView->leadingAnchor()),
        header->trailingAnchor().constraintEqualTo(contentView->trailingAnchor()),
        header->heightAnchor().constraintEqualToConstant(headerHeight),
    });

    const auto rows = makeView();
    contentView->addSubview(rows);
    NSLayoutConstraint::activate({
        rows->topAnchor().constraintEqualTo(header->bottomAnchor(), gap),
        rows->leadingAnchor().constraintEqualTo(contentView->leadingAnchor(), gap),
        rows->trailingAnchor().constraintEqualTo(contentView->trailingAnchor(), -gap),
        rows->bottomAnchor().constraintEqualTo(contentView->bottomAnchor(), -gap),
    });
    createShimmerItems(rows);
}

void ZorvikShimmerView::createShimmerItems(const std::shared_ptr<UIView>& container) {
    std::shared_ptr<UIView> previous;
    for (std::size_t index = 0; index < subtitleWidths.size(); ++index) {
        const auto row = createShimmerItem(index);
        container->addSubview(row);
        NSLayoutConstraint::activate({
            row->leadingAnchor().constraintEqualTo(container->leadingAnchor()),
            row->trailingAnchor().constraintEqualTo(container->trailingAnchor()),
            row->heightAnchor().constraintEqualToConstant(rowHeight),
            previous ? row->topAnchor().constraintEqualTo(previous->bottomAnchor(), gap)
                     : row->topAnchor().constraintEqualTo(container->topAnchor()),
        });
        previous = row;
    }
    NSLayoutConstraint::activate(
        {previous->bottomAnchor().constraintEqualTo(container->bottomAnchor())});
}

std::shared_ptr<UIView> ZorvikShimmerView::createShimmerItem(std::size_t index) {
    const UIColor grey = colorFromHex(skeletonGrey);
    const double subtitleWidth = subtitleWidths[index % subtitleWidths.size()];

    auto row = makeView();
    const auto icon = createShimmerView(iconSize, iconSize, grey);
    row->addSubview(icon);
    const auto textColumn = makeView();
    row->addSubview(textColumn);
    const auto title = createShimmerView(std::nullopt, titleHeight, grey);
    textColumn->addSubview(title);
    const auto subtitle = createShimmerView(subtitleWidth, subtitleHeight, grey);
    textColumn->addSubview(subtitle);

    // The two bars are taller than their column: the subtitle hangs out below it, unclipped.
    NSLayoutConstraint::activate({
        icon->leadingAnchor().constraintEqualTo(row->leadingAnchor()),
        icon->centerYAnchor().constraintEqualTo(row->centerYAnchor()),
        icon->widthAnchor().constraintEqualToConstant(iconSize),
        icon->heightAnchor().constraintEqualToConstant(iconSize),
        textColumn->leadingAnchor().constraintEqualTo(icon->trailingAnchor(), iconGap),
        textColumn->trailingAnchor().constraintEqualTo(row->trailingAnchor()),
        textColumn->centerYAnchor().constraintEqualTo(row->centerYAnchor()),
        textColumn->heightAnchor().constraintEqualToConstant(textColumnHeight),
        title->topAnchor().constraintEqualTo(textColumn->topAnchor()),
        title->leadingAnchor().constraintEqualTo(textColumn->leadingAnchor()),
        title->trailingAnchor().constraintEqualTo(textColumn->trailingAnchor()),
        title->heightAnchor().constraintEqualToConstant(titleHeight),
        subtitle->topAnchor().constraintEqualTo(title->bottomAnchor(), subtitleGap),
        subtitle->leadingAnchor().constraintEqualTo(textColumn->leadingAnchor()),
        subtitle->widthAnchor().constraintEqualToConstant(subtitleWidth),
        subtitle->heightAnchor().constraintEqualToConstant(subtitleHeight),
    });
    return row;
}

void ZorvikShimmerView::startShimmerAnimation() {
    stopShimmerAnimation();
    animationTimers.resize(shimmerViews.size());
    for (std::size_t block = 0; block < shimmerViews.size(); ++block) {
        startCycleLater(block, static_cast<double>(block) * stagger);
    }
}

void ZorvikShimmerView::startCycleLater(std::size_t block, double seconds) {
    animationTimers[block] = Timer::scheduledTimer(seconds, [self = weakSelf(), block] {
        if (const auto view = self.lock()) view->animateShimmerItem(block);
    });
}

void ZorvikShimmerView::animateShimmerItem(std::size_t block) {
    if (shimmerViews[block]->superview() == nullptr) return;
    fade(block, dimAlpha, [block](ZorvikShimmerView& dimmed) {
        dimmed.fade(block, litAlpha,
                    [block](ZorvikShimmerView& lit) { lit.startCycleLater(block, pauseSeconds); });
    });
}

void ZorvikShimmerView::fade(std::size_t block, double alpha,
                             std::function<void(ZorvikShimmerView&)> next) {
    const auto item = shimmerViews[block];
    // A stop ends the running fade as well; the cycle must not go on from there, though the block
    // stays where it is.
    UIView::animate(
        pulseSeconds, [&] { item->setAlpha(alpha); },
        [self = weakSelf(), run = pulseRun, block, next = std::move(next)](bool /*finished*/) {
            const auto view = self.lock();
            if (!view || view->pulseRun != run) return;
            if (view->shimmerViews[block]->superview() != nullptr) next(*view);
        });
}

void ZorvikShimmerView::stopShimmerAnimation() {
    ++pulseRun;
    for (const auto& timer : animationTimers) {
        timer->invalidate();
    }
    animationTimers.clear();
    for (const auto& block : shimmerViews) {
        block->removeAllAnimations();
        block->setAlpha(1);
    }
}

void ZorvikShimmerView::showShimmer() {
    ++showRun;
    setHidden(false);
    setAlpha(0);
    UIView::animate(
        fadeSeconds, [this] { setAlpha(1); },
        [self = weakSelf(), run = pulseRun, show = showRun](bool /*finished*/) {
            const auto view = self.lock();
            // Hidden or stopped before the fade-in was over: then it stays still.
            if (!view || view->pulseRun != run || view->showRun != show) return;
            view->startShimmerAnimation();
        });
}

void ZorvikShimmerView::hideShimmer(std::function<void()> completion) {
    stopShimmerAnimation();
    UIView::animate(
        fadeSeconds, [this] { setAlpha(0); },
        [self = weakSelf(), show = showRun, completion = std::move(completion)](bool /*finished*/) {
            const auto view = self.lock();
            if (view && view->showRun == show) view->setHidden(true);
            if (completion) completion();
        });
}

std::weak_ptr<ZorvikShimmerView> ZorvikShimmerView::weakSelf() {
    return std::static_pointer_cast<ZorvikShimmerView>(shared_from_this());
}

}  // namespace zorvik
