#pragma once

#include <map>
#include <string>

#include "platform/foundation/Value.h"

namespace zorvik::demo {

struct HttpRequest {
    std::string method;
    std::string path;
    std::map<std::string, std::string> query;  // percent-decoded, "+" stays "+"
    std::string body;
};

struct HttpResponse {
    unsigned status = 200;
    std::string contentType;
    std::string body;
    unsigned delayMilliseconds = 0;
    bool closesConnection = false;  // no answer at all, as when the network is gone
};

HttpResponse jsonResponse(unsigned status, const platform::Dictionary& fields);
// {"error": message}
HttpResponse errorResponse(unsigned status, const std::string& message);

}  // namespace zorvik::demo
