#include "platform/gtk/GtkWebPage.h"

#include <webkit/webkit.h>

#include <algorithm>
#include <utility>

#include "platform/desktop/WebPageError.h"
#include "platform/gtk/GtkWebEngine.h"
#include "platform/runtime/Environment.h"

namespace zorvik::platform::gtk {

using desktop::ProcessProbe, desktop::webPageError, desktop::WebPageErrorCode;

namespace {

// How long a web process may owe an answer after a load that made no progress, and when a new load
// is to start.
constexpr double patienceAfterTimeout = 5;
constexpr double patienceOfALoad = 1;
// A navigation may cost a web process, which takes longer to come and go than a page takes to start
// the next. So many are free, so many a second come back, and without one each waits a while: long
// enough for a page in a storm to replace it before it starts.
constexpr double freeNavigations = 10;
constexpr double navigationsASecond = 5;
constexpr double pauseOfAStorm = 0.2;

Error errorFrom(const GError& error) {
    return {g_quark_to_string(error.domain), error.code, error.message};
}

bool isAttachment(WebKitURIResponse* response) {
    SoupMessageHeaders* headers = webkit_uri_response_get_http_headers(response);
    char* disposition = nullptr;
    if (headers == nullptr ||
        !soup_message_headers_get_content_disposition(headers, &disposition, nullptr)) {
        return false;
    }
    const TextPointer owned(disposition);
    return g_ascii_strcasecmp(disposition, "attachment") == 0;
}

// A page for the main frame, or anything the engine shows for a sub-frame. The rest is neither
// shown nor saved. The engine's viewer of PDF documents has no way back to the page.
bool canBeShown(WebKitResponsePolicyDecision* decision) {
    WebKitURIResponse* response = webkit_response_policy_decision_get_response(decision);
    const char* type = webkit_uri_response_get_mime_type(response);
    const bool isDocument =
        g_strcmp0(type, "application/pdf") == 0 || g_strcmp0(type, "text/pdf") == 0;
    return webkit_response_policy_decision_is_mime_type_supported(decision) &&
           !isAttachment(response) &&
           !(isDocument && webkit_response_policy_decision_is_main_frame_main_resource(decision));
}

}  // namespace

// The answer to one question of the engine. Gone unanswered, the navigation is cancelled.
class GtkWebPage::PolicyAnswer {
  public:
    PolicyAnswer(WebKitPolicyDecision* decision, const Self& page, std::string uri, bool isRedirect)
        : decision_(share(decision)), page_(page), uri_(std::move(uri)), isRedirect_(isRedirect) {}
    PolicyAnswer(const PolicyAnswer&) = delete;
    PolicyAnswer& operator=(const PolicyAnswer&) = delete;
    ~PolicyAnswer() { give(NavigationDecision::cancel); }

    // The first answer counts.
    void give(NavigationDecision decision) {
        const ObjectPointer<WebKitPolicyDecision> open = std::move(decision_);
        if (!open) return;
        const bool isAllowed = decision == NavigationDecision::allow;
        const bool waits = isAllowed && *page_ != nullptr && (*page_)->isInStorm(uri_);
        if (*page_ != nullptr) (*page_)->navigationDecided(uri_, isRedirect_, decision);
        if (!isAllowed) {
            webkit_policy_decision_ignore(open.get());
        } else if (!waits) {
            webkit_policy_decision_use(open.get());
        } else {
            const std::shared_ptr<WebKitPolicyDecision> waiting(share(open.get()).release(),
                                                                g_object_unref);
            Environment::scheduler().runOnMainAfter(
                pauseOfAStorm, [waiting] { webkit_policy_decision_use(waiting.get()); });
        }
    }

  private:
    ObjectPointer<WebKitPolicyDecision> decision_;
    const Self page_;
    const std::string uri_;
    const bool isRedirect_;
};

GtkWebPage::GtkWebPage(GtkWebEngine& engine, ObjectPointer<WebKitWebView> view,
                       std::weak_ptr<WebPageDelegate> delegate, double hungSeconds)
    : engine_(engine),
      view_(std::move(view)),
      delegate_(std::move(delegate)),
      hungSeconds_(hungSeconds),
      self_(std::make_shared<GtkWebPage*>(this)),
      watch_([this] { timedOut(); }) {
    connectSignals();
}

GtkWebPage::~GtkWebPage() {
    if (!view_) return;
    const auto evaluations = std::exchange(evaluations_, {});
    engine_.pageLeft(*this, giveUpView());
    cancel(evaluations);
}

ObjectPointer<WebKitWebView> GtkWebPage::giveUpView() {
    *self_ = nullptr;
    watch_.stop();
    probe_.reset();
    WebKitUserContentManager* manager = webkit_web_view_get_user_content_manager(view_.get());
    g_signal_handlers_disconnect_by_data(view_.get(), this);
    gtk_widget_remove_controller(widget(), input_);
    while (!handlers_.empty())
        removeMessageHandler(handlers_.begin()->first);
    webkit_user_content_manager_remove_all_scripts(manager);
    webkit_web_view_stop_loading(view_.get());
    GtkWidget* own = widget();
    if (gtk_widget_get_parent(own) != nullptr) gtk_widget_unparent(own);
    ObjectPointer<WebKitWebView> view = std::move(view_);
    drop(std::exchange(evaluations_, {}));  // this page may end here
    return view;
}

GtkWidget* GtkWebPage::widget() const {
    return GTK_WIDGET(view_.get());
}

void GtkWebPage::load(const URLRequest& request) {
    if (!view_) return;
    // A hung process would not load this either, a page in a storm would at once load another, and
    // what is shown is to go anyway.
    const bool isHung = probe_ && probe_->seconds() >= patienceOfALoad && state_ == LoadState::none;
    if (isHung || recentNavigations() > 2 * freeNavigations) {
        state_ = LoadState::none;
        navigations_ = 0;
        isRequested_ = showsPage_ = false;
        endProcess();
    }
    isRequested_ = true;
    requestTimeout_ =
        request.timeoutInterval > 0 ? request.timeoutInterval : desktop::LoadWatch::defaultSeconds;
    // The request's own time counts from its start: first a web process may have to come up.
    watch_.start(std::max(requestTimeout_, desktop::LoadWatch::defaultSeconds));
    requestedUri_ = request.url.absoluteString();
    webkit_web_view_load_uri(view_.get(), requestedUri_.c_str());
}

void GtkWebPage::stopLoading() {
    if (!view_) return;
    isRequested_ = false;
    if (state_ == LoadState::none) watch_.stop();
    // The engine itself would keep the address of a load that was never allowed.
    if (const auto question = requestAnswer_.lock()) question->give(NavigationDecision::cancel);
    webkit_web_view_stop_loading(view_.get());
}

std::optional<URL> GtkWebPage::currentUrl() const {
    const char* uri = view_ ? webkit_web_view_get_uri(view_.get()) : nullptr;
    return uri != nullptr ? URL::fromEngine(uri) : std::nullopt;
}

void GtkWebPage::takeTurnsWithDrawing() {
    GSource* source = g_main_current_source();
    const char* name = source != nullptr ? g_source_get_name(source) : nullptr;
    if (name != nullptr && g_str_has_prefix(name, "[WebKit]") &&
        g_source_get_priority(source) < GDK_PRIORITY_REDRAW) {
        g_source_set_priority(source, GDK_PRIORITY_REDRAW);
    }
}

void GtkWebPage::policyAsked(WebKitPolicyDecision* decision, int type) {
    takeTurnsWithDrawing();
    watch_.progressSeen();
    isUntouched_ = false;
    if (type == WEBKIT_POLICY_DECISION_TYPE_RESPONSE) {
        // Ignored, a load of the main frame fails.
        if (canBeShown(WEBKIT_RESPONSE_POLICY_DECISION(decision))) {
            webkit_policy_decision_use(decision);
        } else {
            webkit_policy_decision_ignore(decision);
        }
        return;
    }
    WebKitNavigationAction* action = webkit_navigation_policy_decision_get_navigation_action(
        WEBKIT_NAVIGATION_POLICY_DECISION(decision));
    if (type == WEBKIT_POLICY_DECISION_TYPE_NEW_WINDOW_ACTION) {
        webkit_policy_decision_ignore(decision);
        newWindowAsked(action);
        return;
    }
    const char* address = webkit_uri_request_get_uri(webkit_navigation_action_get_request(action));
    const std::string uri = address != nullptr ? address : "";
    const bool isRedirect = webkit_navigation_action_is_redirect(action);
    const auto answer = std::make_shared<PolicyAnswer>(decision, self_, uri, isRedirect);
    if (!isRedirect && isOwnRequest(uri)) requestAnswer_ = answer;
    if (const auto delegate = delegate_.lock()) {
        delegate->pageAsksToNavigate(URL::fromEngine(uri), [answer](NavigationDecision navigation) {
            answer->give(navigation);
        });
    }
}

void GtkWebPage::newWindowAsked(WebKitNavigationAction* action) {
    // No window opens, whatever the answer: there is nobody who could close it.
    const auto delegate = delegate_.lock();
    if (!delegate) return;
    const char* address = webkit_uri_request_get_uri(webkit_navigation_action_get_request(action));
    delegate->pageAsksToNavigate(address != nullptr ? URL::fromEngine(address) : std::nullopt,
                                 [](NavigationDecision) {});
}

// Whether a question that is no redirect's is about the load that was asked for here: the engine
// holds the address of that one already, and the old one for what the page starts.
bool GtkWebPage::isOwnRequest(const std::string& uri) const {
    const char* current = webkit_web_view_get_uri(view_.get());
    return isRequested_ && current != nullptr && uri == current;
}

void GtkWebPage::navigationDecided(const std::string& uri, bool isRedirect,
                                   NavigationDecision decision) {
    watch_.progressSeen();
    if (decision == NavigationDecision::allow) return;
    if (isRedirect) {
        // The engine fails a load whose redirect is refused; who refused it wants no report of it.
        refusedRedirect_ = uri;
    } else if (isOwnRequest(uri)) {
        isRequested_ = false;
        if (state_ == LoadState::none) watch_.stop();
    }
}

// Counts a navigation that is allowed; whether it is one of too many that cost a process each.
bool GtkWebPage::isInStorm(const std::string& uri) {
    const auto document = [](std::string_view address) {
        return address.substr(0, address.find('#'));
    };
    const char* text = webkit_web_view_get_uri(view_.get());
    if (text == nullptr || isOwnRequest(uri) || document(uri) == document(text)) return false;
    navigations_ = recentNavigations() + 1;
    lastNavigation_ = Environment::scheduler().steadySeconds();
    if (navigations_ <= freeNavigations) return false;
    const auto target = URL::fromEngine(uri);
    const auto current = URL::fromEngine(text);
    const bool staysInProcess =
        target && (target->scheme() == "data" || target->scheme() == "about");
    const bool isSameSite = target && current && target->scheme() == current->scheme() &&
                            target->host() == current->host();
    return !staysInProcess && !isSameSite;
}

double GtkWebPage::recentNavigations() const {
    const double seconds = Environment::scheduler().steadySeconds() - lastNavigation_;
    return std::max(0.0, navigations_ - seconds * navigationsASecond);
}

void GtkWebPage::loadChanged(int event) {
    watch_.progressSeen();
    isUntouched_ = false;
    const auto delegate = delegate_.lock();
    switch (event) {
        case WEBKIT_LOAD_STARTED:
            isOwnLoad_ = std::exchange(isRequested_, false);
            watch_.start(isOwnLoad_ ? requestTimeout_ : desktop::LoadWatch::defaultSeconds);
            state_ = LoadState::provisional;
            refusedRedirect_.reset();
            if (delegate) delegate->pageStarted();
            break;
        case WEBKIT_LOAD_COMMITTED:
            state_ = LoadState::committed;
            showsPage_ = true;
            if (delegate) delegate->pageCommitted();
            break;
        case WEBKIT_LOAD_FINISHED:
            // The engine also sends this after a failure.
            if (state_ == LoadState::none) break;
            loadEnded();
            if (delegate) delegate->pageFinished();
            break;
        default:
            break;
    }
}

void GtkWebPage::loadEnded() {
    state_ = LoadState::none;
    if (!isRequested_) watch_.stop();
}

void GtkWebPage::report(bool isCommitted, const Error& error) {
    const auto delegate = delegate_.lock();
    if (!delegate) return;
    if (isCommitted) {
        delegate->pageFailedAfterCommit(error);
    } else {
        delegate->pageFailedBeforeCommit(error);
    }
}

void GtkWebPage::loadFailed(bool isCommitted, const char* failingUri, const GError& error) {
    if (state_ == LoadState::none) return;  // told already
    loadEnded();
    const auto refused = std::exchange(refusedRedirect_, std::nullopt);
    if (refused && failingUri != nullptr && *refused == failingUri) return;
    // The engine found nothing to show, and what the page started leaves the page as it is.
    const bool hasNothingToShow = g_error_matches(
        &error, WEBKIT_POLICY_ERROR, WEBKIT_POLICY_ERROR_FRAME_LOAD_INTERRUPTED_BY_POLICY_CHANGE);
    if (hasNothingToShow && !isOwnLoad_ && showsPage_) return;
    report(isCommitted, errorFrom(error));
}

void GtkWebPage::timedOut() {
    const bool isCommitted = state_ == LoadState::committed;
    // A load that was refused ended without a word.
    const bool isLoading = state_ != LoadState::none || webkit_web_view_is_loading(view_.get());
    state_ = LoadState::none;
    isRequested_ = false;
    if (!isLoading) return;
    stopLoading();
    askProcess(patienceAfterTimeout);
    report(isCommitted, webPageError(WebPageErrorCode::timedOut, "The request timed out."));
}

void GtkWebPage::customerActed() {
    if (showsPage_) askProcess(hungSeconds_);
}

void GtkWebPage::askProcess(double patience) {
    if (probe_) return;
    probe_ = std::make_unique<ProcessProbe>(
        Environment::scheduler(), askOf(view_.get()), patience,
        [this](ProcessProbe::Answer answer) {
            probe_.reset();
            // A script waits for the answer to its panel as long as it takes.
            if (answer == ProcessProbe::Answer::silent && openPanel_.expired()) endProcess();
        });
}

void GtkWebPage::endProcess() {
    webkit_web_view_terminate_web_process(view_.get());
}

void GtkWebPage::webProcessEnded() {
    probe_.reset();
    if (std::exchange(isUntouched_, false) && isRequested_) {
        // The process was dead or dying when this page took it over, and nobody had heard of it
        // yet. A new one takes the load.
        webkit_web_view_load_uri(view_.get(), requestedUri_.c_str());
        return;
    }
    const bool wasInUse = showsPage_ || state_ != LoadState::none || isRequested_;
    showsPage_ = false;
    isRequested_ = false;
    loadEnded();
    if (!wasInUse) return;
    // Nothing is left of a page that was committed: whoever shows it has to begin anew.
    report(false,
           webPageError(WebPageErrorCode::webProcessEnded, "The web process ended unexpectedly."));
}

}  // namespace zorvik::platform::gtk
