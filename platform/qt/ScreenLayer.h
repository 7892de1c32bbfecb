#pragma once

#include <QBasicTimer>
#include <QPointer>
#include <QWidget>
#include <functional>

#include "platform/foundation/Geometry.h"

namespace zorvik::platform::qt {

// Fills a window over what it shows, whatever the host shows there later, and takes all input. What
// is in it moves down by a share of its height. Owned by its screen.
class ScreenLayer : public QWidget {
  public:
    // What the screen does with it.
    struct Screen {
        virtual void layerResized(const Size& size) = 0;
        // Shows what this moment shows; whether something still moves.
        virtual bool layerFrame() = 0;
        virtual void layerFontChanged() = 0;

      protected:
        ~Screen() = default;
    };

    ScreenLayer(QWidget& window, Screen& screen);
    ~ScreenLayer() override;

    // Comes onto the window, above the other screens there, and takes the focus.
    void appear();
    // Where the views' widgets are.
    QWidget& content() { return *content_; }
    void setOffset(double shareOfHeight);
    void requestFrames();
    // Gives the focus back and lets what is beneath have the keyboard, while it goes its way.
    void leave();
    // Whether no other screen above this one takes input.
    bool hasKeyboard() const;

  protected:
    bool eventFilter(QObject* target, QEvent* event) override;
    void timerEvent(QTimerEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void changeEvent(QEvent* event) override;
    bool focusNextPrevChild(bool next) override;

  private:
    void fillWindow();
    void place();
    void putBeneath(QObject* child);
    void keepFocus(QWidget* focus);

    Screen& screen_;
    QPointer<QWidget> window_;
    QPointer<QWidget> formerFocus_;
    QWidget* const content_;
    QBasicTimer frames_;
    double offset_ = 0;
    bool isLeaving_ = false;
};

}  // namespace zorvik::platform::qt
