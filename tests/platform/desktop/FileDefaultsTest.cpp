#include "platform/desktop/FileDefaults.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/inotify.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <fstream>
#include <limits>
#include <sstream>

namespace zorvik::platform::desktop {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

class FileDefaultsTest : public testing::Test {
  protected:
    FileDefaultsTest() {
        std::string pattern = fs::temp_directory_path() / "zorvik-defaults-XXXXXX";
        folder = mkdtemp(pattern.data());
        file = folder / "shop" / "defaults.json";
    }
    ~FileDefaultsTest() override { fs::remove_all(folder); }

    void put(const std::string& content) const {
        fs::create_directories(file.parent_path());
        std::ofstream(file, std::ios::binary) << content;
    }
    static std::string content(const fs::path& path) {
        std::ostringstream text;
        text << std::ifstream(path, std::ios::binary).rdbuf();
        return text.str();
    }
    // What standard error receives meanwhile.
    static std::string told(const std::function<void()>& act) {
        testing::internal::CaptureStderr();
        act();
        return testing::internal::GetCapturedStderr();
    }

    static double secondsOf(const std::function<void()>& act) {
        const auto start = std::chrono::steady_clock::now();
        act();
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    }
    static void writeRecord(FileDefaults& defaults) {
        for (const auto& key : record)
            defaults.write(key, true);
    }
    // As a screen's end does it.
    static void removeRecordThrice(FileDefaults& defaults) {
        for (int cleanup = 0; cleanup < 3; ++cleanup)
            defaults.remove(record);
    }

    static inline const std::vector<std::string> record{"id", "package", "start"};
    fs::path folder;
    fs::path file;
};

// A process that hangs with the lock, from construction to the end.
class HangingProcess {
  public:
    explicit HangingProcess(const fs::path& file) {
        std::array<int, 2> ends{};
        if (pipe(ends.data()) != 0) return;
        process_ = fork();
        if (process_ == 0) {
            const int lock = open((file.string() + ".lock").c_str(), O_RDWR | O_CREAT, 0600);
            const bool isLocked = flock(lock, LOCK_EX) == 0;
            if (write(ends[1], &isLocked, sizeof isLocked) > 0) pause();
            _exit(1);
        }
        holdsLock = read(ends[0], &holdsLock, sizeof holdsLock) > 0 && holdsLock;
        close(ends[0]);
        close(ends[1]);
    }
    ~HangingProcess() {
        kill(process_, SIGKILL);
        waitpid(process_, nullptr, 0);
    }

    bool holdsLock = false;

  private:
    pid_t process_ = -1;
};

TEST_F(FileDefaultsTest, EntriesReadBackExactlyInTheNextProcessOfTheirOwnerAlone) {
    const std::map<std::string, DefaultsValue> entries = {
        {"text", std::string("a\0\"\\\n \xF0\x9F\x92\xB3", 11)},
        {"bytes", std::string("\xFF\xFE not UTF-8")},
        {"date", Date{1'763'844'503.123456}},
        {"whole date", Date{1'700'000'000}},
        {"smallest", std::numeric_limits<double>::denorm_min()},
        {"endless", std::numeric_limits<double>::infinity()},
        {"no", false},
    };
    FileDefaults writer(file);
    EXPECT_FALSE(fs::exists(file.parent_path())) << "nothing is made before it is needed";
    EXPECT_THAT(told([&] { writer.write("\xFF", true); }), HasSubstr("not UTF-8"));
    for (const auto& [key, value] : entries)
        writer.write(key, value);
    const FileDefaults reader(file);
    for (const auto& [key, value] : entries)
        EXPECT_EQ(reader.read(key), value) << key;
    EXPECT_EQ(reader.read("unknown"), std::nullopt);
    EXPECT_EQ(fs::status(file).permissions(), fs::perms{0600});
    EXPECT_EQ(fs::status(file.parent_path()).permissions(), fs::perms{0700});
}

TEST_F(FileDefaultsTest, ADamagedFileIsKeptAsideUnderANewNumber) {
    const std::pair<std::string, std::string> damages[] = {
        {".damaged", ""},
        {".damaged.2", "{\"key\": {\"string\": \"half"},
        {".damaged.3", "[1]"},
        {".damaged.4", "{} and more"},
        {".damaged.5", std::string("\0\xFF\x01", 3)}};
    for (const auto& [ending, damage] : damages) {
        put(damage);
        EXPECT_THAT(told([this] { FileDefaults(file).write("key", true); }),
                    HasSubstr("defaults.json" + ending + "\n"));
        EXPECT_EQ(FileDefaults(file).read("key"), DefaultsValue(true));
    }
    for (const auto& [ending, damage] : damages)
        EXPECT_EQ(content(file.string() + ending), damage);
}

TEST_F(FileDefaultsTest, AFailedStoreIsToldReadableAndMadeUpLater) {
    std::ofstream(folder / "shop") << "a file where the folder should be";
    FileDefaults defaults(file);
    EXPECT_THAT(told([&] { defaults.write("first", 1.0); }), HasSubstr("zorvik: defaults: "));
    EXPECT_EQ(defaults.read("first"), DefaultsValue(1.0));
    fs::remove(folder / "shop");
    defaults.write("second", 2.0);
    EXPECT_EQ(FileDefaults(file).read("first"), DefaultsValue(1.0));
}

TEST_F(FileDefaultsTest, RemovingARecordIsOneStoreAndRemovingNothingTouchesNothing) {
    FileDefaults defaults(file);
    removeRecordThrice(defaults);
    EXPECT_FALSE(fs::exists(file.parent_path()));
    writeRecord(defaults);
    const int watch = inotify_init1(IN_NONBLOCK);
    inotify_add_watch(watch, file.parent_path().c_str(), IN_MOVED_TO | IN_OPEN);
    removeRecordThrice(defaults);
    std::map<std::string, int> replaced;
    std::map<std::string, int> opened;
    alignas(inotify_event) std::array<char, 4096> buffer{};
    for (ssize_t size = 0; (size = read(watch, buffer.data(), buffer.size())) > 0;) {
        for (ssize_t at = 0; at < size;) {
            const auto* event = reinterpret_cast<const inotify_event*>(buffer.data() + at);
            ++(event->mask & IN_OPEN ? opened : replaced)[event->len > 0 ? event->name : ""];
            at += static_cast<ssize_t>(sizeof(inotify_event) + event->len);
        }
    }
    close(watch);
    EXPECT_EQ(replaced["defaults.json"], 1);
    EXPECT_EQ(opened["defaults.json.lock"], 1);
    EXPECT_EQ(content(file), "{}\n");
}

TEST_F(FileDefaultsTest, AProcessThatHangsWithTheLockCostsOneShortWaitAndLosesNothing) {
    for (const bool isStoredAtTheEnd : {false, true}) {
        std::optional<FileDefaults> defaults(file);
        writeRecord(*defaults);
        {
            const HangingProcess hanging(file);
            ASSERT_TRUE(hanging.holdsLock);
            const auto refused = told([&] {
                EXPECT_LT(secondsOf([&] { removeRecordThrice(*defaults); }), 0.17);
                EXPECT_LT(secondsOf([&] { removeRecordThrice(*defaults); }), 0.08) << "none there";
                EXPECT_LT(secondsOf([&] { writeRecord(*defaults); }), 0.08) << "it waited before";
                removeRecordThrice(*defaults);
            });
            EXPECT_THAT(refused, HasSubstr("cannot be locked"));
            for (const auto& key : record) {
                EXPECT_EQ(defaults->read(key), std::nullopt) << key;
                EXPECT_NE(FileDefaults(file).read(key), std::nullopt) << "not stored yet";
            }
        }
        if (isStoredAtTheEnd) {
            defaults.reset();
        } else {
            defaults->write("other", true);
        }
        for (const auto& key : record)
            EXPECT_EQ(FileDefaults(file).read(key), std::nullopt) << key;
    }
}

}  // namespace
}  // namespace zorvik::platform::desktop
