#pragma once

#include <map>
#include <string>
#include <vector>

#include "platform/foundation/Export.h"
#include "platform/services/DefaultsStore.h"

namespace zorvik::platform::headless {

// Entries in memory; they go with the port. Main thread only.
class ZORVIK_API HeadlessDefaults : public DefaultsStore {
  public:
    const std::map<std::string, DefaultsValue>& entries() const { return entries_; }
    // The keys in the order in which they were removed, absent ones included.
    const std::vector<std::string>& removals() const { return removals_; }

    std::optional<DefaultsValue> read(const std::string& key) const override;
    void write(const std::string& key, const DefaultsValue& value) override;
    void remove(const std::vector<std::string>& keys) override;

  private:
    std::map<std::string, DefaultsValue> entries_;
    std::vector<std::string> removals_;
};

}  // namespace zorvik::platform::headless
