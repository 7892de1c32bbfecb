// Screens in a main window of a host's own.
#include <QBoxLayout>
#include <QLineEdit>
#include <QMainWindow>
#include <QPushButton>

#include "platform/uikit/UIButton.h"
#include "platform/webkit/WKWebView.h"
#include "tests/platform/desktop/DesktopPortTest.h"

namespace zorvik::tests {
namespace {

struct TapCounter {
    int taps = 0;
    void tapped() { ++taps; }
};

class HostWindowTest : public DesktopPortTest {
  protected:
    HostWindowTest() {
        platform->closeWindow(window);
        auto* const content = new QWidget;
        auto* const column = new QVBoxLayout(content);
        for (QWidget* const widget : {static_cast<QWidget*>(name), static_cast<QWidget*>(pay)})
            column->addWidget(widget);
        pay->setShortcut(Qt::Key_F8);
        host.setCentralWidget(content);
        host.resize(600, 800);
        host.show();
        host.activateWindow();
        QObject::connect(pay, &QPushButton::clicked, [this] { ++payments; });
        screen->view()->setBackgroundColor({0, 1, 0, 1});
        for (const double y : {100.0, 200.0}) {
            auto button = makeOnMainThread<UIButton>(Rect{100, y, 100, 40});
            button->setTitle("Retry");
            button->setTarget(std::weak_ptr(counter), &TapCounter::tapped);
            screen->view()->addSubview(button);
        }
    }

    void present() {
        bool isShown = false;
        platform->presenterFor(name)->present(screen, false, [&] { isShown = true; });
        ASSERT_TRUE(waitUntil([&] { return isShown; }));
        settle();
    }
    Pixel pixel(int x, int y) {
        const std::string path = std::string(std::getenv("XDG_CACHE_HOME")) + "/host.png";
        EXPECT_TRUE(platform->savePng(&host, path));
        return Picture(path).at(x, y);
    }
    Pixel lastPixel() { return pixel(host.width() - 1, host.height() - 1); }

    QMainWindow host;
    QLineEdit* const name = new QLineEdit;
    QPushButton* const pay = new QPushButton("Pay");
    int payments = 0;
    const std::shared_ptr<TapCounter> counter = std::make_shared<TapCounter>();
    const Pixel green{0, 255, 0};
};

TEST_F(HostWindowTest, TheKeyboardStaysInTheScreenAndGoesBackToWhereItWas) {
    ASSERT_TRUE(waitUntil([&] { return host.isActiveWindow(); }));
    const auto page = makeOnMainThread<WKWebView>(Rect{0, 300, 99, 99}, WKWebViewConfiguration{});
    page->setHidden(true);
    screen->view()->addSubview(page);
    name->setFocus();
    present();
    EXPECT_FALSE(name->hasFocus());
    for (int round = 0; round < 5; ++round)
        xdotool("key Tab key Return");
    EXPECT_EQ(counter->taps, 5);
    xdotool("key F8 key x");
    name->setFocus();
    xdotool("key y");
    EXPECT_EQ(payments, 0);
    EXPECT_EQ(name->text().toStdString(), "");
    dismiss(screen);
    xdotool("key z key F8");
    EXPECT_EQ(name->text().toStdString(), "z");
    EXPECT_EQ(payments, 1);
}

TEST_F(HostWindowTest, WhateverTheHostDoesWithItsWindowTheScreenFillsIt) {
    present();
    host.resize(500, 300);
    settle();
    EXPECT_EQ(lastPixel(), green);
    auto* const other = new QWidget;
    other->setStyleSheet("background: red");
    host.setCentralWidget(other);
    settle();
    EXPECT_EQ(lastPixel(), green);
    dismiss(screen);
    settle();
    EXPECT_EQ(lastPixel(), (Pixel{255, 0, 0}));
}

}  // namespace
}  // namespace zorvik::tests
