#include "platform/uikit/UIView.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

#include "platform/headless/HeadlessPlatform.h"
#include "platform/uikit/Layout.h"
#include "platform/uikit/UIButton.h"

namespace zorvik::platform {

using testing::ElementsAre;

class UIViewTest : public testing::Test {
  protected:
    static std::shared_ptr<UIView> make() { return makeOnMainThread<UIView>(); }

    headless::HeadlessPlatform platform;
    std::shared_ptr<UIView> parent = make();
    std::shared_ptr<UIView> view = make();
    std::shared_ptr<UIView> sibling = make();
};

TEST_F(UIViewTest, AnAddedViewIsOnTopAndLeavesWhereItWas) {
    const auto second = make();
    parent->addSubview(view);
    parent->addSubview(sibling);
    NSLayoutConstraint::activate({view->topAnchor().constraintEqualTo(parent->topAnchor())});
    parent->addSubview(parent->subviews().front());
    EXPECT_THAT(parent->subviews(), ElementsAre(sibling, view));
    EXPECT_EQ(parent->constraints().size(), 1u) << "it never left";
    second->addSubview(view);
    EXPECT_THAT(parent->subviews(), ElementsAre(sibling));
    EXPECT_EQ(view->superview(), second.get());
    EXPECT_TRUE(parent->constraints().empty());
}

TEST_F(UIViewTest, ASubviewOutlivesItsSuperviewWithoutOne) {
    parent->addSubview(view);
    parent.reset();
    EXPECT_EQ(view->superview(), nullptr);
    view->removeFromSuperview();
}

TEST_F(UIViewTest, ConstraintsGoToTheNearestCommonAncestorAndLeaveWithTheSubtree) {
    const auto child = make();
    parent->addSubview(view);
    parent->addSubview(sibling);
    view->addSubview(child);
    NSLayoutConstraint::activate({
        child->topAnchor().constraintEqualTo(sibling->topAnchor()),
        child->leadingAnchor().constraintEqualTo(view->leadingAnchor()),
        child->widthAnchor().constraintEqualToConstant(5),
        sibling->topAnchor().constraintEqualTo(parent->topAnchor()),
    });
    EXPECT_EQ(parent->constraints().size(), 2u);
    EXPECT_EQ(view->constraints().size(), 1u);
    EXPECT_EQ(child->constraints().size(), 1u);
    view->removeFromSuperview();
    ASSERT_EQ(parent->constraints().size(), 1u);
    EXPECT_EQ(parent->constraints()[0].firstItem.lock().get(), sibling.get());
    EXPECT_EQ(view->constraints().size(), 1u) << "those inside the subtree stay";
}

class BuiltInItsConstructor : public UIView {
  public:
    BuiltInItsConstructor() {
        inner->setTranslatesAutoresizingMaskIntoConstraints(false);
        addSubview(inner);
        NSLayoutConstraint::activate({inner->topAnchor().constraintEqualTo(topAnchor(), 3)});
    }
    const std::shared_ptr<UIView> inner = makeOnMainThread<UIView>();
};

TEST_F(UIViewTest, AConstructorMayPinSubviewsToTheViewItMakes) {
    const auto built = makeOnMainThread<BuiltInItsConstructor>();
    layoutTree(*built, {100, 100}, {});
    EXPECT_EQ(built->inner->frame().y, 3);
}

struct Target {
    int touches = 0;
    std::shared_ptr<UIButton> button;
    void touched() {
        ++touches;
        button.reset();
    }
};

TEST_F(UIViewTest, AButtonTellsItsTargetAndMayGoMeanwhileButKeepsNoTarget) {
    auto target = std::make_shared<Target>();
    target->button = makeOnMainThread<UIButton>();
    UIButton& button = *target->button;
    button.setTarget(std::weak_ptr(target), &Target::touched);
    button.sendTouchUpInside();
    EXPECT_EQ(target->touches, 1);

    const auto idle = makeOnMainThread<UIButton>();
    idle->sendTouchUpInside();
    idle->setTarget(std::weak_ptr(target), &Target::touched);
    target.reset();
    idle->sendTouchUpInside();
}

}  // namespace zorvik::platform
