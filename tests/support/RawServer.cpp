#include "tests/support/RawServer.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <sstream>

namespace zorvik::tests {
namespace {

// A socket bound to a free port of 127.0.0.1.
int bindSocket(std::uint16_t& port) {
    const int number = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* generic = reinterpret_cast<sockaddr*>(&address);
    bind(number, generic, size);
    getsockname(number, generic, &size);
    port = ntohs(address.sin_port);
    return number;
}

// Until they are sent, or the other side is gone.
void sendAll(int connection, const std::string& bytes, double pause) {
    const std::size_t piece = pause > 0 ? 1 : bytes.size();
    for (std::size_t sent = 0; sent < bytes.size(); sent += piece) {
        if (send(connection, bytes.data() + sent, piece, MSG_NOSIGNAL) < 0) return;
        pollfd other{connection, POLLIN, 0};
        if (pause > 0 && poll(&other, 1, static_cast<int>(pause * 1000)) != 0) return;
    }
}

}  // namespace

RawServer::RawServer() : listener_(bindSocket(port_)), refusing_(bindSocket(refusedPort_)) {
    listen(listener_, 64);
    accepting_ = std::thread([this] { accept(); });
}

RawServer::~RawServer() {
    {
        const std::scoped_lock lock(mutex_);
        isStopping_ = true;
        for (const int connection : connections_)
            shutdown(connection, SHUT_RDWR);
    }
    shutdown(listener_, SHUT_RDWR);
    accepting_.join();
    for (std::thread& thread : threads_)
        thread.join();
    close(listener_);
    close(refusing_);
}

void RawServer::reply(const std::string& path, const std::string& bytes, bool holdsOpen,
                      double pause) {
    const std::scoped_lock lock(mutex_);
    replies_[path] = {bytes, holdsOpen, pause};
}

std::string RawServer::response(const std::string& status, const std::string& body,
                                const std::string& headers) {
    return "HTTP/1.1 " + status +
           "\r\nContent-Type: text/html\r\nContent-Length: " + std::to_string(body.size()) +
           "\r\nConnection: close\r\n" + headers + "\r\n" + body;
}

void RawServer::accept() {
    while (true) {
        const int connection = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
        const std::scoped_lock lock(mutex_);
        if (isStopping_ || connection < 0) {
            if (connection >= 0) close(connection);
            return;
        }
        connections_.push_back(connection);
        threads_.emplace_back([this, connection] { serve(connection); });
    }
}

void RawServer::serve(int connection) {
    std::string request;
    char buffer[4096];
    while (request.find("\r\n\r\n") == std::string::npos) {
        const ssize_t count = recv(connection, buffer, sizeof buffer, 0);
        if (count <= 0) break;
        request.append(buffer, static_cast<std::size_t>(count));
        if (request[0] < 'A') break;  // no HTTP
    }
    Reply answer{response("404 Not Found", "")};
    std::string path;
    if (std::istringstream(request).ignore(9, ' ') >> path && request.ends_with("\r\n\r\n")) {
        const std::scoped_lock lock(mutex_);
        requests_.push_back(request);
        const auto found = replies_.find(path.substr(0, path.find('?')));
        if (found != replies_.end()) answer = found->second;
    } else {
        answer = {};
    }
    sendAll(connection, answer.bytes, answer.pause);
    while (answer.holdsOpen && recv(connection, buffer, sizeof buffer, 0) > 0)
        continue;
    const std::scoped_lock lock(mutex_);
    std::erase(connections_, connection);
    close(connection);
}

}  // namespace zorvik::tests
