#include "examples/backend/HttpServer.h"

#include <libsoup/soup.h>

#include <iostream>

#include "platform/foundation/URLComponents.h"

namespace zorvik::demo {

struct HttpServer::Parts {
    SoupServer* server = nullptr;
    Handler handler;
    unsigned port = 0;
};

namespace {

HttpRequest requestFrom(SoupServerMessage* message, const char* path) {
    HttpRequest request{soup_server_message_get_method(message), path, {}, {}};
    // The query is read strictly, not as a form: a "+" in a token is a plus sign.
    const char* query = g_uri_get_query(soup_server_message_get_uri(message));
    if (const auto parts =
            platform::URLComponents::parse(std::string("?") + (query ? query : ""))) {
        for (const auto& item :
             parts->queryItems().value_or(std::vector<platform::URLQueryItem>())) {
            request.query[item.name] = item.value.value_or("");
        }
    }
    const SoupMessageBody* body = soup_server_message_get_request_body(message);
    if (body->data) request.body.assign(body->data, static_cast<std::size_t>(body->length));
    return request;
}

void close(SoupServerMessage* message) {
    GIOStream* stream = soup_server_message_steal_connection(message);
    g_io_stream_close(stream, nullptr, nullptr);
    g_object_unref(stream);
}

// Holds the answer back, then goes on with it.
void later(unsigned milliseconds, SoupServerMessage* message, void (*goOn)(SoupServerMessage*)) {
    struct Held {
        SoupServerMessage* message;
        void (*goOn)(SoupServerMessage*);
    };
    soup_server_message_pause(message);
    g_timeout_add_full(
        G_PRIORITY_DEFAULT, milliseconds,
        [](gpointer data) -> gboolean {
            const auto* held = static_cast<Held*>(data);
            held->goOn(held->message);
            return G_SOURCE_REMOVE;
        },
        new Held{SOUP_SERVER_MESSAGE(g_object_ref(message)), goOn},
        [](gpointer data) {
            const auto* held = static_cast<Held*>(data);
            g_object_unref(held->message);
            delete held;
        });
}

void answer(SoupServer*, SoupServerMessage* message, const char* path, GHashTable*,
            gpointer handler) {
    const HttpResponse response =
        (*static_cast<HttpServer::Handler*>(handler))(requestFrom(message, path));
    if (response.closesConnection) {
        if (response.delayMilliseconds > 0)
            return later(response.delayMilliseconds, message, close);
        return close(message);
    }
    SoupMessageHeaders* headers = soup_server_message_get_response_headers(message);
    soup_message_headers_replace(headers, "Cache-Control", "no-store");
    soup_message_headers_replace(headers, "X-Content-Type-Options", "nosniff");
    soup_message_headers_replace(headers, "Referrer-Policy", "no-referrer");
    soup_message_headers_replace(headers, "Content-Security-Policy",
                                 "default-src 'self'; img-src 'self' data: http://127.0.0.1:*; "
                                 "base-uri 'none'; form-action 'none'; frame-ancestors 'none'");
    soup_server_message_set_status(message, response.status, nullptr);
    soup_server_message_set_response(message, response.contentType.c_str(), SOUP_MEMORY_COPY,
                                     response.body.data(), response.body.size());
    if (response.delayMilliseconds > 0) {
        later(response.delayMilliseconds, message, soup_server_message_unpause);
    }
}

}  // namespace

std::unique_ptr<HttpServer> HttpServer::listen(unsigned port, Handler handler) {
    auto parts = std::make_unique<Parts>();
    parts->handler = std::move(handler);
    parts->server = soup_server_new(nullptr, nullptr);
    GError* error = nullptr;
    if (!soup_server_listen_local(parts->server, port, SoupServerListenOptions{}, &error)) {
        std::cerr << "Port " << port << " cannot be listened on: " << error->message << '\n';
        g_error_free(error);
        g_object_unref(parts->server);
        return nullptr;
    }
    GSList* addresses = soup_server_get_uris(parts->server);
    parts->port = static_cast<unsigned>(g_uri_get_port(static_cast<GUri*>(addresses->data)));
    g_slist_free_full(addresses, reinterpret_cast<GDestroyNotify>(g_uri_unref));
    soup_server_add_handler(parts->server, nullptr, answer, &parts->handler, nullptr);
    return std::unique_ptr<HttpServer>(new HttpServer(std::move(parts)));
}

HttpServer::HttpServer(std::unique_ptr<Parts> parts) : parts_(std::move(parts)) {}

HttpServer::~HttpServer() {
    soup_server_disconnect(parts_->server);
    g_object_unref(parts_->server);
}

unsigned HttpServer::port() const {
    return parts_->port;
}

}  // namespace zorvik::demo
