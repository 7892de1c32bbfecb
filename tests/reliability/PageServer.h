#pragma once

#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <string>

#include "tests/support/RawServer.h"

namespace zorvik::tests {

// Checkout pages on 127.0.0.1, one for each way in which a page behaves, by path. In a process of
// its own, so that what it holds is not counted; made before any thread. Ends with this object.
class PageServer {
  public:
    // The paths, in the order of the ways of Step::Kind::loads, and what only a real page does.
    static constexpr std::array paths{"/finish",      "/refused", "/half",       "/hangs",
                                      "/hangs-later", "/saved",   "/bank",       "/responds",
                                      "/returns",     "/pays",    "/pays-twice", "/busy"};

    PageServer() {
        int ends[2];
        if (pipe(ends) != 0) _exit(1);
        const pid_t parent = getpid();
        child_ = fork();
        if (child_ == 0) {
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            if (getppid() != parent) _exit(1);
            serve(ends[1]);
        }
        close(ends[1]);
        std::string text;
        for (char byte = 0; read(ends[0], &byte, 1) == 1 && byte != '\n';)
            text += byte;
        close(ends[0]);
        const auto space = text.find(' ');
        base_ = text.substr(0, space);
        refused_ = text.substr(space + 1);
    }
    PageServer(const PageServer&) = delete;
    PageServer& operator=(const PageServer&) = delete;
    ~PageServer() {
        kill(child_, SIGKILL);
        waitpid(child_, nullptr, 0);
    }

    std::string address(const std::string& path) const {
        return (path == "/refused" ? refused_ : base_) + path;
    }

  private:
    [[noreturn]] static void serve(int out) {
        RawServer server;
        const std::string half =
            "HTTP/1.1 200 OK\r\nContent-Type: text/html\r\nContent-Length: 100000\r\n\r\n"
            "<!doctype html><title>half</title><body>" +
            std::string(2000, ' ');
        const std::string answer =
            server.address("/response") + "?response=%7B%22payload%22%3A%7B%22answer%22%3A";
        const auto redirect = [&](const std::string& path, const std::string& target) {
            server.reply(path,
                         RawServer::response("302 Found", "", "Location: " + target + "\r\n"));
        };
        server.replyPage("/finish", "ready");
        server.replyPage("/another", "the bank");
        server.reply("/half", half);
        server.reply("/hangs", "", true);
        server.reply("/hangs-later", half, true);
        server.reply("/saved", RawServer::response("200 OK", "<p>saved",
                                                   "Content-Disposition: attachment\r\n"));
        redirect("/bank", server.address("/another"));
        redirect("/responds", answer + "1%7D%7D");
        redirect("/returns", "testkit-return://upi?status=failure&tr=t-0");
        server.replyPage("/pays", "<script>location.href='" + answer + "2%7D%7D'</script>");
        server.replyPage("/pays-twice", "<script>location.href='" + answer +
                                            "3%7D%7D';setTimeout(()=>{location.href='" + answer +
                                            "4%7D%7D'},0)</script>");
        server.replyPage("/busy", "<script>setTimeout(()=>{for(;;);},30)</script>");
        const std::string text = server.address("") + " " + server.refusedAddress("") + "\n";
        if (write(out, text.data(), text.size()) < 0) _exit(1);
        for (;;)
            pause();
    }

    pid_t child_ = 0;
    std::string base_;
    std::string refused_;
};

}  // namespace zorvik::tests
