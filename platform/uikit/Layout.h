#pragma once

#include "platform/foundation/Export.h"
#include "platform/uikit/UIView.h"

namespace zorvik::platform {

// Lays out a tree: gives every view below `root` the frame its constraints ask for, `root` filling
// `size` with the safe area inset by `safeArea`, and every scroll view its content size. Text is
// measured by the installed stage. Where constraints leave something open, the intrinsic size
// holds, else zero, and the superview's origin; where they contradict, those activated first hold.
ZORVIK_API void layoutTree(UIView& root, const Size& size, const UIEdgeInsets& safeArea);

}  // namespace zorvik::platform
