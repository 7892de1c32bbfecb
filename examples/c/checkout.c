/* A checkout on the headless port, from the order token to the result: no display, no network. */
#include <stdio.h>
#include <string.h>

#include "c/zorvik_checkout.h"

/* The core services of this example know one order and one UPI app, and answer at once. A real
 * host asks its back end and answers from whichever thread hears of it. */
static void update_order(void* user_data, const char* token, const char* order_id,
                         const char* callback_mode, const char* referrer_platform,
                         const char* referrer_platform_version, zorvik_completion* completion) {
    (void)user_data, (void)token, (void)callback_mode, (void)referrer_platform;
    (void)referrer_platform_version;
    printf("order update: %s\n", order_id);
    if (strcmp(order_id, "order-1") == 0) {
        zorvik_completion_succeed(completion,
                                  "{\"orderId\": \"order-1\", \"status\": \"CREATED\"}");
    } else {
        zorvik_completion_fail(completion, "No such order");
    }
    zorvik_completion_free(completion);
}

static void list_upi_apps(void* user_data, const char* token, zorvik_completion* completion) {
    (void)user_data, (void)token;
    zorvik_completion_succeed(completion,
                              "[{\"upiAppName\": \"Nilgiri Pay\", \"packageName\": \"nilgiri\"}]");
    zorvik_completion_free(completion);
}

static void page_address(void* user_data, zorvik_text* answer) {
    (void)user_data;
    zorvik_text_set(answer, "https://pay.example/checkout");
}

static void response_address(void* user_data, zorvik_text* answer) {
    (void)user_data;
    zorvik_text_set(answer, "https://pay.example/response");
}

/* Every page loads. */
static zorvik_load load(void* user_data, const char* url) {
    (void)user_data;
    printf("page: %.28s\n", url);
    return ZORVIK_LOAD_FINISHES;
}

static void ignore(void* user_data, const char* line) {
    (void)user_data, (void)line;
}

static void respond(void* user_data, const char* response_json) {
    printf("result: %.20s\n", response_json); /* a failure goes on to the order token */
    *(int*)user_data += 1;
}

int main(void) {
    int responses = 0;
    const zorvik_core_services services = {.size = sizeof(zorvik_core_services),
                                           .update_order = update_order,
                                           .list_upi_apps = list_upi_apps,
                                           .page_address = page_address,
                                           .response_address = response_address};
    zorvik_headless* platform = zorvik_headless_make(ZORVIK_BACKGROUND_MANUAL);
    zorvik_presenter* presenter = zorvik_headless_presenter(platform);
    zorvik_delegate* delegate = zorvik_delegate_make(respond, &responses, NULL);
    char* token = zorvik_make_order_token("{\"order_id\": \"order-1\"}");
    const zorvik_checkout_options options = {.order_token = token};

    zorvik_set_console(ignore, NULL, NULL); /* the component's own diagnostics */
    zorvik_set_core_services(&services);
    zorvik_headless_on_load(platform, load, NULL, NULL);
    zorvik_set_delegate(delegate);
    if (zorvik_checkout(presenter, &options) != ZORVIK_OK) {
        fprintf(stderr, "no checkout: %s\n", zorvik_last_error());
    }
    zorvik_headless_advance(platform, 1); /* the screen opens and loads the page */

    zorvik_headless_page_navigate(platform, /* where the page goes once the customer has paid */
                                  "https://pay.example/response?response="
                                  "%7B%22payload%22:%7B%22status%22:%22SUCCESS%22%7D%7D");
    zorvik_headless_advance(platform, 1); /* the host hears of it and the screen closes */

    zorvik_string_free(token);
    zorvik_presenter_free(presenter);
    zorvik_delegate_free(delegate);
    zorvik_headless_free(platform);
    return responses == 1 ? 0 : 1;
}
