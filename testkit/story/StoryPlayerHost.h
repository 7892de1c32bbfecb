#pragma once

#include <memory>
#include <utility>

#include "testkit/story/StoryPlayer.h"

namespace zorvik::testkit {

// A host's delegate in a story: tells the player, then the delegate that is tried out, if any.
class StoryPlayer::Host : public ZorvikCheckoutSDKDelegate {
  public:
    Host(StoryPlayer& player, int number, std::shared_ptr<ZorvikCheckoutSDKDelegate> tried)
        : player_(player), number_(number), tried_(std::move(tried)) {}

    int number() const { return number_; }
    void onCheckoutResponse(const platform::Dictionary& data) override {
        StoryPlayer& player = player_;  // the reaction may drop this delegate
        player.hostWasGiven(number_, data);
        if (tried_) tried_->onCheckoutResponse(data);
        player.react();
    }

  private:
    StoryPlayer& player_;
    const int number_;
    const std::shared_ptr<ZorvikCheckoutSDKDelegate> tried_;
};

}  // namespace zorvik::testkit
