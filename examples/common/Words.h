#pragma once

#include <functional>
#include <string>
#include <thread>

namespace zorvik::demo {

// How the demonstration's UPI apps tell what happens in them: lines through the named pipe that
// ZORVIK_DEMO_WORDS names. Whoever made the pipe keeps it open, so that a line waits in it until
// somebody reads.

// Says a line, such as "step Nilgiri Pay opens"; nothing without a pipe. Any thread.
void say(const std::string& line);

// Hears the lines for as long as it lives, on a thread of its own that ends with it.
class Listener {
  public:
    explicit Listener(std::function<void(const std::string& line)> hear);
    ~Listener();
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

  private:
    std::thread thread_;
};

}  // namespace zorvik::demo
