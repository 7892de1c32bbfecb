#pragma once

#include <map>
#include <string>
#include <vector>

#include "platform/services/DefaultsStore.h"

namespace port_template {

// Entries in memory; they go with the port.
//
// PORTER: keep them where the application keeps its settings, so that a hand-off to a UPI app is
// still known after the process was ended in the meantime. A write and a removal are stored when
// the call returns, several removals as one store, and types read back as written.
class TemplateDefaults : public zorvik::platform::DefaultsStore {
  public:
    std::optional<zorvik::platform::DefaultsValue> read(const std::string& key) const override;
    void write(const std::string& key, const zorvik::platform::DefaultsValue& value) override;
    void remove(const std::vector<std::string>& keys) override;

  private:
    std::map<std::string, zorvik::platform::DefaultsValue> entries_;
};

}  // namespace port_template
