#include "testkit/story/StoryPlayerHost.h"

#include <algorithm>

#include "platform/foundation/Data.h"
#include "testkit/story/VisibleButton.h"

namespace zorvik::testkit {

using platform::UIViewController;

namespace {

constexpr auto backLine = "[BACK HANDLER] 📱 Handling device back pressed";

}  // namespace

ZorvikCheckoutSDK& StoryPlayer::sdk() {
    if (!isUsed_) story_.firstUses += platform_ ? 1 : 0;
    isUsed_ = true;
    return ZorvikCheckoutSDK::shared();
}

bool StoryPlayer::isAlive(int host) const {
    return std::ranges::any_of(hosts_, [&](const auto& one) { return one->number() == host; });
}

std::shared_ptr<ZorvikCheckoutWebView> StoryPlayer::youngestScreen() const {
    if (!platform_ || platform_->stage().shown().empty()) return nullptr;
    return std::dynamic_pointer_cast<Screen>(platform_->stage().shown().back());
}

void StoryPlayer::startCheckout(unsigned way) {
    for (StoryCheckout& former : story_.checkouts)
        former.isBridgeAlive = false;
    StoryCheckout checkout;
    const std::string number = std::to_string(story_.checkouts.size() + 1);
    ZorvikCheckoutOptions options;
    checkout.token = "unreadable-" + number + "-token";
    if (way == 1) {
        checkout.token = "none-" + number;
        checkout.hasToken = false;
    } else if (way != 2) {
        checkout.orderId = "order-" + number;
        checkout.subMerchantId = "merchant-" + number;
        std::string claims = R"({"order_id":")" + checkout.orderId + R"(","sub_merchant_id":")" +
                             checkout.subMerchantId + "\"}";
        claims.resize((claims.size() + 2) / 3 * 3, ' ');
        checkout.token = "header." + platform::base64Encode(claims) + ".signature-" + number;
    }
    if (checkout.hasToken) options.orderToken = checkout.token;
    checkout.host = currentHost_;
    checkout.isHostAlive = isAlive(currentHost_);
    story_.checkouts.push_back(checkout);
    request("CHECKOUT_INITIATED " + (checkout.hasToken ? checkout.token : std::string("none")),
            story_.checkouts.size() - 1, StoryRequest::Excuse::none, true);
    if (!checkout.hasToken)
        request("EXCEPTION_THROWN none", story_.checkouts.size() - 1, StoryRequest::Excuse::none,
                true);
    sdk().checkout(presenters_.at(way == 3 ? 1 : 0), options);
}

void StoryPlayer::changeDelegate(unsigned way) {
    switch (way) {
        case 0:
            hosts_.push_back(std::make_shared<Host>(*this, ++lastHost_,
                                                    makeDelegate_ ? makeDelegate_() : nullptr));
            currentHost_ = lastHost_;
            return sdk().setDelegate(hosts_.back());
        case 1:
            currentHost_ = 0;
            return sdk().setDelegate(nullptr);
        default:
            std::erase_if(hosts_,
                          [this](const auto& one) { return one->number() == currentHost_; });
    }
}

void StoryPlayer::pressBack(unsigned way) {
    const auto screen = youngestScreen();
    if (way == 0) {
        ++story_.deviceBacks;
        if (facadesScreen_) request(backLine, *facadesScreen_, StoryRequest::Excuse::screenGone);
        return sdk().handleDeviceBackButtonPress();
    }
    if (!screen) return;
    request(backLine, checkoutOf(screen->options().orderToken.value_or("")),
            StoryRequest::Excuse::screenGone);
    if (way == 1) {
        screen->backButtonTapped();
    } else {
        screen->swipeBackDetected();
    }
}

void StoryPlayer::dismiss(bool animated) {
    for (const auto& presenter : presenters_)
        presenter->dismiss(animated);
}

void StoryPlayer::closeWindow(unsigned way) {
    auto& presenter = presenters_.front();
    if (way == 0) {
        presenter->dismiss(false);
        presenter->setShownByStage(false);
    }
    presenter = platform::makeOnMainThread<UIViewController>();
    presenter->setShownByStage(true);
}

void StoryPlayer::doAsHost(unsigned way) {
    switch (way) {
        case 0:
            if (const auto screen = youngestScreen()) heldScreen_ = screen;
            return;
        case 1:
            return heldScreen_.reset();
        case 2:
            if (const auto screen = youngestScreen())
                screen->present(platform::makeOnMainThread<UIViewController>(), false);
            return;
        case 3:
            return reset();
        default:
            if (!platform_) return;
            ++story_.initialisations;
            return sdk().initialize(number_ % 2 == 0 ? "app" : "");
    }
}

void StoryPlayer::reset() {
    ZorvikCheckoutSDK::reset();
    isUsed_ = false;
    currentHost_ = 0;
    facadesScreen_.reset();
    for (StoryCheckout& checkout : story_.checkouts) {
        checkout.isBridgeAlive = false;
        checkout.isOver = true;
    }
}

void StoryPlayer::pressRetry() {
    const auto screen = youngestScreen();
    const auto button = screen ? visibleButton(*screen->view()) : nullptr;
    if (!button) return;
    const StoryCheckout& checkout =
        story_.checkouts[checkoutOf(screen->options().orderToken.value_or(""))];
    Page* loading = nullptr;
    for (Page* const shown : platform_->web().pages()) {
        if (!shown->requests().empty() && shown->requests().front().url.absoluteString().find(
                                              checkout.token) != std::string::npos) {
            loading = shown;
        }
    }
    const std::size_t before = loading != nullptr ? loading->requests().size() : 0;
    button->sendTouchUpInside();
    if (visibleButton(*screen->view())) story_.unexplained.push_back("Retry stays on the screen");
    if (checkout.stands() && (loading == nullptr || loading->requests().size() != before + 1))
        story_.unexplained.push_back("Retry did not load the page once");
}

void StoryPlayer::customerComesBack() {
    for (std::size_t place = 0; place < story_.checkouts.size(); ++place) {
        if (story_.checkouts[place].stands())
            request("[APP STATE] 🚀 App became active - user returned from UPI app!", place);
    }
    platform_->application().becomeActive();
}

void StoryPlayer::react() {
    switch (reaction_) {
        case 1:
            // Once, or two checkouts without an answer would start each other for ever.
            reaction_ = 0;
            return startCheckout(0);
        case 2:
            return dismiss(false);
        case 3:
            return changeDelegate(2);
        case 4:
            return reset();
        default:
            return;
    }
}

}  // namespace zorvik::testkit
