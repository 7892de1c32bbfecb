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
    enum class Afterwards { close, holdOpen };

    struct Reply {
        std::string bytes;
        Afterwards afterwards = Afterwards::close;
        // More bytes, each piece this long after the one before.
        std::vector<std::string> pieces = {};
        double secondsBetween = 0;
    };

    RawServer();
    RawServer(const RawServer&) = delete;
    RawServer& operator=(const RawServer&) = delete;
    ~RawServer();

    // What a request for this path is answered with; without a reply it is 404.
    void reply(const std::string& path, Reply reply);
    void replyPage(const std::string& path, const std::string& body);
    void replyRedirect(const std::string& path, const std::string& target);

    std::string address(const std::string& path) const;
    // Nobody listens there as long as the server exists.
    std::string refusedAddress(const std::string& path) const;
    // The request lines and headers so far, in order of arrival.
    std::vector<std::string> requests() const;

    // An ordinary answer with its length.
    static std::string response(const std::string& status, const std::string& body,
                                const std::string& headers = "");

  private:
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
