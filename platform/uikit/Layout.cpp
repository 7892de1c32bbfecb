#include "platform/uikit/Layout.h"

#include <algorithm>
#include <cmath>
#include <unordered_map>
#include <vector>

#include "platform/runtime/MainThread.h"
#include "platform/uikit/LinearSystem.h"
#include "platform/uikit/UIScrollView.h"

namespace zorvik::platform {

namespace {

enum class Axis { horizontal, vertical };

// Along one axis an attribute is a place in a span: start + share * length, or the length alone.
struct Place {
    Axis axis;
    bool isLength;
    double share;
};

Place placeOf(LayoutAttribute attribute) {
    switch (attribute) {
        case LayoutAttribute::left:
            return {Axis::horizontal, false, 0};
        case LayoutAttribute::right:
            return {Axis::horizontal, false, 1};
        case LayoutAttribute::centerX:
            return {Axis::horizontal, false, 0.5};
        case LayoutAttribute::width:
            return {Axis::horizontal, true, 1};
        case LayoutAttribute::top:
            return {Axis::vertical, false, 0};
        case LayoutAttribute::bottom:
            return {Axis::vertical, false, 1};
        case LayoutAttribute::centerY:
            return {Axis::vertical, false, 0.5};
        case LayoutAttribute::height:
            return {Axis::vertical, true, 1};
    }
    return {Axis::horizontal, false, 0};
}

struct Node {
    UIView* view;
    UIScrollView* scroll;  // the same view when it scrolls, else nullptr
    std::size_t parent;
};

struct Span {
    double start = 0;
    double length = 0;
    double contentLength = 0;  // of a scroll view
};

// To a millionth of a point: what the arithmetic adds is far below.
double withoutNoise(double value) {
    return std::round(value * 1e6) / 1e6;
}

class Solver {
  public:
    Solver(UIView& root, const Size& size, const UIEdgeInsets& safeArea)
        : size_(size), safeArea_(safeArea) {
        collect(root, 0);
        std::sort(constraints_.begin(), constraints_.end(), [](const auto* a, const auto* b) {
            return a->activationOrder < b->activationOrder;
        });
    }

    void run() {
        horizontal_ = solve(Axis::horizontal);
        vertical_ = solve(Axis::vertical);
        for (std::size_t index = 0; index < nodes_.size(); ++index)
            place(index);
    }

  private:
    // Each view has three variables an axis. A content begins where its scroll view begins, as if
    // it were never scrolled; the frames of what is in it come out relative to it.
    static std::size_t start(std::size_t index) { return 3 * index; }
    static std::size_t length(std::size_t index) { return 3 * index + 1; }
    static std::size_t contentLength(std::size_t index) { return 3 * index + 2; }

    void collect(UIView& view, std::size_t parent) {
        const std::size_t index = nodes_.size();
        nodes_.push_back({&view, dynamic_cast<UIScrollView*>(&view), parent});
        indexOf_[&view] = index;
        for (const auto& constraint : view.constraints())
            constraints_.push_back(&constraint);
        for (const auto& subview : view.subviews())
            collect(*subview, index);
    }

    bool isBelow(std::size_t index, std::size_t ancestor) const {
        while (index > ancestor)
            index = nodes_[index].parent;
        return index == ancestor;
    }

    std::vector<Span> solve(Axis axis) const {
        const bool isHorizontal = axis == Axis::horizontal;
        LinearSystem system(3 * nodes_.size());
        system.add({{start(0), 1}}, 0);
        system.add({{length(0), 1}}, isHorizontal ? size_.width : size_.height);
        for (std::size_t index = 1; index < nodes_.size(); ++index) {
            if (!nodes_[index].view->translatesAutoresizingMaskIntoConstraints()) continue;
            const Rect& frame = nodes_[index].view->frame();
            system.add({{start(index), 1}, {start(nodes_[index].parent), -1}},
                       isHorizontal ? frame.x : frame.y);
            system.add({{length(index), 1}}, isHorizontal ? frame.width : frame.height);
        }
        for (const NSLayoutConstraint* constraint : constraints_) {
            if (placeOf(constraint->firstAttribute).axis == axis) add(*constraint, system);
        }
        for (std::size_t index = 1; index < nodes_.size(); ++index) {
            const double width = isHorizontal ? 0 : horizontal_[index].length;
            const auto size = nodes_[index].view->intrinsicContentSize(std::max(width, 0.0));
            if (size) system.addDefault(length(index), isHorizontal ? size->width : size->height);
        }
        for (std::size_t index = 1; index < nodes_.size(); ++index) {
            system.addDefault(length(index), 0);
            if (nodes_[index].scroll) system.addDefault(contentLength(index), 0);
        }
        for (std::size_t index = 1; index < nodes_.size(); ++index) {
            // Parents come first, so theirs is settled.
            system.addDefault(start(index), system.value(start(nodes_[index].parent)));
        }
        std::vector<Span> spans(nodes_.size());
        for (std::size_t index = 0; index < nodes_.size(); ++index) {
            spans[index] = {withoutNoise(system.value(start(index))),
                            withoutNoise(system.value(length(index))),
                            withoutNoise(system.value(contentLength(index)))};
        }
        return spans;
    }

    void add(const NSLayoutConstraint& constraint, LinearSystem& system) const {
        const auto first = indexOf(constraint.firstItem);
        const auto second = constraint.hasSecondItem ? indexOf(constraint.secondItem) : first;
        if (first == nodes_.size() || second == nodes_.size()) return;
        std::vector<LinearSystem::Term> terms;
        double constant = constraint.constant;
        constant -= addPlace(terms, 1, first, second, constraint.firstAttribute,
                             constraint.firstIsSafeArea);
        if (constraint.hasSecondItem) {
            if (placeOf(constraint.secondAttribute).axis !=
                placeOf(constraint.firstAttribute).axis) {
                return;
            }
            constant -= addPlace(terms, -1, second, first, constraint.secondAttribute,
                                 constraint.secondIsSafeArea);
        }
        system.add(terms, constant);
    }

    std::size_t indexOf(const std::weak_ptr<UIView>& item) const {
        const auto found = indexOf_.find(item.lock().get());
        return found == indexOf_.end() ? nodes_.size() : found->second;
    }

    // Adds a view's attribute to the left side of an equation with `other` and returns the part of
    // it that is constant.
    double addPlace(std::vector<LinearSystem::Term>& terms, double sign, std::size_t index,
                    std::size_t other, LayoutAttribute attribute, bool isSafeArea) const {
        const Place place = placeOf(attribute);
        const bool isEdge = !place.isLength && place.share != 0.5;
        const bool isContent =
            nodes_[index].scroll && isEdge && other != index && isBelow(other, index);
        if (!place.isLength) terms.push_back({start(index), sign});
        if (place.share != 0) {
            terms.push_back({isContent ? contentLength(index) : length(index), sign * place.share});
        }
        if (!isSafeArea || index != 0) return 0;
        const bool isHorizontal = place.axis == Axis::horizontal;
        const double before = isHorizontal ? safeArea_.left : safeArea_.top;
        const double after = isHorizontal ? safeArea_.right : safeArea_.bottom;
        return sign * ((place.isLength ? 0 : before) - place.share * (before + after));
    }

    void place(std::size_t index) const {
        const Span& x = horizontal_[index];
        const Span& y = vertical_[index];
        const std::size_t parent = nodes_[index].parent;
        const bool isRoot = index == 0;
        nodes_[index].view->setFrame({isRoot ? 0 : x.start - horizontal_[parent].start,
                                      isRoot ? 0 : y.start - vertical_[parent].start,
                                      std::max(x.length, 0.0), std::max(y.length, 0.0)});
        if (nodes_[index].scroll) {
            nodes_[index].scroll->setContentSize(
                {std::max(x.contentLength, 0.0), std::max(y.contentLength, 0.0)});
        }
    }

    const Size size_;
    const UIEdgeInsets safeArea_;
    std::vector<Node> nodes_;  // a view before those inside it
    std::unordered_map<const UIView*, std::size_t> indexOf_;
    std::vector<const NSLayoutConstraint*> constraints_;
    std::vector<Span> horizontal_;
    std::vector<Span> vertical_;
};

}  // namespace

void layoutTree(UIView& root, const Size& size, const UIEdgeInsets& safeArea) {
    assertMainThread();
    Solver(root, size, safeArea).run();
}

}  // namespace zorvik::platform
