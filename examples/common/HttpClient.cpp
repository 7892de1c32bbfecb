#include "examples/common/HttpClient.h"

#include <libsoup/soup.h>

#include <memory>

#include "examples/common/OrderRecordJSON.h"
#include "platform/foundation/JSONSerialization.h"

namespace zorvik::demo {

namespace {

using platform::Dictionary;
using platform::Error;
using platform::JSONSerialization;
using platform::Result;

constexpr unsigned timeoutSeconds = 5;

struct Unref {
    void operator()(void* object) const { g_object_unref(object); }
};
struct ReleaseBytes {
    void operator()(GBytes* bytes) const { g_bytes_unref(bytes); }
};

Error failed(std::string description) {
    return Error{"zorvik.demo.http", 1, std::move(description)};
}

std::string errorMessageIn(const Dictionary& answer, unsigned status) {
    const auto found = answer.find("error");
    const std::string* text = found == answer.end() ? nullptr : found->second.string();
    return text ? *text : "The back end answered with status " + std::to_string(status);
}

}  // namespace

Result<Dictionary> exchange(const std::string& method, const std::string& url,
                            const std::optional<Dictionary>& body) {
    const std::unique_ptr<SoupMessage, Unref> message(
        soup_message_new(method.c_str(), url.c_str()));
    if (!message) return failed("\"" + url + "\" is no address");
    if (body) {
        const auto json = JSONSerialization::data(*body);
        if (!json) return json.error();
        GBytes* bytes = g_bytes_new(json.value().data(), json.value().size());
        soup_message_set_request_body_from_bytes(message.get(), "application/json", bytes);
        g_bytes_unref(bytes);
    }
    const std::unique_ptr<SoupSession, Unref> session(
        soup_session_new_with_options("timeout", timeoutSeconds, nullptr));
    GError* error = nullptr;
    const std::unique_ptr<GBytes, ReleaseBytes> bytes(
        soup_session_send_and_read(session.get(), message.get(), nullptr, &error));
    if (!bytes) {
        std::string description = error->message;
        g_error_free(error);
        return failed(std::move(description));
    }
    gsize size = 0;
    const auto* data = static_cast<const char*>(g_bytes_get_data(bytes.get(), &size));
    const auto answer = JSONSerialization::jsonObject(std::string_view(data, size),
                                                      JSONSerialization::ReadingOptions::none);
    const Dictionary* fields = answer ? answer.value().dictionary() : nullptr;
    const unsigned status = soup_message_get_status(message.get());
    if (!SOUP_STATUS_IS_SUCCESSFUL(status)) {
        return failed(errorMessageIn(fields ? *fields : Dictionary(), status));
    }
    if (!fields) return failed("The back end's answer is no JSON object");
    return *fields;
}

std::string percentEncoded(std::string_view text) {
    char* escaped =
        g_uri_escape_bytes(reinterpret_cast<const guint8*>(text.data()), text.size(), nullptr);
    std::string result = escaped;
    g_free(escaped);
    return result;
}

}  // namespace zorvik::demo
