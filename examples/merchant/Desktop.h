#pragma once

#include <functional>
#include <memory>
#include <string>

#include "examples/merchant/Shop.h"
#include "platform/foundation/Value.h"
#include "platform/uikit/UIViewController.h"

namespace zorvik::demo {

// What differs from desktop to desktop: the component's port, the shop's window, and how its
// buttons are pressed. gtk/GtkDesktop.cpp and qt/QtDesktop.cpp implement it, one of them in each
// program. Owned by the program's main function; main thread only.
class Desktop {
  public:
    // What the customer does in the window. Each is called from the main loop.
    struct Events {
        std::function<void()> pay;
        std::function<void()> back;  // Escape, the back key, the title bar's back button
        std::function<bool()> isCheckoutOpen;
    };

    // nullptr without a display.
    static std::unique_ptr<Desktop> open();
    virtual ~Desktop() = default;

    // Shows the basket in the window from now on. The customer who closes the window while a
    // checkout is open is asked once.
    virtual void start(Events events) = 0;
    virtual std::shared_ptr<platform::UIViewController> presenter() = 0;
    // False once the window was closed.
    virtual bool isOpen() const = 0;
    virtual bool runUntil(const std::function<bool()>& condition, double seconds) = 0;

    // `problem` is what the customer should know, if anything.
    virtual void showBasket(const std::string& problem) = 0;
    virtual void showBusy() = 0;  // in the basket: the order is being prepared
    virtual void showResult(const platform::Dictionary& data) = 0;

    // False when the window shows nothing yet.
    virtual bool savePng(const std::string& path) = 0;
    // A button of the checkout screen that can be pressed, by its title; presses it as well.
    virtual bool hasButton(const std::string& title) const = 0;
    virtual bool press(const std::string& title) = 0;
};

}  // namespace zorvik::demo
