#pragma once

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>

#include "platform/desktop/LoadWatch.h"
#include "platform/desktop/ProcessProbe.h"
#include "platform/gtk/ObjectPointer.h"
#include "platform/services/WebEngine.h"

typedef struct _GAsyncResult GAsyncResult;
typedef struct _GtkEventController GtkEventController;
typedef struct _GtkWidget GtkWidget;
typedef struct _JSCValue JSCValue;
typedef struct _WebKitNavigationAction WebKitNavigationAction;
typedef struct _WebKitPolicyDecision WebKitPolicyDecision;
typedef struct _WebKitScriptDialog WebKitScriptDialog;
typedef struct _WebKitWebView WebKitWebView;

namespace zorvik::platform::gtk {

class GtkWebEngine;

// A WebKitGTK view as a page. Owned by the toolkit's web view; main thread only. Once the engine
// has ended, the page does and knows nothing any more, and any thread may destroy it.
class GtkWebPage : public WebPage {
  public:
    // Hands its view back to the engine at its end. What leaves the customer's input unanswered for
    // `hungSeconds` ends as a dead web process does.
    GtkWebPage(GtkWebEngine& engine, ObjectPointer<WebKitWebView> view,
               std::weak_ptr<WebPageDelegate> delegate, double hungSeconds);
    ~GtkWebPage() override;

    // For the stage to place. Leaves its parent when the page goes.
    GtkWidget* widget() const;
    // Takes the view, and with it all the page had to do with the engine, for the engine's end.
    // Nothing is reported, and no evaluation completes.
    ObjectPointer<WebKitWebView> giveUpView();

    void load(const URLRequest& request) override;
    void stopLoading() override;
    void evaluate(const std::string& script, Completion completion) override;
    std::optional<URL> currentUrl() const override;
    void addMessageHandler(const std::string& name) override;
    void removeMessageHandler(const std::string& name) override;
    void removeAllUserScripts() override;
    void removeAllContentRules() override;

  private:
    // Where the main frame's load that was reported as started stands.
    enum class LoadState { none, provisional, committed };

    // Closures that outlive the page hold its address in this cell, which is emptied when it goes.
    using Self = std::shared_ptr<GtkWebPage*>;
    class PolicyAnswer;
    struct Evaluation;
    using Evaluations = std::set<std::shared_ptr<Evaluation>>;
    struct Handler {
        GtkWebPage* page;
        std::string name;
        unsigned long signal = 0;
    };

    // The engine hands over what its pages send before anything is drawn and before the main queue
    // turns, so that a page that sends without a pause would stop both. Called in its reports, puts
    // the source that brings them on a par.
    static void takeTurnsWithDrawing();
    void connectSignals();
    void policyAsked(WebKitPolicyDecision* decision, int type);
    void newWindowAsked(WebKitNavigationAction* action);
    void loadChanged(int event);
    void loadFailed(bool isCommitted, const char* failingUri, const GError& error);
    void customerActed();
    void askProcess(double patience);
    void endProcess();
    void webProcessEnded();
    void panelAsked(WebKitScriptDialog* dialog);
    void evaluated(const std::shared_ptr<Evaluation>& evaluation, GAsyncResult* result);
    static void cancel(const Evaluations& evaluations);
    static void drop(const Evaluations& evaluations);
    void messagePosted(const std::string& name, JSCValue* body);

    bool isOwnRequest(const std::string& uri) const;
    void navigationDecided(const std::string& uri, bool isRedirect, NavigationDecision decision);
    bool isInStorm(const std::string& uri);
    double recentNavigations() const;
    void loadEnded();
    void report(bool isCommitted, const Error& error);

    void timedOut();

    GtkWebEngine& engine_;
    ObjectPointer<WebKitWebView> view_;  // none once it was given up
    std::weak_ptr<WebPageDelegate> delegate_;
    const double hungSeconds_;
    GtkEventController* input_ = nullptr;  // the view's
    Self self_;

    LoadState state_ = LoadState::none;
    bool isRequested_ = false;  // load() was called and its start is still to come
    bool isUntouched_ = true;   // nothing came of this page yet, not even a question
    std::string requestedUri_;
    bool isOwnLoad_ = false;  // the load that was started last was asked for by load()
    double requestTimeout_ = 0;
    std::weak_ptr<PolicyAnswer> requestAnswer_;  // the open question about it
    std::optional<std::string> refusedRedirect_;

    double navigations_ = 0;  // of late, at the moment of the last one
    double lastNavigation_ = 0;

    bool showsPage_ = false;  // one was committed, and its web process lives

    desktop::LoadWatch watch_;
    std::unique_ptr<desktop::ProcessProbe> probe_;
    std::weak_ptr<void> openPanel_;

    Evaluations evaluations_;
    std::map<std::string, std::unique_ptr<Handler>> handlers_;
};

}  // namespace zorvik::platform::gtk
