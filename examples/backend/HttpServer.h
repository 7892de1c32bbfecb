#pragma once

#include <functional>
#include <memory>
#include <string>

#include "examples/backend/Http.h"

namespace zorvik::demo {

// A loopback HTTP server on GLib's default main context. Main thread only.
class HttpServer {
  public:
    using Handler = std::function<HttpResponse(const HttpRequest&)>;

    // Listens on 127.0.0.1 (and ::1 when there is one); port 0 takes a free one. nullptr, with a
    // line on standard error, when the port is taken.
    static std::unique_ptr<HttpServer> listen(unsigned port, Handler handler);
    ~HttpServer();

    unsigned port() const;

  private:
    struct Parts;
    explicit HttpServer(std::unique_ptr<Parts> parts);

    std::unique_ptr<Parts> parts_;
};

}  // namespace zorvik::demo
