#include "platform/uikit/Layout.h"

#include <gtest/gtest.h>

#include "platform/headless/HeadlessPlatform.h"
#include "platform/uikit/UILabel.h"
#include "platform/uikit/UIScrollView.h"

namespace zorvik::platform {

class LayoutTest : public testing::Test {
  protected:
    template <class View = UIView>
    std::shared_ptr<View> add(const std::shared_ptr<UIView>& parent) {
        const auto view = makeOnMainThread<View>();
        view->setTranslatesAutoresizingMaskIntoConstraints(false);
        parent->addSubview(view);
        return view;
    }
    static void pinEdges(UIView& view, UIView& to, double inset = 0) {
        NSLayoutConstraint::activate({
            view.topAnchor().constraintEqualTo(to.topAnchor(), inset),
            view.leadingAnchor().constraintEqualTo(to.leadingAnchor(), inset),
            view.trailingAnchor().constraintEqualTo(to.trailingAnchor(), -inset),
            view.bottomAnchor().constraintEqualTo(to.bottomAnchor(), -inset),
        });
    }
    void layout() { layoutTree(*root, {390, 844}, {47, 0, 34, 0}); }

    headless::HeadlessPlatform platform;
    const std::shared_ptr<UIView> root = makeOnMainThread<UIView>();
};

// 17-point text is 8.5 wide a character and 20.4 high a line on the headless stage.
TEST_F(LayoutTest, AMultiLineLabelIsAsHighAsItsTextAtTheSolvedWidth) {
    const auto label = add<UILabel>(root);
    label->setNumberOfLines(0);
    label->setText(
        "Network connection issue. Please check your internet connection and try again later.");
    NSLayoutConstraint::activate({
        label->topAnchor().constraintEqualTo(root->safeAreaLayoutGuide().topAnchor),
        label->leadingAnchor().constraintEqualTo(root->leadingAnchor(), 24),
        label->trailingAnchor().constraintEqualTo(root->trailingAnchor(), -24),
    });
    layout();
    EXPECT_DOUBLE_EQ(label->frame().height, 3 * 20.4) << "40 characters a line";
}

TEST_F(LayoutTest, OfContradictingConstraintsTheFirstActivatedHoldsUntilItsViewGoes) {
    const auto sibling = add(root);
    const auto outer = add(root);
    const auto inner = add(outer);
    // The second is held by a view further out, which must not make it the stronger one.
    NSLayoutConstraint::activate({inner->widthAnchor().constraintEqualToConstant(10)});
    NSLayoutConstraint::activate(
        {inner->widthAnchor().constraintEqualTo(root->widthAnchor()),
         sibling->leadingAnchor().constraintEqualTo(root->leadingAnchor()),
         inner->leadingAnchor().constraintEqualTo(sibling->leadingAnchor(), 5),
         inner->leadingAnchor().constraintEqualTo(sibling->leadingAnchor(), 5),
         inner->leadingAnchor().constraintEqualTo(sibling->leadingAnchor(), 6)});
    layout();
    EXPECT_EQ(inner->frame(), (Rect{5, 0, 10, 0}));
    outer->removeFromSuperview();
    EXPECT_EQ(root->constraints().size(), 1u) << "the sibling's own";
    EXPECT_EQ(inner->constraints().size(), 1u) << "those inside the subtree stay";
}

TEST_F(LayoutTest, TheContentOfAScrollViewHasItsOwnSizeAndCoordinates) {
    const auto scroll = add<UIScrollView>(root);
    const auto content = add(scroll);
    pinEdges(*scroll, *root, 10);
    pinEdges(*content, *scroll);
    NSLayoutConstraint::activate({content->widthAnchor().constraintEqualTo(scroll->widthAnchor())});
    std::shared_ptr<UIView> above;
    for (int index = 0; index < 200; ++index) {
        const auto row = add(content);
        NSLayoutConstraint::activate({row->topAnchor().constraintEqualTo(
                                          above ? above->bottomAnchor() : content->topAnchor(), 16),
                                      row->heightAnchor().constraintEqualToConstant(20)});
        above = row;
    }
    NSLayoutConstraint::activate(
        {above->bottomAnchor().constraintEqualTo(content->bottomAnchor())});
    layout();
    EXPECT_EQ(scroll->contentSize(), (Size{370, 200 * 36}));
    EXPECT_EQ(above->frame(), (Rect{0, 199 * 36 + 16, 0, 20}));
}

}  // namespace zorvik::platform
