#include "platform/desktop/FileDefaults.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <string_view>
#include <thread>
#include <utility>

#include "platform/desktop/DefaultsEntry.h"
#include "platform/foundation/Data.h"
#include "platform/foundation/JSONSerialization.h"

namespace zorvik::platform::desktop {
namespace {

constexpr int patientAttempts = 10;  // ten milliseconds apart

class OpenFile {
  public:
    OpenFile(const std::filesystem::path& path, int flags)
        : number_(open(path.c_str(), flags | O_CLOEXEC, 0600)) {}
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;
    ~OpenFile() {
        if (number_ >= 0) close(number_);
    }

    explicit operator bool() const { return number_ >= 0; }

    std::optional<std::string> content() const {
        std::string content;
        char buffer[8192];
        while (true) {
            const ssize_t count = read(number_, buffer, sizeof buffer);
            if (count == 0) return content;
            if (count > 0) content.append(buffer, static_cast<std::size_t>(count));
            if (count < 0 && errno != EINTR) return std::nullopt;
        }
    }
    bool append(std::string_view content) const {
        while (!content.empty()) {
            const ssize_t count = write(number_, content.data(), content.size());
            if (count > 0) content.remove_prefix(static_cast<std::size_t>(count));
            if (count < 0 && errno != EINTR) return false;
        }
        return true;
    }
    bool flush() const { return fsync(number_) == 0; }
    // Bounded: a process that hangs with the lock must not hang this one.
    bool lock(int attempts) const {
        for (int attempt = 1; flock(number_, LOCK_EX | LOCK_NB) != 0; ++attempt) {
            if (errno != EWOULDBLOCK || attempt == attempts) return false;
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        return true;
    }

  private:
    const int number_;
};

std::filesystem::path withEnding(std::filesystem::path file, const std::string& ending) {
    return file += ending;
}

bool makeFolder(const std::filesystem::path& folder) {
    struct stat found;
    if (folder.empty() || stat(folder.c_str(), &found) == 0) return true;
    // The topmost one is its own parent.
    return folder.has_relative_path() && makeFolder(folder.parent_path()) &&
           (mkdir(folder.c_str(), 0700) == 0 || errno == EEXIST);
}

}  // namespace

bool canNameFolder(const std::string& name) {
    return !name.empty() && name != "." && name != ".." &&
           name.find_first_of(std::string("/\0", 2)) == std::string::npos;
}

FileDefaults::FileDefaults(std::filesystem::path file) : file_(std::move(file)) {
    if (load() != Loading::damaged) return;
    const OpenFile guard(withEnding(file_, ".lock"), O_RDWR | O_CREAT);
    // Another process may have mended it meanwhile, so it is looked at again.
    if (guard && guard.lock(patientAttempts)) {
        mend(load());
    } else {
        failed("a damaged file cannot be set aside");
    }
}

FileDefaults::~FileDefaults() {
    store();
}

std::optional<DefaultsValue> FileDefaults::read(const std::string& key) const {
    if (const auto waiting = unstored_.find(key); waiting != unstored_.end()) {
        return waiting->second ? defaultsValue(*waiting->second) : std::nullopt;
    }
    const auto entry = stored_.find(key);
    return entry != stored_.end() ? defaultsValue(entry->second) : std::nullopt;
}

void FileDefaults::write(const std::string& key, const DefaultsValue& value) {
    unstored_[key] = defaultsEntry(value);
    if (!isValidUtf8(key)) {
        std::fprintf(stderr, "zorvik: defaults: a key that is not UTF-8 is not stored\n");
    } else {
        store();
    }
}

void FileDefaults::remove(const std::vector<std::string>& keys) {
    bool isChange = false;
    for (const auto& key : keys) {
        if (!contains(key)) continue;
        unstored_[key] = std::nullopt;
        isChange = true;
    }
    if (isChange) store();
}

bool FileDefaults::contains(const std::string& key) const {
    const auto waiting = unstored_.find(key);
    return waiting != unstored_.end() ? waiting->second.has_value() : stored_.contains(key);
}

FileDefaults::Loading FileDefaults::load() {
    const OpenFile file(file_, O_RDONLY);
    if (!file && (errno == ENOENT || errno == ENOTDIR)) {
        stored_.clear();
        return Loading::done;
    }
    const auto content = file ? file.content() : std::nullopt;
    if (!content) {
        failed("the file cannot be read");
        return Loading::unreadable;
    }
    auto parsed = JSONSerialization::jsonObject(*content, JSONSerialization::ReadingOptions::none);
    const Dictionary* entries = parsed ? parsed.value().dictionary() : nullptr;
    if (entries == nullptr) return Loading::damaged;
    stored_ = *entries;
    return Loading::done;
}

// Whether the file may be replaced now. With the lock held.
bool FileDefaults::mend(Loading loading) {
    if (loading != Loading::damaged) return loading == Loading::done;
    std::filesystem::path aside = withEnding(file_, ".damaged");
    for (int number = 2; access(aside.c_str(), F_OK) == 0; ++number) {
        aside = withEnding(file_, ".damaged." + std::to_string(number));
    }
    if (rename(file_.c_str(), aside.c_str()) != 0) {
        return failed("a damaged file cannot be set aside");
    }
    stored_.clear();
    std::fprintf(stderr, "zorvik: defaults: %s is damaged, it is kept as %s\n", file_.c_str(),
                 aside.c_str());
    return true;
}

void FileDefaults::store() {
    const auto isStorable = [](const auto& change) { return isValidUtf8(change.first); };
    if (std::ranges::none_of(unstored_, isStorable)) return;
    if (storeChanges()) std::erase_if(unstored_, isStorable);
}

bool FileDefaults::storeChanges() {
    if (!makeFolder(file_.parent_path())) return failed("the folder cannot be made");
    const OpenFile guard(withEnding(file_, ".lock"), O_RDWR | O_CREAT);
    const bool isLocked = guard && guard.lock(hasWaitedInVain_ ? 1 : patientAttempts);
    hasWaitedInVain_ = !isLocked;
    if (!isLocked) return failed("the file cannot be locked");
    if (!mend(load())) return false;
    Dictionary entries = stored_;
    for (const auto& [key, entry] : unstored_) {
        if (!isValidUtf8(key)) continue;
        if (entry) {
            entries[key] = *entry;
        } else {
            entries.erase(key);
        }
    }
    if (entries == stored_) return true;
    if (!replaceFile(entries)) return false;
    stored_ = std::move(entries);
    return true;
}

bool FileDefaults::replaceFile(const Dictionary& entries) const {
    const auto text = JSONSerialization::data(entries);
    if (!text) {
        std::fprintf(stderr, "zorvik: defaults: %s\n", text.error().localizedDescription.c_str());
        return false;
    }
    const std::filesystem::path next = withEnding(file_, ".new");
    const OpenFile file(next, O_WRONLY | O_CREAT | O_TRUNC);
    if (!file) return failed("the file cannot be written");
    if (!file.append(text.value() + "\n") || !file.flush()) {
        failed("the file cannot be written");
        unlink(next.c_str());  // a full disk has no room for half a file
        return false;
    }
    if (rename(next.c_str(), file_.c_str()) != 0) {
        failed("the file cannot be replaced");
        unlink(next.c_str());
        return false;
    }
    // The new name is durable once the folder is.
    const OpenFile folder(file_.parent_path(), O_RDONLY | O_DIRECTORY);
    if (!folder || !folder.flush()) return failed("the folder cannot be flushed");
    return true;
}

bool FileDefaults::failed(const char* what) const {
    std::fprintf(stderr, "zorvik: defaults: %s: %s: %s\n", file_.c_str(), what,
                 std::strerror(errno));
    return false;
}

}  // namespace zorvik::platform::desktop
