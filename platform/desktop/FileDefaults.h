#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/foundation/Value.h"
#include "platform/services/DefaultsStore.h"

namespace zorvik::platform::desktop {

// Whether the file's folder can have this name.
bool canNameFolder(const std::string& name);

// Entries in one JSON file, stored when the call returns: the file is replaced as a whole, once a
// call, so a crash leaves the old one or the new one. What cannot be stored is told on standard
// error, counts here all the same, and goes with the next store that succeeds, at the latest with
// one tried at the end; a process killed before that leaves the file as it was, and at most one
// `<file>.new` beside it, which the next store takes.
//
// Several processes may share the file. What another one stored is seen from the next store on;
// reading, and removing what is not there as far as this one knows, touches no file. A store waits
// up to 0.1 seconds for another process's; after it has waited in vain, the next ones wait no more
// until the file is free again. Main thread only.
class FileDefaults : public DefaultsStore {
  public:
    // The file and its folder (mode 0700) are made at the first store. A damaged file is set aside
    // as `<file>.damaged`, or `.damaged.2` and so on where that exists.
    explicit FileDefaults(std::filesystem::path file);
    FileDefaults(const FileDefaults&) = delete;
    FileDefaults& operator=(const FileDefaults&) = delete;
    ~FileDefaults() override;

    std::optional<DefaultsValue> read(const std::string& key) const override;
    void write(const std::string& key, const DefaultsValue& value) override;
    void remove(const std::vector<std::string>& keys) override;

  private:
    enum class Loading { done, unreadable, damaged };
    using Change = std::optional<Value>;  // nullopt: removed

    bool contains(const std::string& key) const;
    Loading load();
    bool mend(Loading loading);
    // Stores what is not stored yet, if anything.
    void store();
    bool storeChanges();
    bool replaceFile(const Dictionary& entries) const;
    // Says on standard error what went wrong and why (errno); false, for returning.
    bool failed(const char* what) const;

    const std::filesystem::path file_;
    Dictionary stored_;  // entries of kinds that this version does not know stay in it
    std::map<std::string, Change> unstored_;
    bool hasWaitedInVain_ = false;
};

}  // namespace zorvik::platform::desktop
