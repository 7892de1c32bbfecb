#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>

#include "platform/foundation/Value.h"
#include "platform/services/DefaultsStore.h"

namespace zorvik::platform::gtk {

// Entries in one JSON file, stored when the call returns: the file is replaced as a whole, so a
// crash leaves the old one or the new one. What cannot be stored is told on standard error, stays
// readable here, and goes with the next store that succeeds. Several processes may share the file;
// what another one stored is seen from the next store on. Main thread only.
class FileDefaults : public DefaultsStore {
  public:
    // The file and its folder (mode 0700) are made at the first store. A damaged file is set aside
    // as `<file>.damaged`, or `.damaged.2` and so on where that exists.
    explicit FileDefaults(std::filesystem::path file);

    std::optional<DefaultsValue> read(const std::string& key) const override;
    void write(const std::string& key, const DefaultsValue& value) override;
    void remove(const std::string& key) override;

  private:
    enum class Loading { done, unreadable, damaged };
    using Change = std::optional<Value>;  // nullopt: removed

    void change(const std::string& key, Change entry);
    Loading load();
    bool mend(Loading loading);
    bool storeChanges();
    bool replaceFile(const Dictionary& entries) const;
    // Says on standard error what went wrong and why (errno); false, for returning.
    bool failed(const char* what) const;

    const std::filesystem::path file_;
    Dictionary stored_;  // entries of kinds that this version does not know stay in it
    std::map<std::string, Change> unstored_;
};

}  // namespace zorvik::platform::gtk
