#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "platform/foundation/Export.h"
#include "platform/runtime/Timer.h"
#include "platform/uikit/UIScrollView.h"
#include "platform/uikit/UIView.h"

namespace zorvik {

// The placeholder shown while a page loads: grey blocks in the shape of a list page (a header and
// fifteen rows), pulsing one after another. Knows nothing of the checkout. Owned by whoever shows
// it; main thread. Once stopped, hidden or released nothing of it runs on.
class ZORVIK_API ZorvikShimmerView : public platform::UIView {
  public:
    static std::shared_ptr<ZorvikShimmerView> initWithFrame(const platform::Rect& frame = {});
    ~ZorvikShimmerView() override;

    // Makes the view visible, fades it in over 0.3 seconds and then starts the pulse.
    void showShimmer();
    // Stops the pulse, fades the view out over 0.3 seconds, hides it and calls the completion.
    void hideShimmer(std::function<void()> completion = {});
    // Starts the pulse of all blocks anew, 0.1 seconds from one block to the next.
    void startShimmerAnimation();
    // Ends the pulse: pending starts, running fades and pauses go, every block is opaque again. A
    // fade-in that is still running starts no pulse any more.
    void stopShimmerAnimation();

  private:
    template <class T, class... Arguments>
    friend std::shared_ptr<T> platform::makeOnMainThread(Arguments&&...);

    explicit ZorvikShimmerView(const platform::Rect& frame);

    void setupShimmerView();
    void createShimmerContent();
    void createShimmerItems(const std::shared_ptr<platform::UIView>& container);
    std::shared_ptr<platform::UIView> createShimmerItem(std::size_t index);
    std::shared_ptr<platform::UIView> createShimmerView(std::optional<double> width, double height,
                                                        const platform::UIColor& backgroundColor);
    void startCycleLater(std::size_t block, double seconds);
    void animateShimmerItem(std::size_t block);
    // Animates a block's opacity; `next` follows unless the pulse was stopped meanwhile.
    void fade(std::size_t block, double alpha, std::function<void(ZorvikShimmerView&)> next);
    std::weak_ptr<ZorvikShimmerView> weakSelf();

    const std::shared_ptr<platform::UIScrollView> scrollView;
    const std::shared_ptr<platform::UIView> contentView;
    std::vector<std::shared_ptr<platform::UIView>> shimmerViews;
    // One for each block while the pulse runs: what starts the block's next cycle.
    std::vector<std::shared_ptr<platform::Timer>> animationTimers;
    // Counts the stops, so that an animation which ends after one starts nothing new.
    std::uint64_t pulseRun = 0;
    // Counts the shows, so that a fade which a newer one replaced changes nothing any more.
    std::uint64_t showRun = 0;
};

}  // namespace zorvik
