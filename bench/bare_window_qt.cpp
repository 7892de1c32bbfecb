// The same as bare_window.cpp with Qt's engine: what loading a page costs without the component.
// usage: zorvik-bare-window-qt URL TIMES
#include <QApplication>
#include <QElapsedTimer>
#include <QMainWindow>
#include <QTimer>
#include <QWebEngineProfile>
#include <QWebEngineView>
#include <cstdlib>
#include <iostream>

#include "bench/ProcessTree.h"

namespace {

void wait(int milliseconds) {
    QEventLoop loop;
    QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
    loop.exec();
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 3) {
        std::cerr << "usage: zorvik-bare-window-qt URL TIMES\n";
        return 2;
    }
    const int times = std::atoi(arguments[2]);
    QApplication application(count, arguments);
    QMainWindow window;
    window.resize(390, 760);
    window.show();
    wait(500);

    std::cout << "loads";
    std::unique_ptr<QWebEngineProfile> profile;
    for (int i = 0; i < times; ++i) {
        QElapsedTimer timer;
        timer.start();
        if (!profile) profile = std::make_unique<QWebEngineProfile>();
        auto* const view = new QWebEngineView(profile.get(), nullptr);
        window.setCentralWidget(view);
        QEventLoop loop;
        QObject::connect(view, &QWebEngineView::loadFinished, &loop, &QEventLoop::quit);
        view->load(QUrl(arguments[1]));
        loop.exec();
        std::cout << ' ' << static_cast<double>(timer.nsecsElapsed()) / 1e6;
        wait(1500);
        if (i + 1 == times) {
            std::cout << "\nidle";
            zorvik::bench::printIdle(wait);
        }
        delete window.takeCentralWidget();
        wait(300);
    }
    return 0;
}
