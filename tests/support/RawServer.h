#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace zorvik::tests {

// An HTTP server on 127.0.0.1 that says exactly what it is told, wrong things included: its
// replies are bytes. Threads of its own from construction to destruction.
class RawServer {
  public:
    RawServer();
    RawServer(const RawServer&) = delete;
    RawServer& operator=(const RawServer&) = delete;
    ~RawServer();

    // What a request for this path is answered with; without a reply it is 404. With a pause
    // (seconds) the bytes leave one at a time.
    void reply(const std::string& path, const std::string& bytes, bool holdsOpen = false,
               double pause = 0);
    void replyPage(const std::string& path, const std::string& body) {
        reply(path, response("200 OK", "<!doctype html><meta charset=utf-8><body>" + body));
    }

    std::string address(const std::string& path) const {
        return "http://127.0.0.1:" + std::to_string(port_) + path;
    }
    // Nobody listens there as long as the server exists.
    std::string refusedAddress(const std::string& path) const {
        return "http://127.0.0.1:" + std::to_string(refusedPort_) + path;
    }
    // The request lines and headers so far, in order of arrival.
    std::vector<std::string> requests() const {
        const std::scoped_lock lock(mutex_);
        return requests_;
    }

    static std::string response(const std::string& status, const std::string& body,
                                const std::string& headers = "");

  private:
    struct Reply {
        std::string bytes;
        bool holdsOpen = false;
        double pause = 0;
    };

    void accept();
    void serve(int connection);

    // The ports first: making the sockets fills them in.
    std::uint16_t port_ = 0;
    std::uint16_t refusedPort_ = 0;
    const int listener_;
    const int refusing_;
    mutable std::mutex mutex_;
    bool isStopping_ = false;
    std::map<std::string, Reply> replies_;
    std::vector<std::string> requests_;
    std::vector<int> connections_;
    std::vector<std::thread> threads_;
    std::thread accepting_;
};

}  // namespace zorvik::tests
