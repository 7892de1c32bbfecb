#include "platform/uikit/Layout.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "platform/headless/HeadlessPlatform.h"
#include "platform/uikit/UIActivityIndicatorView.h"
#include "platform/uikit/UIButton.h"
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

TEST_F(LayoutTest, EdgesAndTheSafeAreaOfTheRootHold) {
    const auto page = add(root);
    const auto nested = add(page);
    const auto guide = root->safeAreaLayoutGuide();
    NSLayoutConstraint::activate({
        page->topAnchor().constraintEqualTo(guide.topAnchor),
        page->bottomAnchor().constraintEqualTo(guide.bottomAnchor, -10),
        page->leadingAnchor().constraintEqualTo(root->leadingAnchor(), 16),
        page->trailingAnchor().constraintEqualTo(root->trailingAnchor(), -16),
        nested->topAnchor().constraintEqualTo(page->safeAreaLayoutGuide().topAnchor),
        nested->centerXAnchor().constraintEqualTo(root->centerXAnchor()),
        nested->widthAnchor().constraintEqualToConstant(58),
        nested->heightAnchor().constraintEqualTo(page->heightAnchor(), -53),
    });
    layout();
    EXPECT_EQ(root->frame(), (Rect{0, 0, 390, 844}));
    EXPECT_EQ(page->frame(), (Rect{16, 47, 358, 753}));
    EXPECT_EQ(nested->frame(), (Rect{150, 0, 58, 700}));
}

// 17-point text is 8.5 wide a character and 20.4 high a line on the headless stage.
TEST_F(LayoutTest, AMultiLineLabelIsAsHighAsItsTextAtTheSolvedWidth) {
    const auto panel = add(root);
    const auto label = add<UILabel>(panel);
    const auto button = add<UIButton>(panel);
    label->setNumberOfLines(0);
    label->setText(
        "Network connection issue. Please check your internet connection and try again later.");
    button->setTitle("Retry");
    pinEdges(*panel, *root);
    NSLayoutConstraint::activate({
        label->centerXAnchor().constraintEqualTo(panel->centerXAnchor()),
        label->centerYAnchor().constraintEqualTo(panel->centerYAnchor(), -20),
        label->leadingAnchor().constraintEqualTo(panel->leadingAnchor(), 24),
        label->trailingAnchor().constraintEqualTo(panel->trailingAnchor(), -24),
        button->topAnchor().constraintEqualTo(label->bottomAnchor(), 16),
        button->centerXAnchor().constraintEqualTo(panel->centerXAnchor()),
    });
    layout();
    EXPECT_DOUBLE_EQ(label->frame().width, 342);
    EXPECT_DOUBLE_EQ(label->frame().height, 3 * 20.4) << "40 characters a line";
    EXPECT_DOUBLE_EQ(label->frame().y + label->frame().height / 2, 402);
    EXPECT_DOUBLE_EQ(button->frame().y, label->frame().y + label->frame().height + 16);
    EXPECT_DOUBLE_EQ(button->frame().width, 5 * 8.5);
    EXPECT_DOUBLE_EQ(button->frame().x + button->frame().width / 2, 195);
    label->setNumberOfLines(2);
    layout();
    EXPECT_DOUBLE_EQ(label->frame().height, 2 * 20.4);
}

TEST_F(LayoutTest, WhatIsLeftOpenFallsBackToTheIntrinsicSizeThenToZero) {
    const auto wheel = add<UIActivityIndicatorView>(root);
    const auto plain = add(root);
    NSLayoutConstraint::activate({
        wheel->centerXAnchor().constraintEqualTo(root->centerXAnchor()),
        wheel->centerYAnchor().constraintEqualTo(root->centerYAnchor()),
        plain->trailingAnchor().constraintEqualTo(root->trailingAnchor(), -8),
    });
    layout();
    EXPECT_EQ(wheel->frame(), (Rect{185, 412, 20, 20}));
    EXPECT_EQ(plain->frame(), (Rect{382, 0, 0, 0}));
}

TEST_F(LayoutTest, OfContradictingConstraintsTheFirstActivatedHolds) {
    const auto outer = add(root);
    const auto inner = add(outer);
    // The second is held by a view further out, which must not make it the stronger one.
    NSLayoutConstraint::activate({inner->widthAnchor().constraintEqualToConstant(10)});
    NSLayoutConstraint::activate(
        {inner->widthAnchor().constraintEqualTo(root->widthAnchor()),
         inner->leadingAnchor().constraintEqualTo(root->leadingAnchor(), 5),
         inner->leadingAnchor().constraintEqualTo(root->leadingAnchor(), 6)});
    layout();
    EXPECT_EQ(inner->frame(), (Rect{5, 0, 10, 0}));
}

TEST_F(LayoutTest, AViewThatTranslatesItsMaskKeepsItsFrame) {
    const auto fixed = makeOnMainThread<UIView>(Rect{3, 4, 50, 60});
    root->addSubview(fixed);
    const auto beside = add(root);
    NSLayoutConstraint::activate(
        {beside->leadingAnchor().constraintEqualTo(fixed->trailingAnchor(), 7)});
    layout();
    EXPECT_EQ(fixed->frame(), (Rect{3, 4, 50, 60}));
    EXPECT_DOUBLE_EQ(beside->frame().x, 60);
}

TEST_F(LayoutTest, ASizeIsNeverNegative) {
    const auto view = add(root);
    pinEdges(*view, *root, 500);
    layout();
    EXPECT_EQ(view->frame().width, 0);
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
        const auto line = add(row);
        NSLayoutConstraint::activate({
            row->topAnchor().constraintEqualTo(above ? above->bottomAnchor() : content->topAnchor(),
                                               16),
            row->leadingAnchor().constraintEqualTo(content->leadingAnchor(), 5),
            line->centerYAnchor().constraintEqualTo(row->centerYAnchor()),
            line->heightAnchor().constraintEqualToConstant(28),
        });
        // Known only after the rows below were placed.
        if (above) {
            NSLayoutConstraint::activate(
                {row->heightAnchor().constraintEqualTo(above->heightAnchor())});
        }
        above = row;
    }
    NSLayoutConstraint::activate({above->bottomAnchor().constraintEqualTo(content->bottomAnchor()),
                                  above->heightAnchor().constraintEqualToConstant(20)});
    layout();
    EXPECT_EQ(scroll->frame(), (Rect{10, 10, 370, 824}));
    EXPECT_EQ(scroll->contentSize(), (Size{370, 200 * 36}));
    EXPECT_EQ(content->frame(), (Rect{0, 0, 370, 200 * 36}));
    EXPECT_EQ(above->frame(), (Rect{5, 199 * 36 + 16, 0, 20}));
    EXPECT_EQ(above->subviews()[0]->frame(), (Rect{0, -4, 0, 28})) << "higher than its row";
}

}  // namespace zorvik::platform
