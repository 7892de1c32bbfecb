#include "platform/gtk/FileDefaults.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cmath>
#include <fstream>
#include <limits>
#include <sstream>

namespace zorvik::platform::gtk {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

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
    std::string content(const fs::path& path) const {
        std::ostringstream text;
        text << std::ifstream(path, std::ios::binary).rdbuf();
        return text.str();
    }
    fs::path beside(const std::string& ending) const { return file.string() + ending; }
    static unsigned mode(const fs::path& path) {
        struct stat found = {};
        return stat(path.c_str(), &found) == 0 ? found.st_mode & 0777 : 0;
    }
    // What standard error receives meanwhile.
    template <class Act>
    static std::string told(const Act& act) {
        testing::internal::CaptureStderr();
        act();
        return testing::internal::GetCapturedStderr();
    }

    fs::path folder;
    fs::path file;
};

TEST_F(FileDefaultsTest, EntriesReadBackExactlyInTheNextProcess) {
    const std::vector<std::pair<std::string, DefaultsValue>> entries = {
        {"text", std::string("a\0\"\\\n \xF0\x9F\x92\xB3", 11)},
        {"empty", std::string()},
        {"bytes", std::string("\xFF\xFE not UTF-8")},
        {"date", Date{1'763'844'503.123456}},
        {"whole date", Date{1'700'000'000}},
        {"tenth", 0.1},
        {"smallest", std::numeric_limits<double>::denorm_min()},
        {"largest", -std::numeric_limits<double>::max()},
        {"endless", std::numeric_limits<double>::infinity()},
        {"yes", true},
        {"no", false},
    };
    FileDefaults writer(file);
    for (const auto& [key, value] : entries)
        writer.write(key, value);
    writer.write("no number", std::nan(""));
    const FileDefaults reader(file);
    for (const auto& [key, value] : entries)
        EXPECT_EQ(reader.read(key), value) << key;
    EXPECT_TRUE(std::isnan(std::get<double>(reader.read("no number").value())));
    EXPECT_EQ(reader.read("unknown"), std::nullopt);
}

TEST_F(FileDefaultsTest, OnlyTheOwnerMayReadThem) {
    FileDefaults defaults(file);
    EXPECT_FALSE(fs::exists(file.parent_path())) << "nothing is made before it is needed";
    defaults.write("key", true);
    EXPECT_EQ(mode(file), 0600u);
    EXPECT_EQ(mode(file.parent_path()), 0700u);
}

TEST_F(FileDefaultsTest, ADamagedFileIsKeptAsideUnderANewNumber) {
    const std::array<std::string, 5> damages = {"", "{\"key\": {\"string\": \"half", "[1]",
                                                "{} and more", std::string("\0\xFF\x01", 3)};
    int number = 0;
    for (const std::string& damage : damages) {
        put(damage);
        const std::string ending =
            ++number == 1 ? ".damaged" : ".damaged." + std::to_string(number);
        const std::string text = told([&] {
            FileDefaults defaults(file);
            EXPECT_EQ(defaults.read("key"), std::nullopt);
            defaults.write("key", true);
        });
        EXPECT_THAT(text, HasSubstr("defaults.json" + ending + "\n"));
        EXPECT_EQ(content(beside(ending)), damage);
        EXPECT_EQ(FileDefaults(file).read("key"), DefaultsValue(true));
    }
    EXPECT_EQ(content(beside(".damaged")), damages[0]) << "the first one is still there";
}

TEST_F(FileDefaultsTest, EntriesOfALaterVersionAreNotReadAndNotLost) {
    put(R"({"new": {"colour": [1, 2]}, "odd": 7, "date": {"date": "soon"}, "old": {"number": 5}})");
    FileDefaults defaults(file);
    for (const char* key : {"new", "odd", "date"})
        EXPECT_EQ(defaults.read(key), std::nullopt);
    EXPECT_EQ(defaults.read("old"), DefaultsValue(5.0));
    defaults.write("old", 6.0);
    EXPECT_THAT(content(file),
                testing::AllOf(HasSubstr(R"("new":{"colour":[1,2]})"), HasSubstr(R"("odd":7)")));
}

TEST_F(FileDefaultsTest, AFailedStoreIsToldReadableAndMadeUpLater) {
    std::ofstream(folder / "shop") << "a file where the folder should be";
    FileDefaults defaults(file);
    EXPECT_THAT(told([&] { defaults.write("first", 1.0); }), HasSubstr("zorvik: defaults: "));
    EXPECT_EQ(defaults.read("first"), DefaultsValue(1.0));
    fs::remove(folder / "shop");
    EXPECT_THAT(told([&] { defaults.write("second", 2.0); }), IsEmpty());
    EXPECT_EQ(FileDefaults(file).read("first"), DefaultsValue(1.0));
}

TEST_F(FileDefaultsTest, AFullDiskLeavesTheFileAsItWas) {
    FileDefaults defaults(file);
    defaults.write("key", std::string("stored"));
    const std::string before = content(file);
    rlimit former = {};
    getrlimit(RLIMIT_FSIZE, &former);
    const auto formerHandler = signal(SIGXFSZ, SIG_IGN);
    rlimit small = former;
    small.rlim_cur = 64;
    setrlimit(RLIMIT_FSIZE, &small);
    defaults.write("key", std::string(500, 'x'));
    setrlimit(RLIMIT_FSIZE, &former);
    signal(SIGXFSZ, formerHandler);
    EXPECT_EQ(content(file), before);
    EXPECT_EQ(defaults.read("key"), DefaultsValue(std::string(500, 'x')));
}

TEST_F(FileDefaultsTest, ABadKeyDoesNotKeepTheOthersFromTheDisk) {
    FileDefaults defaults(file);
    EXPECT_THAT(told([&] { defaults.write("\xFF", true); }), HasSubstr("not UTF-8"));
    defaults.write("good", true);
    EXPECT_EQ(defaults.read("\xFF"), DefaultsValue(true));
    EXPECT_EQ(FileDefaults(file).read("good"), DefaultsValue(true));
}

TEST_F(FileDefaultsTest, ProcessesThatShareTheFileLoseNothingOfEachOther) {
    constexpr int entries = 25;
    std::vector<pid_t> writers;
    for (const char* name : {"a", "b", "c"}) {
        const pid_t writer = fork();
        if (writer == 0) {
            FileDefaults defaults(file);
            for (int i = 0; i < entries; ++i)
                defaults.write(name + std::to_string(i), 1.0 * i);
            _exit(0);
        }
        writers.push_back(writer);
    }
    for (const pid_t writer : writers)
        waitpid(writer, nullptr, 0);
    const FileDefaults reader(file);
    for (const std::string name : {"a", "b", "c"}) {
        for (int i = 0; i < entries; ++i) {
            EXPECT_EQ(reader.read(name + std::to_string(i)), DefaultsValue(1.0 * i)) << name << i;
        }
    }
}

TEST_F(FileDefaultsTest, AWriterKilledAtAnyMomentLeavesWhatItHadStored) {
    for (unsigned round = 0; round < 20; ++round) {
        std::array<int, 2> pipeEnds{};
        ASSERT_EQ(pipe(pipeEnds.data()), 0);
        const pid_t writer = fork();
        if (writer == 0) {
            FileDefaults defaults(file);
            for (int i = 0;; ++i) {
                defaults.write("count", 1.0 * i);
                const bool isTold = write(pipeEnds[1], &i, sizeof i) == sizeof i;
                defaults.write("filler", std::string(20'000, isTold ? 'x' : 'y'));
            }
        }
        close(pipeEnds[1]);
        int stored = -1;
        for (unsigned i = 0; i <= round; ++i) {
            ASSERT_EQ(read(pipeEnds[0], &stored, sizeof stored), ssize_t{sizeof stored});
        }
        kill(writer, SIGKILL);
        waitpid(writer, nullptr, 0);
        int later = 0;
        while (read(pipeEnds[0], &later, sizeof later) == ssize_t{sizeof later})
            stored = later;
        close(pipeEnds[0]);
        std::optional<DefaultsValue> count;
        EXPECT_THAT(told([&] { count = FileDefaults(file).read("count"); }), IsEmpty());
        ASSERT_TRUE(count.has_value());
        EXPECT_GE(std::get<double>(*count), stored) << "what was told as stored is there";
        fs::remove(file);
    }
}

}  // namespace
}  // namespace zorvik::platform::gtk
