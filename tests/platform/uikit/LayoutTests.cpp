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
    const std::tuple<UIView*, UIView*, double> pinned[] = {{scroll.get(), root.get(), 10},
                                                           {content.get(), scroll.get(), 0}};
    for (const auto& [view, to, inset] : pinned)
        NSLayoutConstraint::activate(
            {view->topAnchor().constraintEqualTo(to->topAnchor(), inset),
             view->leadingAnchor().constraintEqualTo(to->leadingAnchor(), inset),
             view->trailingAnchor().constraintEqualTo(to->trailingAnchor(), -inset),
             view->bottomAnchor().constraintEqualTo(to->bottomAnchor(), -inset)});
    NSLayoutConstraint::activate({content->widthAnchor().constraintEqualTo(scroll->widthAnchor()),
                                  content->heightAnchor().constraintEqualToConstant(7200)});
    layout();
    EXPECT_EQ(scroll->contentSize(), (Size{370, 7200}));
    EXPECT_EQ(content->frame(), (Rect{0, 0, 370, 7200}));
}

}  // namespace zorvik::platform
