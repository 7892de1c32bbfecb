#include "tests/support/MainThreadWatch.h"

#include <glib.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <string>
#include <utility>

#include "platform/runtime/Environment.h"

namespace zorvik::tests {
namespace {

constexpr double interval = 10;

double milliseconds(clockid_t clock) {
    timespec time = {};
    clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

// Of the calling thread, which is ready to run but has no processor.
double millisecondsInQueue() {
    static const std::string path = "/proc/self/task/" + std::to_string(syscall(SYS_gettid));
    std::ifstream file(path + "/schedstat");
    double running = 0, queued = 0;
    file >> running >> queued;
    return queued / 1e6;
}

double asleep = 0;  // in the main loop, without the time in the queue

gint pollAndCount(GPollFD* descriptors, guint count, gint timeout) {
    if (timeout == 0) return g_poll(descriptors, count, 0);
    const double start = milliseconds(CLOCK_MONOTONIC) - millisecondsInQueue();
    const gint result = g_poll(descriptors, count, timeout);
    asleep += milliseconds(CLOCK_MONOTONIC) - millisecondsInQueue() - start;
    return result;
}

struct Moment {
    double busy = milliseconds(CLOCK_MONOTONIC) - millisecondsInQueue() - asleep;
    double work = milliseconds(CLOCK_THREAD_CPUTIME_ID);
};

}  // namespace

struct MainThreadWatch::Beats : std::enable_shared_from_this<Beats> {
    Moment last;
    Moment left;  // when the loop was left
    Longest longest;

    void schedule() {
        platform::Environment::scheduler().runOnMainAfter(interval / 1e3,
                                                          [beats = weak_from_this()] {
                                                              if (const auto self = beats.lock())
                                                                  self->beat();
                                                          });
    }
    void beat() {
        const Moment now;
        longest.total = std::max(longest.total, now.busy - last.busy);
        longest.work = std::max(longest.work, now.work - last.work);
        last = now;
        schedule();
    }
};

MainThreadWatch::MainThreadWatch() {
    g_main_context_set_poll_func(nullptr, pollAndCount);
    beats_ = std::make_shared<Beats>();
    beats_->schedule();
}

MainThreadWatch::~MainThreadWatch() {
    g_main_context_set_poll_func(nullptr, nullptr);
}

void MainThreadWatch::enterLoop() {
    const Moment now;
    beats_->last.busy += now.busy - beats_->left.busy;
    beats_->last.work += now.work - beats_->left.work;
}

void MainThreadWatch::leaveLoop() {
    beats_->left = {};
}

MainThreadWatch::Longest MainThreadWatch::takeLongest() {
    return std::exchange(beats_->longest, {});
}

}  // namespace zorvik::tests
