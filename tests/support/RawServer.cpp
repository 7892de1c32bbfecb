#include "tests/support/RawServer.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <utility>

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
    if (number < 0 || bind(number, generic, size) != 0 ||
        getsockname(number, generic, &size) != 0) {
        std::perror("RawServer");
        std::abort();
    }
    port = ntohs(address.sin_port);
    return number;
}

void sendAll(int connection, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = send(connection, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (count <= 0) return;
        bytes.remove_prefix(static_cast<std::size_t>(count));
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

void RawServer::reply(const std::string& path, Reply reply) {
    const std::scoped_lock lock(mutex_);
    replies_[path] = std::move(reply);
}

void RawServer::replyPage(const std::string& path, const std::string& body) {
    reply(path, {response("200 OK", "<!doctype html><meta charset=utf-8><title>" + path +
                                        "</title><body>" + body)});
}

void RawServer::replyRedirect(const std::string& path, const std::string& target) {
    reply(path, {response("302 Found", "", "Location: " + target + "\r\n")});
}

std::string RawServer::address(const std::string& path) const {
    return "http://127.0.0.1:" + std::to_string(port_) + path;
}

std::string RawServer::refusedAddress(const std::string& path) const {
    return "http://127.0.0.1:" + std::to_string(refusedPort_) + path;
}

std::vector<std::string> RawServer::requests() const {
    const std::scoped_lock lock(mutex_);
    return requests_;
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
        if (std::isalpha(static_cast<unsigned char>(request[0])) == 0) break;  // no HTTP
    }
    const auto start = request.find(' ');
    const auto end = start == std::string::npos ? start : request.find(' ', start + 1);
    Reply answer{response("404 Not Found", "")};
    if (end != std::string::npos) {
        const std::scoped_lock lock(mutex_);
        requests_.push_back(request);
        std::string path = request.substr(start + 1, end - start - 1);
        path.resize(std::min(path.size(), path.find('?')));
        const auto found = replies_.find(path);
        if (found != replies_.end()) answer = found->second;
    }
    if (end != std::string::npos) sendAll(connection, answer.bytes);
    for (const std::string& piece : answer.pieces) {
        std::this_thread::sleep_for(std::chrono::duration<double>(answer.secondsBetween));
        sendAll(connection, piece);
    }
    if (answer.afterwards == Afterwards::holdOpen) {
        while (recv(connection, buffer, sizeof buffer, 0) > 0)
            continue;
    }
    const std::scoped_lock lock(mutex_);
    std::erase(connections_, connection);
    close(connection);
}

}  // namespace zorvik::tests
