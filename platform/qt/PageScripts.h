#pragma once

#include <QString>
#include <QVariant>
#include <map>
#include <optional>
#include <string>

#include "platform/foundation/Error.h"
#include "platform/services/WebEngine.h"

// The scripts by which a page and native code talk, and what comes back of them. Everything a page
// says goes by the console, the one way that is there for each frame before its first script and
// keeps the order; the page's token, which no page can read, tells it from the page's own lines.
namespace zorvik::platform::qt::pageScripts {

// What a script said, its token taken off.
struct Said {
    enum class Kind { documentCreated, documentLoaded, windowWanted, message };
    Kind kind = Kind::message;
    std::string address;  // of a document or window
    int handler = 0;
    ScriptValue body;
};
std::optional<Said> parse(const QString& text);

// For a world of the port's own, at the start of each document: tells of the document.
QString documentScript(const QString& token);
// For the page's world, at the start of each document or later: handlers by number.
QString handlerScript(const QString& token, const std::map<int, std::string>& handlers);
QString removalScript(const std::string& handler);
// For the page's world, at the start of each document: panels wait for their answer at an address
// of PageScheme's, window.open gives null and tells of the window, nothing can be dragged. Without
// `canOpenWindows` windows are for what the customer did.
QString refusalScript(const QString& token, bool canOpenWindows);
// The panel that a page asks for at such an address.
std::optional<ScriptPanel> parsePanel(const QString& query);
QByteArray panelReply(ScriptPanel::Kind kind, const ScriptPanelAnswer& answer);

// For the page's world, at the start of each document: what evaluations call, before a page could
// change it.
QString evaluatorScript();
// Evaluates the script and gives its value as text; `valueOf` reads it. nullopt: the page forbids
// that, and has run nothing.
QString evaluation(const std::string& script);
std::optional<Result<ScriptValue>> valueOf(const QVariant& answer);
// The same for such a page: plain values, in which null, NaN and a function are alike and an
// object's keys are sorted. Whether it ran at all is asked next.
QString plainEvaluation(const std::string& script);
QString hasRunQuestion();
Result<ScriptValue> valueOfPlain(const QVariant& answer, bool hasRun);

}  // namespace zorvik::platform::qt::pageScripts
