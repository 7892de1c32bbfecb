#include "platform/qt/PageScripts.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QUrl>
#include <cstring>
#include <utility>

#include "platform/desktop/JsonString.h"
#include "platform/desktop/ShortText.h"
#include "platform/desktop/WebPageError.h"
#include "platform/foundation/Data.h"
#include "platform/foundation/JSONSerialization.h"
#include "platform/qt/PageScheme.h"

namespace zorvik::platform::qt::pageScripts {

using desktop::textOfJsonString, desktop::webPageError, desktop::WebPageErrorCode;

namespace {

constexpr char panelKinds[] = "acp";
constexpr int longestPanelText = 100'000;  // in UTF-16 units
const char failureMark[] = "zorvik failure";

QString literal(const std::string& text) {
    return QString::fromStdString(JSONSerialization::data(Value(text)).value());
}

// A letter for the type, in front of the JSON text. What it calls is taken before the page runs.
const QString& describe() {
    static const QString source =
        QStringLiteral(R"(
    const {stringify} = JSON, {isArray} = Array, text = String, hasShortText = %1;
    const describe = value => {
        if (value === null || value === undefined) return 'nnull';
        if (typeof value === 'object' && !hasShortText(value, %2)) return undefined;
        const json = stringify(value);
        if (json === undefined) return undefined;
        const letters = {string: 's', number: 'd', boolean: 'b'};
        return (letters[typeof value] || (isArray(value) ? 'a' : 'o')) + json;
    };)")
            .arg(QString(desktop::hasShortText)
                     .replace(QLatin1String("Array.isArray"), QLatin1String("isArray")))
            .arg(desktop::longestText);
    return source;
}

// Evaluates a source and describes what it comes to. The first piece tells whether the page's
// policy allows any.
const QString& evaluator() {
    static const QString source = QStringLiteral(R"((() => {
    const run = eval;
    %1
    return source => {
        try { run('0'); } catch (error) { return 'forbidden'; }
        try {
            const answer = describe(run(source));
            return answer === undefined ? 'unwritable' : answer;
        } catch (error) { return 'error' + text(error); }
    };
})())")
                                      .arg(describe());
    return source;
}

// Where a document keeps its evaluator, made before the page could change what it calls.
constexpr char evaluatorName[] = "zorvikEvaluator";

std::optional<ScriptValue::Type> typeOf(QChar letter) {
    using Type = ScriptValue::Type;
    switch (letter.toLatin1()) {
        case 'n':
            return Type::null;
        case 'b':
            return Type::boolean;
        case 'd':
            return Type::number;
        case 's':
            return Type::string;
        case 'a':
            return Type::array;
        case 'o':
            return Type::object;
        default:
            return std::nullopt;
    }
}

std::optional<ScriptValue> described(QStringView text) {
    if (text.isEmpty()) return std::nullopt;
    const auto type = typeOf(text.front());
    if (!type) return std::nullopt;
    const std::string json = text.mid(1).toUtf8().toStdString();
    return ScriptValue{*type, *type == ScriptValue::Type::string ? textOfJsonString(json) : json};
}

}  // namespace

QString documentScript(const QString& token) {
    // Where about:blank is gone to, the engine tells the end first.
    return QStringLiteral(R"((() => {
    if (location.href === 'about:blank') return;
    const say = text => console.debug('%1' + text);
    say('c' + location.href);
    document.addEventListener('readystatechange', () => {
        if (document.readyState === 'complete') say('l');
    });
})())")
        .arg(token);
}

QString handlerScript(const QString& token, const std::map<int, std::string>& handlers) {
    QString entries;
    for (const auto& [number, name] : handlers)
        entries += QStringLiteral("[%1, %2],").arg(number).arg(literal(name));
    return QStringLiteral(R"((() => {
    const say = console.debug.bind(console);
    %1
    const webkit = window.webkit || (window.webkit = {});
    const handlers = webkit.messageHandlers || (webkit.messageHandlers = {});
    for (const [number, name] of [%2]) {
        handlers[name] = {postMessage: body => {
            let text;
            try { text = describe(body); } catch (error) {}
            say('%3m' + number + ' ' + (text || 'onull'));
        }};
    }
})())")
        .arg(describe(), entries, token);
}

QString removalScript(const std::string& handler) {
    return QStringLiteral("delete window.webkit?.messageHandlers?.[%1]").arg(literal(handler));
}

std::optional<Said> parse(const QString& text) {
    if (text.isEmpty()) return std::nullopt;
    const QStringView rest = QStringView(text).mid(1);
    if (text.front() == u'c')
        return Said{Said::Kind::documentCreated, rest.toUtf8().toStdString(), 0, {}};
    if (text.front() == u'l') return Said{Said::Kind::documentLoaded, {}, 0, {}};
    if (text.front() == u'w')
        return Said{Said::Kind::windowWanted, rest.toUtf8().toStdString(), 0, {}};
    const auto space = rest.indexOf(u' ');
    if (text.front() != u'm' || space < 0) return std::nullopt;
    const auto body = described(rest.mid(space + 1));
    if (!body) return std::nullopt;
    return Said{Said::Kind::message, {}, rest.left(space).toInt(), *body};
}

QString refusalScript(const QString& token, bool canOpenWindows) {
    return QStringLiteral(R"((() => {
    const Request = XMLHttpRequest, {stringify, parse} = JSON, open = window.open, Url = URL;
    const say = console.debug.bind(console), canOpen = () => %3 || navigator.userActivation.isActive;
    // The engine takes no longer addresses.
    const ask = (kind, values) => {
        try {
            const request = new Request();
            const question = stringify([kind, ...values.map(value => String(value).slice(0, %4))]);
            request.open('GET', '%1://%2/panel?' + encodeURIComponent(question), false);
            request.send();
            return parse(request.responseText);
        } catch (error) { return null; }
    };
    window.alert = function alert(...values) { ask('a', values.slice(0, 1)); };
    window.confirm = function confirm(...values) { return ask('c', values.slice(0, 1)) === true; };
    window.prompt = function prompt(...values) { return ask('p', values.slice(0, 2)); };
    // Nothing can be dropped here, and Qt would stop the main queue for as long as one drags.
    addEventListener('dragstart', event => event.preventDefault(), true);
    // Nothing opens, which the engine does not tell; and what it makes before it asks is dear.
    window.open = function (...values) {
        const [address = '', target = '_blank'] = values;
        if (target !== '_blank') {
            open.apply(window, values);
        } else if (canOpen()) {
            say('%2w' + new Url(address || 'about:blank', document.baseURI).href);
        }
        return null;
    };
})())")
        .arg(QLatin1String(PageScheme::name), token,
             canOpenWindows ? QStringLiteral("true") : QStringLiteral("false"))
        .arg(longestPanelText);
}

std::optional<ScriptPanel> parsePanel(const QString& query) {
    const QByteArray json = QByteArray::fromPercentEncoding(query.toLatin1());
    const QJsonArray parts = QJsonDocument::fromJson(json).array();
    const QString letter = parts.at(0).toString();
    const char* const kind =
        letter.size() == 1 ? std::strchr(panelKinds, letter.front().toLatin1()) : nullptr;
    if (kind == nullptr) return std::nullopt;
    ScriptPanel panel;
    panel.kind = static_cast<ScriptPanel::Kind>(kind - panelKinds);
    panel.message = parts.at(1).toString().toStdString();
    const std::string text = parts.at(2).toString().toStdString();
    if (!text.empty()) panel.defaultText = text;
    return panel;
}

QByteArray panelReply(ScriptPanel::Kind kind, const ScriptPanelAnswer& answer) {
    if (kind == ScriptPanel::Kind::confirm) return answer.confirmed ? "true" : "false";
    if (kind == ScriptPanel::Kind::alert || !answer.text) return "null";
    const auto text = JSONSerialization::data(Value(readableText(*answer.text)));
    return QByteArray::fromStdString(text.value());
}

QString evaluatorScript() {
    return QStringLiteral("Object.defineProperty(window, '%1', {value: %2});")
        .arg(QLatin1String(evaluatorName), evaluator());
}

QString evaluation(const std::string& script) {
    static const QString call =
        QStringLiteral("(window.%1 || %2)(").arg(QLatin1String(evaluatorName), evaluator());
    return call + literal(script) + u')';
}

std::optional<Result<ScriptValue>> valueOf(const QVariant& answer) {
    const QString text = answer.toString();
    if (text == u"forbidden") return std::nullopt;
    if (text == u"unwritable")
        return webPageError(WebPageErrorCode::noJsonForm, "The value has no JSON form.");
    if (const auto value = described(text)) return *value;
    const bool hasText = text.startsWith(u"error") && text.size() > 5;
    return webPageError(WebPageErrorCode::scriptFailed,
                        hasText ? text.mid(5).toStdString() : "The script could not be run.");
}

QString plainEvaluation(const std::string& script) {
    return QStringLiteral("window['%1'] = 1; try {\n%2\n} catch (error) { ['%1', String(error)] }")
        .arg(QLatin1String(failureMark), QString::fromStdString(script));
}

QString hasRunQuestion() {
    return QStringLiteral(
               "(() => { const has = window['%1'] === 1; delete window['%1']; "
               "return has; })()")
        .arg(QLatin1String(failureMark));
}

Result<ScriptValue> valueOfPlain(const QVariant& answer, bool hasRun) {
    using Type = ScriptValue::Type;
    if (!hasRun)
        return webPageError(WebPageErrorCode::scriptFailed, "The script could not be run.");
    const QJsonValue json = QJsonValue::fromVariant(answer);
    const auto written = [](const QJsonDocument& document) {
        return document.toJson(QJsonDocument::Compact).toStdString();
    };
    switch (json.type()) {
        case QJsonValue::Bool:
            return ScriptValue{Type::boolean, json.toBool() ? "true" : "false"};
        case QJsonValue::String:
            return ScriptValue{Type::string, json.toString().toStdString()};
        case QJsonValue::Double: {
            const std::string list = written(QJsonDocument(QJsonArray{json}));
            return ScriptValue{Type::number, list.substr(1, list.size() - 2)};
        }
        case QJsonValue::Array: {
            const QJsonArray list = json.toArray();
            if (list.at(0) == QJsonValue(QLatin1String(failureMark)))
                return webPageError(WebPageErrorCode::scriptFailed,
                                    list.at(1).toString().toStdString());
            return ScriptValue{Type::array, written(QJsonDocument(list))};
        }
        case QJsonValue::Object:
            return ScriptValue{Type::object, written(QJsonDocument(json.toObject()))};
        default:
            return ScriptValue{};
    }
}

}  // namespace zorvik::platform::qt::pageScripts
