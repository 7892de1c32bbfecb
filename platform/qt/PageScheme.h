#pragma once

#include <QHash>
#include <QString>
#include <QUrl>

#include <QWebEngineUrlSchemeHandler>

namespace zorvik::platform::qt {

class EnginePage;

// Addresses of this port's own, by which a page waits for an answer: a request that goes to one is
// kept open until the answer is there. zorvik-page://TOKEN/…, the token known to one page alone.
// One handler a profile, which it outlives; main thread only.
class PageScheme : public QWebEngineUrlSchemeHandler {
  public:
    static const char name[];
    // Makes the scheme known to the engine, once a process, before its first profile.
    static void makeKnown();
    static bool has(const QUrl& url) { return url.scheme() == QLatin1String(name); }

    void add(const QString& token, EnginePage* page) { pages_.insert(token, page); }
    void remove(const QString& token) { pages_.remove(token); }

    void requestStarted(QWebEngineUrlRequestJob* job) override;

  private:
    QHash<QString, EnginePage*> pages_;
};

}  // namespace zorvik::platform::qt
