/*
 * The checkout for C, and for every language that can call C. Link libzorvik_c, which brings the
 * headless port, or in its place libzorvik_c_gtk: the same, and the GTK port besides.
 *
 * Text is UTF-8 ended by a NUL. What is passed in is copied; what a callback is given is valid
 * until it returns; a char* that a function returns is the caller's: zorvik_string_free.
 *
 * A refused call changes nothing and says so by its result or a NULL; zorvik_last_error tells why.
 * NULL is refused wherever it is not said to be allowed. A handle that was freed is not recognised.
 *
 * The thread that makes a platform is the main thread until that platform is freed. Functions are
 * called there, with a platform in being, unless they say otherwise: "any thread" means at any
 * time.
 *
 * A callback comes with user_data and a destroy function for it (either may be NULL). destroy is
 * called once, when nothing will call the callback any more, also when the call was refused, on the
 * thread that let go of it. A callback may call anything but what frees a platform. An exception
 * does not leave a callback: it is told on standard error and ends there.
 */
#ifndef ZORVIK_CHECKOUT_H
#define ZORVIK_CHECKOUT_H

#include <stdbool.h>
#include <stddef.h>

#if defined(__GNUC__)
#define ZORVIK_FUNCTION __attribute__((visibility("default")))
#else
#define ZORVIK_FUNCTION
#endif

#ifdef __cplusplus
extern "C" {
#endif

typedef enum zorvik_result {
    ZORVIK_OK = 0,
    ZORVIK_INVALID_ARGUMENT, /* NULL, not UTF-8, not the JSON that was asked for */
    ZORVIK_WRONG_STATE,      /* no platform or a second one, no page, answered already */
    ZORVIK_WRONG_THREAD,     /* not the main thread */
    ZORVIK_FAILED            /* what was asked for did not come about */
} zorvik_result;

typedef struct zorvik_completion zorvik_completion;
typedef struct zorvik_delegate zorvik_delegate;
typedef struct zorvik_gtk zorvik_gtk;
typedef struct zorvik_headless zorvik_headless;
typedef struct zorvik_presenter zorvik_presenter;
typedef struct zorvik_text zorvik_text; /* where a callback puts its answer */

typedef void (*zorvik_destroy)(void* user_data);
typedef void (*zorvik_text_function)(void* user_data, const char* text);
/* Exactly one of the two is not NULL: the JSON of a success, or what went wrong. */
typedef void (*zorvik_answer_function)(void* user_data, const char* json, const char* error);

/* Any thread. The component's version; valid for ever. */
ZORVIK_FUNCTION const char* zorvik_version(void);
/* Any thread. Why this thread's latest refused call was refused, "" before; valid until the next.
 */
ZORVIK_FUNCTION const char* zorvik_last_error(void);
/* Any thread. Its kind; tells what a NULL stands for. */
ZORVIK_FUNCTION zorvik_result zorvik_last_result(void);
/* Any thread. NULL is allowed. */
ZORVIK_FUNCTION void zorvik_string_free(char* text);
/* Gives the answer that a callback was asked for, during the call; a second one replaces it. */
ZORVIK_FUNCTION zorvik_result zorvik_text_set(zorvik_text* answer, const char* text);
/* Any thread. Sends the component's console lines to a callback, which any thread may call, instead
 * of standard output. NULL: back there. */
ZORVIK_FUNCTION zorvik_result zorvik_set_console(zorvik_text_function line, void* user_data,
                                                 zorvik_destroy destroy);
/* Any thread. An order token that carries these claims (a JSON object) and proves nothing: for
 * tests and examples. NULL: refused. */
ZORVIK_FUNCTION char* zorvik_make_order_token(const char* claims_json);

/* ---- The core services -------------------------------------------------------------------------
 * What talks to the payment back end. Every call that is given a completion answers it once, on any
 * thread, inside the call or later, and frees it.
 */
typedef struct zorvik_core_services {
    size_t size; /* sizeof(zorvik_core_services) */
    void* user_data;
    zorvik_destroy destroy;

    /* Main thread; success: an order, {"orderId", "orderToken", "status"}, each may be missing. */
    void (*update_order)(void* user_data, const char* token, const char* order_id,
                         const char* callback_mode, const char* referrer_platform,
                         const char* referrer_platform_version, zorvik_completion* completion);
    /* Main thread; success: an array of {"upiAppCode", "upiAppName", "packageName", "logoUrl"}. */
    void (*list_upi_apps)(void* user_data, const char* token, zorvik_completion* completion);
    /* Main thread; success: an object, which may reach the host as it is; its "order" with a
     * "status" tells how the order stands. */
    void (*enquire_transaction)(void* user_data, const char* token, const char* order_id,
                                const char* invoice_id, const char* transaction_id,
                                zorvik_completion* completion);
    /* The thread of zorvik_create_order; success: an order, as above. */
    void (*create_order)(void* user_data, double amount, const char* currency,
                         const char* line_items_json, const char* user_json /* or NULL */,
                         zorvik_completion* completion);
    /* The thread of zorvik_create_shop_order; success: an object. */
    void (*create_shop_order)(void* user_data, const char* order_json,
                              zorvik_completion* completion);
    /* Any thread, several at once: {"event", "orderId", "token", "subMerchantId", "additionalData",
     * "sdkVersion", "appCode"}, null for what is absent. */
    zorvik_text_function log_event;
    /* Main thread: the hosted checkout page's address; no answer counts as "". */
    void (*page_address)(void* user_data, zorvik_text* answer);
    /* Main thread: where the page goes to hand back a payment response. */
    void (*response_address)(void* user_data, zorvik_text* answer);
    /* Main thread: whether a UPI app hands control back by this address. */
    bool (*is_return_url)(void* user_data, const char* url);
    /* Main thread: the host asked for another back end. */
    zorvik_text_function set_environment_url;
} zorvik_core_services;

/* Any thread. From now on these are asked; the struct is copied, the former one let go of once its
 * last call has returned. A function that is NULL counts as one that fails with an error which
 * names it, drops its event or says no. NULL for services: none, and every call fails so. */
ZORVIK_FUNCTION zorvik_result zorvik_set_core_services(const zorvik_core_services* services);
/* Any thread. Answers with JSON of the kind the service's function names. Refused: JSON of another
 * kind, which leaves the completion open, and a second answer. */
ZORVIK_FUNCTION zorvik_result zorvik_completion_succeed(zorvik_completion* completion,
                                                        const char* json);
/* Any thread. Answers with a failure in words. Refused: a second answer. */
ZORVIK_FUNCTION zorvik_result zorvik_completion_fail(zorvik_completion* completion,
                                                     const char* message);
/* Any thread. Freeing one that was not answered answers with an error. NULL is allowed. */
ZORVIK_FUNCTION void zorvik_completion_free(zorvik_completion* completion);

/* ---- The checkout ---------------------------------------------------------------------------- */
typedef struct zorvik_checkout_options { /* each may be NULL: absent */
    const char* order_token;             /* header.claims.signature, from the merchant's back end */
    const char* wallet_code;
    const char* payment_flow;
    const char* payment_mode_code; /* a preselected payment method, with its bank code */
    const char* bank_code;
} zorvik_checkout_options;

/* A receiver of results, each a JSON object, called on the main thread; the caller's. Any thread.
 * NULL: refused. */
ZORVIK_FUNCTION zorvik_delegate* zorvik_delegate_make(zorvik_text_function response,
                                                      void* user_data, zorvik_destroy destroy);
/* Any thread, inside its own callback too. It receives nothing more, but off the main thread a call
 * that is under way may end after this returns. NULL is allowed. */
ZORVIK_FUNCTION void zorvik_delegate_free(zorvik_delegate* delegate);
/* Results go to the delegate of the moment the checkout started, as long as it is not freed. A
 * failure before the screen opened goes to that of its own moment. NULL: nobody from now on. */
ZORVIK_FUNCTION zorvik_result zorvik_set_delegate(zorvik_delegate* delegate);
/* The back end's base address; NULL and "" change nothing. */
ZORVIK_FUNCTION zorvik_result zorvik_set_environment_url(const char* url);
/* Names the host's application in later events; NULL and "" keep an earlier code. */
ZORVIK_FUNCTION zorvik_result zorvik_initialize(const char* app_code);
/* Takes the payment of an order; returns at once. NULL for options, or no order token in them: an
 * event and nothing more. */
ZORVIK_FUNCTION zorvik_result zorvik_checkout(zorvik_presenter* presenter,
                                              const zorvik_checkout_options* options);
/* Tells the open checkout screen, if any, of a back action of the host's. */
ZORVIK_FUNCTION zorvik_result zorvik_device_back(void);
/* Creates an order by the core services; line_items_json: an array of objects, user_json: an object
 * or NULL. The answer comes on their thread. */
ZORVIK_FUNCTION zorvik_result zorvik_create_order(double amount, const char* currency,
                                                  const char* line_items_json,
                                                  const char* user_json,
                                                  zorvik_answer_function answer, void* user_data,
                                                  zorvik_destroy destroy);
/* The same with a JSON object: the strings "currency", "amount", "productId", "checkoutExperience",
 * "paymentMode", "subPaymentMode", the boolean "orderLineItems", the object "user" or none. */
ZORVIK_FUNCTION zorvik_result zorvik_create_shop_order(const char* order_json,
                                                       zorvik_answer_function answer,
                                                       void* user_data, zorvik_destroy destroy);
/* Any thread. NULL is allowed. */
ZORVIK_FUNCTION void zorvik_presenter_free(zorvik_presenter* presenter);

/* ---- The headless port: a virtual clock and a scripted page, for tests ------------------------
 */
typedef enum zorvik_background {
    ZORVIK_BACKGROUND_MANUAL = 0, /* background tasks run inside zorvik_headless_settle */
    ZORVIK_BACKGROUND_THREADS     /* on two threads of their own */
} zorvik_background;

typedef enum zorvik_load {
    ZORVIK_LOAD_NOT_SCRIPTED = 0, /* fails, and says so */
    ZORVIK_LOAD_FINISHES,
    ZORVIK_LOAD_FAILS_BEFORE_COMMIT,
    ZORVIK_LOAD_FAILS_AFTER_COMMIT,
    ZORVIK_LOAD_HANGS,
    ZORVIK_LOAD_HANGS_AFTER_COMMIT
} zorvik_load;
typedef zorvik_load (*zorvik_load_function)(void* user_data, const char* url);
/* The answer is JSON; without one the evaluation fails. */
typedef void (*zorvik_evaluation_function)(void* user_data, const char* script,
                                           zorvik_text* answer);

/* Makes the calling thread the main one. NULL: there is a platform already. */
ZORVIK_FUNCTION zorvik_headless* zorvik_headless_make(zorvik_background background);
/* Drops what is pending. Refused inside a callback and inside the functions that turn the queue. */
ZORVIK_FUNCTION zorvik_result zorvik_headless_free(zorvik_headless* headless);
/* Where checkouts are shown; the caller's, to be freed. */
ZORVIK_FUNCTION zorvik_presenter* zorvik_headless_presenter(zorvik_headless* headless);
/* Runs main-queue turns and background tasks until neither is left. Time stands still. */
ZORVIK_FUNCTION zorvik_result zorvik_headless_settle(zorvik_headless* headless);
/* Runs one main-queue turn; ran (may be NULL): whether there was one. */
ZORVIK_FUNCTION zorvik_result zorvik_headless_run_one_turn(zorvik_headless* headless, bool* ran);
/* Moves time on, running what comes due at its own time. */
ZORVIK_FUNCTION zorvik_result zorvik_headless_advance(zorvik_headless* headless, double seconds);
/* Sets the wall clock, in seconds since 1970-01-01 UTC; runs nothing. */
ZORVIK_FUNCTION zorvik_result zorvik_headless_set_now(zorvik_headless* headless, double seconds);
/* What each load, and each script evaluation, is answered with. NULL: nothing scripted. */
ZORVIK_FUNCTION zorvik_result zorvik_headless_on_load(zorvik_headless* headless,
                                                      zorvik_load_function load, void* user_data,
                                                      zorvik_destroy destroy);
ZORVIK_FUNCTION zorvik_result zorvik_headless_on_evaluate(zorvik_headless* headless,
                                                          zorvik_evaluation_function evaluate,
                                                          void* user_data, zorvik_destroy destroy);
/* What the youngest page does: goes to an address, posts a JSON value to a message handler. Refused
 * without a page, and without such a handler. */
ZORVIK_FUNCTION zorvik_result zorvik_headless_page_navigate(zorvik_headless* headless,
                                                            const char* url);
ZORVIK_FUNCTION zorvik_result zorvik_headless_page_post(zorvik_headless* headless,
                                                        const char* handler, const char* body_json);
/* The scripts that page was given so far, a JSON array of strings. NULL: refused, no page. */
ZORVIK_FUNCTION char* zorvik_headless_page_scripts(zorvik_headless* headless);
/* How many screens are shown. 0 also when refused. */
ZORVIK_FUNCTION size_t zorvik_headless_screen_count(zorvik_headless* headless);
/* An application for this scheme is there; accepts: whether its launches succeed. */
ZORVIK_FUNCTION zorvik_result zorvik_headless_install_scheme(zorvik_headless* headless,
                                                             const char* scheme, bool accepts);
/* Every address another application was asked to open, a JSON array. NULL: refused. */
ZORVIK_FUNCTION char* zorvik_headless_opened_urls(zorvik_headless* headless);
/* The customer comes back to this application, in a later turn. */
ZORVIK_FUNCTION zorvik_result zorvik_headless_become_active(zorvik_headless* headless);

/* ---- The GTK port: libzorvik_c_gtk only. A window is a GtkWindow* ------------------------------
 */
/* Where pages keep cookies and stored data. */
typedef enum zorvik_page_data {
    ZORVIK_PAGES_IN_MEMORY = 0, /* shared by all pages until the platform ends */
    ZORVIK_PAGES_ON_DISK = 1,   /* in the user's folders, for the next run too */
    ZORVIK_PAGES_FRESH = 2      /* for one page alone, as a kiosk wants it */
} zorvik_page_data;
/* What the GTK platform is made with. */
typedef struct zorvik_gtk_options {
    size_t size;                /* sizeof(zorvik_gtk_options) */
    const char* application_id; /* names the folder of the stored defaults */
    double safe_area_top, safe_area_left, safe_area_bottom, safe_area_right; /* points */
    zorvik_page_data page_data;
    bool without_spare_page; /* saves an idle page's memory; every checkout opens later */
} zorvik_gtk_options;

/* Makes the calling thread the main one; its work is done by GLib's default main context, whoever
 * runs that. NULL: a platform exists, no display, or a bad application_id. */
ZORVIK_FUNCTION zorvik_gtk* zorvik_gtk_make(const zorvik_gtk_options* options);
/* Waits two seconds at the most for background tasks. Refused inside a callback, and inside
 * zorvik_gtk_run and zorvik_gtk_run_until. */
ZORVIK_FUNCTION zorvik_result zorvik_gtk_free(zorvik_gtk* gtk);
/* An empty window, the platform's, until zorvik_gtk_close_window; closed (may be NULL): the
 * customer closed it, which hides it. NULL: refused. */
ZORVIK_FUNCTION void* zorvik_gtk_open_window(zorvik_gtk* gtk, const char* title, double width,
                                             double height, void (*closed)(void* user_data),
                                             void* user_data, zorvik_destroy destroy);
/* Nothing for a window of the host's own. */
ZORVIK_FUNCTION zorvik_result zorvik_gtk_close_window(zorvik_gtk* gtk, void* window);
/* Where checkouts are shown in this window, the host's own or one of the above; the caller's, to be
 * freed. NULL: refused, no window or one that was destroyed. */
ZORVIK_FUNCTION zorvik_presenter* zorvik_gtk_presenter(zorvik_gtk* gtk, void* window);
/* Runs the main loop until zorvik_gtk_quit; for a host that runs none of its own. */
ZORVIK_FUNCTION zorvik_result zorvik_gtk_run(zorvik_gtk* gtk);
ZORVIK_FUNCTION zorvik_result zorvik_gtk_quit(zorvik_gtk* gtk);
/* Runs it until the condition holds, asked after every turn; ZORVIK_FAILED: `seconds` passed. */
ZORVIK_FUNCTION zorvik_result zorvik_gtk_run_until(zorvik_gtk* gtk,
                                                   bool (*condition)(void* user_data),
                                                   void* user_data, double seconds);
/* Writes what the window shows as a PNG; ZORVIK_FAILED: nothing yet, or the file cannot be written.
 */
ZORVIK_FUNCTION zorvik_result zorvik_gtk_save_png(zorvik_gtk* gtk, void* window, const char* path);

#ifdef __cplusplus
}
#endif

#endif
