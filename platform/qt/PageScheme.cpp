#include "platform/qt/PageScheme.h"

#include <QWebEngineUrlRequestJob>
#include <QWebEngineUrlScheme>

#include "platform/qt/EnginePage.h"

namespace zorvik::platform::qt {

const char PageScheme::name[] = "zorvik-page";

void PageScheme::makeKnown() {
    if (!QWebEngineUrlScheme::schemeByName(name).name().isEmpty()) return;
    QWebEngineUrlScheme scheme(name);
    scheme.setSyntax(QWebEngineUrlScheme::Syntax::Host);
    scheme.setFlags(QWebEngineUrlScheme::SecureScheme | QWebEngineUrlScheme::CorsEnabled |
                    QWebEngineUrlScheme::ContentSecurityPolicyIgnored);
    QWebEngineUrlScheme::registerScheme(scheme);
}

void PageScheme::requestStarted(QWebEngineUrlRequestJob* job) {
    EnginePage* page = pages_.value(job->requestUrl().host());
    if (page != nullptr && page->owner() != nullptr) {
        page->owner()->pageWaits(*job);
    } else {
        job->fail(QWebEngineUrlRequestJob::RequestDenied);
    }
}

}  // namespace zorvik::platform::qt
