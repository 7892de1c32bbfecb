#pragma once

#include <memory>
#include <optional>

#include "platform/desktop/ViewTree.h"
#include "platform/services/Scheduler.h"
#include "platform/uikit/UIViewController.h"

namespace zorvik::platform::desktop {

class DesktopStage;

// The address of a window of the port's toolkit.
using DesktopWindow = void*;

// One controller on screen. It moves with the window's frames only while something moves. Owned by
// the stage; leaves the screen when destroyed. Main thread only.
class DesktopScreen {
  public:
    static constexpr double slideSeconds = 0.35;

    DesktopScreen(const DesktopScreen&) = delete;
    DesktopScreen& operator=(const DesktopScreen&) = delete;
    virtual ~DesktopScreen();

    // nullptr once it is destroyed.
    virtual DesktopWindow window() const = 0;
    // Gives the focus back and takes no more input, on its way out.
    virtual void leave() = 0;

    // What the views show is to be looked at again at the next frame.
    void follow();
    // The same when texts have another size.
    void followTexts();
    // Moves from one share of the height to another.
    void slide(double from, double to);
    void endSlide();
    double offset() const { return offset_; }
    // Replaces the task that waits, if any.
    void runLater(double seconds, Task task);

    const std::shared_ptr<UIViewController> controller;

  protected:
    DesktopScreen(DesktopStage& stage, std::shared_ptr<UIViewController> shown);

    virtual ViewTree& tree() = 0;
    // Whether no other screen above this one takes input.
    virtual bool hasKeyboard() const = 0;
    // Calls `frame` at the window's next frames, until it returns false; nothing when it does
    // already, and nothing for a window that is not on the screen.
    virtual void requestFrames() = 0;
    // A share of the height to be moved down by.
    virtual void setOffset(double offset) = 0;

    // Shows what this moment shows; whether something still moves.
    bool frame();
    void resized(const Size& size);

  private:
    struct Slide {
        double from;
        double to;
        double start;
    };

    void cancelTask();
    void moveTo(double offset);

    DesktopStage& stage_;
    Size size_;
    std::optional<Slide> slide_;
    double offset_ = 0;  // of the height
    std::optional<Scheduler::TaskId> task_;
    bool needsFollowing_ = false;
};

}  // namespace zorvik::platform::desktop
