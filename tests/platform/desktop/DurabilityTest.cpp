#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <fstream>
#include <functional>
#include <sstream>

#include "platform/desktop/FileDefaults.h"
#include "platform/foundation/JSONSerialization.h"

namespace zorvik::platform::desktop {
namespace {

// What befalls the file calls of the code under test, once or from then on. This program's calls of
// them are linked to the functions below (see CMakeLists.txt).
struct Fault {
    enum class Kind { none, killed, killedHalfway, fails, shortened };

    Kind kind = Kind::none;
    int error = 0;
    int at = 0;  // the how many-th call, counted from 1
    bool isLasting = false;
};

Fault fault;
int calls = 0;
bool isFlushed = true;  // nothing was written or renamed since the last flush

// Whether this call is to fail, with errno set.
bool isStruck(bool canBeHalfDone = false) {
    ++calls;
    if (fault.kind == Fault::Kind::none) return false;
    if (calls < fault.at || (calls > fault.at && !fault.isLasting)) return false;
    if (fault.kind == Fault::Kind::killed) raise(SIGKILL);
    if (fault.kind == Fault::Kind::killedHalfway && !canBeHalfDone) raise(SIGKILL);
    errno = fault.error;
    return fault.kind == Fault::Kind::fails;
}

}  // namespace

#define WRAPPED(name, parameters, arguments)              \
    extern "C" int __real_##name parameters;              \
    extern "C" int __wrap_##name parameters {             \
        return isStruck() ? -1 : __real_##name arguments; \
    }

WRAPPED(open, (const char* path, int flags, mode_t mode), (path, flags, mode))
WRAPPED(flock, (int file, int operation), (file, operation))
WRAPPED(mkdir, (const char* path, mode_t mode), (path, mode))
WRAPPED(stat, (const char* path, struct stat* found), (path, found))
// Nothing here outlives the machine, so nothing waits for the disk.
extern "C" int __wrap_fsync(int) {
    const bool isRefused = isStruck();
    if (!isRefused) isFlushed = true;
    return isRefused ? -1 : 0;
}
extern "C" int __real_rename(const char* from, const char* to);
extern "C" int __wrap_rename(const char* from, const char* to) {
    EXPECT_TRUE(isFlushed) << "a power cut would leave the new name to half a file";
    isFlushed = false;
    return isStruck() ? -1 : __real_rename(from, to);
}
// What cannot be written can be removed.
extern "C" int __real_unlink(const char* path);
extern "C" int __wrap_unlink(const char* path) {
    if (fault.kind != Fault::Kind::fails) isStruck();
    return __real_unlink(path);
}
extern "C" ssize_t __real_read(int file, void* data, size_t size);
extern "C" ssize_t __wrap_read(int file, void* data, size_t size) {
    return isStruck() ? -1 : __real_read(file, data, size);
}
extern "C" ssize_t __real_write(int file, const void* data, size_t size);
extern "C" ssize_t __wrap_write(int file, const void* data, size_t size) {
    if (isStruck(true)) return -1;
    if (fault.kind == Fault::Kind::killedHalfway && calls == fault.at) {
        __real_write(file, data, size / 2);
        raise(SIGKILL);
    }
    isFlushed = false;
    const bool isShort = fault.kind == Fault::Kind::shortened && size > 1;
    return __real_write(file, data, isShort ? size / 2 : size);
}

namespace {

namespace fs = std::filesystem;
using Record = std::map<std::string, std::string>;

// A file that holds a record and another's entry, in which a process stores the next record.
class DurabilityTest : public testing::TestWithParam<bool> {
  protected:
    DurabilityTest() {
        std::string pattern = fs::temp_directory_path() / "zorvik-durability-XXXXXX";
        folder = mkdtemp(pattern.data());
        file = folder / "shop" / "defaults.json";
    }
    ~DurabilityTest() override {
        fault = {};
        fs::remove_all(folder);
    }

    // Each time anew: with a first record or, where there is none yet, without even the folder.
    void begin(bool hasRecord) {
        fault = {};
        isFlushed = true;
        fs::remove_all(file.parent_path());
        if (!hasRecord) return;
        fs::create_directories(file.parent_path());
        std::ofstream(file) << R"({"a":{"string":"old"},"b":{"string":"old"},"theirs":{"later":1}})"
                            << "\n";
    }
    // Stores both values, then removes one: what a screen does with its record, in little.
    // `stored` is called after each.
    static void useRecord(FileDefaults& defaults, const std::function<void()>& stored) {
        defaults.write("a", std::string(5000, 'n'));
        stored();
        defaults.write("b", std::string("new"));
        stored();
        defaults.remove({"a", "absent"});
        stored();
    }
    // The states the file may be in after so many stores.
    static std::vector<Record> states(bool hasRecord) {
        const Record theirs = hasRecord ? Record{{"theirs", "?"}} : Record();
        std::vector<Record> all(4, theirs);
        if (hasRecord) all[0]["a"] = all[0]["b"] = all[1]["b"] = "old";
        all[1]["a"] = all[2]["a"] = std::string(5000, 'n');
        all[2]["b"] = all[3]["b"] = "new";
        return all;
    }
    Record onDisk() const {
        std::ostringstream text;
        text << std::ifstream(file, std::ios::binary).rdbuf();
        if (text.str().empty() && !fs::exists(file)) return {};
        const auto parsed =
            JSONSerialization::jsonObject(text.str(), JSONSerialization::ReadingOptions::none);
        if (!parsed) return {{"garbage", text.str()}};
        Record record;
        for (const auto& [key, entry] : *parsed.value().dictionary()) {
            const auto& typed = *entry.dictionary();
            record[key] = typed.contains("string") ? *typed.at("string").string() : "?";
        }
        return record;
    }
    // What the folder holds beside the file and its lock.
    std::vector<std::string> leftovers() const {
        std::vector<std::string> names;
        if (!fs::exists(file.parent_path())) return names;
        for (const auto& entry : fs::directory_iterator(file.parent_path())) {
            const std::string name = entry.path().filename();
            if (name != "defaults.json" && name != "defaults.json.lock") names.push_back(name);
        }
        return names;
    }
    // The next process finds what is on the disk, says nothing, and cleans up with its first store.
    void nextProcessGoesOn() const {
        Record expected = onDisk();
        testing::internal::CaptureStderr();
        FileDefaults(file).write("next", std::string("1"));
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
        expected["next"] = "1";
        EXPECT_EQ(onDisk(), expected);
        EXPECT_THAT(leftovers(), testing::IsEmpty());
    }

    fs::path folder;
    fs::path file;
};

TEST_P(DurabilityTest, AWriterKilledAtAnyFileCallLeavesTheOldRecordOrTheNewWhole) {
    int deaths = 0;
    for (const auto kind : {Fault::Kind::killed, Fault::Kind::killedHalfway}) {
        for (int at = 1, status = SIGKILL; WIFSIGNALED(status); ++at) {
            begin(GetParam());
            std::array<int, 2> ends{};
            ASSERT_EQ(pipe(ends.data()), 0);
            const pid_t writer = fork();
            if (writer == 0) {
                calls = 0;
                fault = {kind, 0, at};
                {
                    FileDefaults defaults(file);
                    useRecord(defaults, [&] { __real_write(ends[1], "x", 1); });
                }
                _exit(0);
            }
            close(ends[1]);
            ASSERT_EQ(waitpid(writer, &status, 0), writer);
            std::array<char, 8> told{};
            const auto stores = __real_read(ends[0], told.data(), told.size());
            close(ends[0]);
            SCOPED_TRACE("killed at file call " + std::to_string(at));
            const auto possible = states(GetParam());
            const auto first = possible.begin() + stores;
            EXPECT_THAT(onDisk(), testing::AnyOfArray(first, std::min(first + 2, possible.end())));
            nextProcessGoesOn();
            deaths += WIFSIGNALED(status) ? 1 : 0;
            ASSERT_LT(at, 200);
        }
    }
    EXPECT_GT(deaths, 60);
}

TEST_P(DurabilityTest, AFaultOfTheDiskIsToldHarmsNothingAndIsMadeUpForLater) {
    for (const int error : {ENOSPC, EIO, EROFS}) {
        for (const bool isLasting : {false, true}) {
            for (int at = 1, counted = at; counted >= at; ++at) {
                begin(GetParam());
                SCOPED_TRACE(std::string(strerror(error)) + " at file call " + std::to_string(at) +
                             (isLasting ? " and all after it" : ""));
                FileDefaults* defaults = nullptr;
                calls = 0;
                fault = {Fault::Kind::fails, error, at, isLasting};
                testing::internal::CaptureStderr();
                defaults = new FileDefaults(file);
                useRecord(*defaults, [this] {
                    EXPECT_THAT(onDisk(), testing::AnyOfArray(states(GetParam())));
                });
                counted = calls;
                fault = {};
                const bool isTold = !testing::internal::GetCapturedStderr().empty();
                EXPECT_EQ(defaults->read("a"), std::nullopt) << "it counts here all the same";
                EXPECT_EQ(defaults->read("b"), DefaultsValue(std::string("new")));
                const bool isStored = onDisk() == states(GetParam()).back();
                EXPECT_TRUE(isStored || isTold);
                EXPECT_THAT(leftovers(), testing::IsEmpty());
                delete defaults;  // which makes up for what was not stored
                EXPECT_EQ(onDisk(), states(GetParam()).back());
                nextProcessGoesOn();
                ASSERT_LT(at, 200);
            }
        }
    }
}

TEST_P(DurabilityTest, WritesCutShortAreCarriedOnAndAStoreIsOnTheDiskWhenItReturns) {
    begin(GetParam());
    fault = {Fault::Kind::shortened};
    FileDefaults defaults(file);
    useRecord(defaults, [] { EXPECT_TRUE(isFlushed); });
    EXPECT_EQ(onDisk(), states(GetParam()).back());
}

INSTANTIATE_TEST_SUITE_P(Records, DurabilityTest, testing::Bool(),
                         [](const auto& is) { return is.param ? "AnOldOne" : "NoneYet"; });

TEST_F(DurabilityTest, ProcessesThatStoreAtTheSameTimeLoseNoneOfTheirEntries) {
    begin(true);
    constexpr int count = 40;
    std::vector<pid_t> writers;
    for (int process = 0; process < 3; ++process) {
        writers.push_back(fork());
        if (writers.back() != 0) continue;
        FileDefaults defaults(file);
        for (int entry = 0; entry < count; ++entry) {
            const std::string key = std::to_string(process) + "-" + std::to_string(entry);
            defaults.write(key, std::string("x"));
        }
        // One that waited in vain goes with the next store.
        while (onDisk().count(std::to_string(process) + "-last") == 0)
            defaults.write(std::to_string(process) + "-last", std::string("x"));
        _exit(0);
    }
    for (const pid_t writer : writers)
        waitpid(writer, nullptr, 0);
    EXPECT_EQ(onDisk().size(), 3 * (count + 1) + 3u);
    nextProcessGoesOn();
}

}  // namespace
}  // namespace zorvik::platform::desktop
