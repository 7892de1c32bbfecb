#pragma once

#include <memory>

namespace zorvik::tests {

// How long the main thread keeps a task waiting that is due: what a customer feels as a window that
// does not answer. Counts what the thread works (processor time) and what it waits for others
// outside the main loop's own sleep; the time in which the machine gave it no processor is taken
// off, so that a busy machine does not count, and so is what a test does between two loops. Main
// thread only; needs an installed port whose main loop is GLib's.
class MainThreadWatch {
  public:
    MainThreadWatch();
    MainThreadWatch(const MainThreadWatch&) = delete;
    MainThreadWatch& operator=(const MainThreadWatch&) = delete;
    ~MainThreadWatch();

    // Around each run of the main loop, and inside out around what the test does within one.
    void enterLoop();
    void leaveLoop();

    // Of the longest wait since the last call, in milliseconds: all of it, and the work alone.
    struct Longest {
        double total = 0;
        double work = 0;
    };
    Longest takeLongest();

  private:
    struct Beats;
    std::shared_ptr<Beats> beats_;
};

}  // namespace zorvik::tests
