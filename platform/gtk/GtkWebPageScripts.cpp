#include <webkit/webkit.h>

#include <utility>

#include "platform/desktop/WebPageError.h"
#include "platform/foundation/Data.h"
#include "platform/gtk/GtkWebPage.h"
#include "platform/gtk/ScriptValues.h"
#include "platform/runtime/Environment.h"

namespace zorvik::platform::gtk {

using desktop::webPageError, desktop::WebPageErrorCode;

struct GtkWebPage::Evaluation {
    Completion completion;  // empty once it was called
    Self self;
};

namespace {

// A panel the page waits for. Gone unanswered, it is closed as cancelled.
class PanelAnswer {
  public:
    explicit PanelAnswer(WebKitScriptDialog* dialog) : dialog_(webkit_script_dialog_ref(dialog)) {}
    PanelAnswer(const PanelAnswer&) = delete;
    PanelAnswer& operator=(const PanelAnswer&) = delete;
    ~PanelAnswer() { give({}); }

    // A panel that is answered later has to be closed then. Inside its signal that is the
    // engine's own business, and fatal to do.
    void waitsForLater() { isInsideSignal_ = false; }

    void give(const ScriptPanelAnswer& answer) {
        WebKitScriptDialog* open = std::exchange(dialog_, nullptr);
        if (open == nullptr) return;
        const WebKitScriptDialogType type = webkit_script_dialog_get_dialog_type(open);
        if (type == WEBKIT_SCRIPT_DIALOG_CONFIRM) {
            webkit_script_dialog_confirm_set_confirmed(open, answer.confirmed);
        } else if (type == WEBKIT_SCRIPT_DIALOG_PROMPT && answer.text) {
            webkit_script_dialog_prompt_set_text(open, answer.text->c_str());
        }
        if (!isInsideSignal_) webkit_script_dialog_close(open);
        webkit_script_dialog_unref(open);
    }

  private:
    WebKitScriptDialog* dialog_;
    bool isInsideSignal_ = true;
};

std::string textOrEmpty(const char* text) {
    return text != nullptr ? text : "";
}

}  // namespace

void GtkWebPage::evaluate(const std::string& script, Completion completion) {
    if (!view_) return;
    if (!completion) completion = [](const Result<ScriptValue>&) {};
    // The engine would quietly evaluate nothing.
    if (!isValidUtf8(script)) {
        Environment::scheduler().runOnMain([completion = std::move(completion)] {
            completion(webPageError(WebPageErrorCode::invalidScript, "The script is not UTF-8."));
        });
        return;
    }
    const auto evaluation = std::make_shared<Evaluation>(Evaluation{std::move(completion), self_});
    evaluations_.insert(evaluation);
    webkit_web_view_evaluate_javascript(
        view_.get(), script.c_str(), static_cast<gssize>(script.size()), nullptr, nullptr, nullptr,
        [](GObject*, GAsyncResult* result, gpointer data) {
            const std::unique_ptr<std::shared_ptr<Evaluation>> held(
                static_cast<std::shared_ptr<Evaluation>*>(data));
            if (GtkWebPage* page = *(*held)->self) page->evaluated(*held, result);
        },
        new std::shared_ptr<Evaluation>(evaluation));
}

void GtkWebPage::evaluated(const std::shared_ptr<Evaluation>& evaluation, GAsyncResult* result) {
    evaluations_.erase(evaluation);
    const Completion completion = std::move(evaluation->completion);
    GError* error = nullptr;
    const ObjectPointer<JSCValue> value(
        webkit_web_view_evaluate_javascript_finish(view_.get(), result, &error));
    if (!value) {
        const Error failure{g_quark_to_string(error->domain), error->code, error->message};
        g_error_free(error);
        completion(failure);
        return;
    }
    if (const auto converted = scriptValue(value.get())) {
        completion(*converted);
    } else {
        completion(webPageError(WebPageErrorCode::noJsonForm, "The value has no JSON form."));
    }
}

void GtkWebPage::cancel(const Evaluations& evaluations) {
    if (!Environment::isInstalled()) return;
    for (const auto& evaluation : evaluations) {
        Environment::scheduler().runOnMain([completion = std::move(evaluation->completion)] {
            completion(webPageError(WebPageErrorCode::pageGone, "The page was destroyed."));
        });
    }
}

void GtkWebPage::drop(const Evaluations& evaluations) {
    // The engine holds on to them until it answers, perhaps under another port.
    for (const auto& evaluation : evaluations)
        evaluation->completion = nullptr;
}

void GtkWebPage::addMessageHandler(const std::string& name) {
    if (!view_) return;
    WebKitUserContentManager* manager = webkit_web_view_get_user_content_manager(view_.get());
    if (handlers_.contains(name)) return;
    auto handler = std::make_unique<Handler>(Handler{this, name});
    // First the signal, then the name: a page that runs already may post at once.
    handler->signal =
        g_signal_connect(manager, ("script-message-received::" + name).c_str(),
                         G_CALLBACK(+[](WebKitUserContentManager*, JSCValue* body, gpointer data) {
                             const auto* receiver = static_cast<Handler*>(data);
                             // Copied: the report may remove the handler.
                             const std::string channel = receiver->name;
                             receiver->page->messagePosted(channel, body);
                         }),
                         handler.get());
    if (webkit_user_content_manager_register_script_message_handler(manager, name.c_str(),
                                                                    nullptr)) {
        handlers_.emplace(name, std::move(handler));
    } else {
        g_signal_handler_disconnect(manager, handler->signal);
    }
}

void GtkWebPage::removeMessageHandler(const std::string& name) {
    const auto entry = handlers_.find(name);
    if (entry == handlers_.end()) return;
    WebKitUserContentManager* manager = webkit_web_view_get_user_content_manager(view_.get());
    webkit_user_content_manager_unregister_script_message_handler(manager, entry->first.c_str(),
                                                                  nullptr);
    g_signal_handler_disconnect(manager, entry->second->signal);
    handlers_.erase(entry);
}

void GtkWebPage::removeAllUserScripts() {
    if (!view_) return;
    webkit_user_content_manager_remove_all_scripts(
        webkit_web_view_get_user_content_manager(view_.get()));
}

void GtkWebPage::removeAllContentRules() {
    if (!view_) return;
    webkit_user_content_manager_remove_all_filters(
        webkit_web_view_get_user_content_manager(view_.get()));
}

void GtkWebPage::messagePosted(const std::string& name, JSCValue* body) {
    takeTurnsWithDrawing();
    const auto delegate = delegate_.lock();
    if (!delegate) return;
    // A circular object has arrived as an object all the same, and one of an endless text.
    delegate->pagePosted(
        name, scriptValue(body).value_or(ScriptValue{ScriptValue::Type::object, "null"}));
}

void GtkWebPage::panelAsked(WebKitScriptDialog* dialog) {
    takeTurnsWithDrawing();
    const WebKitScriptDialogType type = webkit_script_dialog_get_dialog_type(dialog);
    if (type == WEBKIT_SCRIPT_DIALOG_BEFORE_UNLOAD_CONFIRM) {
        // A page cannot hold the customer back from leaving it.
        webkit_script_dialog_confirm_set_confirmed(dialog, TRUE);
        return;
    }
    const auto answer = std::make_shared<PanelAnswer>(dialog);
    openPanel_ = answer;
    const auto delegate = delegate_.lock();
    if (!delegate) return;
    ScriptPanel panel;
    panel.message = textOrEmpty(webkit_script_dialog_get_message(dialog));
    if (type == WEBKIT_SCRIPT_DIALOG_CONFIRM) panel.kind = ScriptPanel::Kind::confirm;
    if (type == WEBKIT_SCRIPT_DIALOG_PROMPT) {
        panel.kind = ScriptPanel::Kind::prompt;
        // The engine tells no text and an empty one alike.
        const std::string text = textOrEmpty(webkit_script_dialog_prompt_get_default_text(dialog));
        if (!text.empty()) panel.defaultText = text;
    }
    delegate->pageAsksWithPanel(panel,
                                [answer](const ScriptPanelAnswer& given) { answer->give(given); });
    if (answer.use_count() > 1) answer->waitsForLater();
}

}  // namespace zorvik::platform::gtk
