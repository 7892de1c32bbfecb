#pragma once

#include <mutex>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "platform/foundation/Export.h"
#include "platform/foundation/Value.h"

namespace zorvik::development {

// One analytics event as the component logged it. A value.
struct RecordedEvent {
    std::string eventName;
    std::optional<std::string> orderId;
    std::optional<std::string> token;
    std::optional<std::string> subMerchantId;
    std::optional<platform::Dictionary> additionalData;
    std::string sdkVersion;
    std::optional<std::string> appCode;  // the host's code in force when the event was logged
};

// Where events go. Shared by the configuration and its owner; called on any thread, several at
// once.
class ZORVIK_API EventSink {
  public:
    virtual ~EventSink() = default;
    virtual void record(const RecordedEvent& event) = 0;
};

// Keeps the events in the order in which they arrived. Any thread.
class ZORVIK_API MemoryEventSink : public EventSink {
  public:
    void record(const RecordedEvent& event) override;
    std::vector<RecordedEvent> events() const;

  private:
    mutable std::mutex mutex_;
    std::vector<RecordedEvent> events_;
};

// Writes each event as one line of JSON, tokens and personal data shortened, and flushes it. What
// JSON cannot write (bytes that are not UTF-8, infinite numbers, very deep nesting) is written as a
// description instead, and a stream that fails loses the event silently. Any thread; lines never
// mix.
class ZORVIK_API JSONLinesEventSink : public EventSink {
  public:
    // The stream must outlive the sink and is written to by nobody else meanwhile.
    explicit JSONLinesEventSink(std::ostream& stream) : stream_(stream) {}

    void record(const RecordedEvent& event) override;

  private:
    std::mutex mutex_;
    std::ostream& stream_;
};

}  // namespace zorvik::development
