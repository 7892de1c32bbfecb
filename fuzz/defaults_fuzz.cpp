#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <string>

#include "fuzz/Target.h"
#include "platform/desktop/DefaultsEntry.h"
#include "platform/desktop/FileDefaults.h"
#include "platform/foundation/JSONSerialization.h"

namespace zorvik::fuzz {

namespace fs = std::filesystem;
namespace port = platform::desktop;
using platform::DefaultsValue;
using platform::Dictionary;
using platform::JSONSerialization;

namespace {

// In memory where the system has such a folder; gone with the process.
struct Folder {
    Folder() {
        std::string pattern =
            fs::exists("/dev/shm") ? "/dev/shm/zorvik-fuzz-XXXXXX" : "/tmp/zorvik-fuzz-XXXXXX";
        path = mkdtemp(pattern.data());
    }
    ~Folder() { fs::remove_all(path); }
    fs::path path;
};

std::string contentOf(const fs::path& path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

std::optional<Dictionary> entriesOf(std::string_view text) {
    const auto parsed =
        JSONSerialization::jsonObject(text, JSONSerialization::ReadingOptions::none);
    const auto* entries = parsed ? parsed.value().dictionary() : nullptr;
    return entries == nullptr ? std::nullopt : std::optional(*entries);
}

bool isSame(const std::optional<DefaultsValue>& left, const std::optional<DefaultsValue>& right) {
    // Not a number is not even itself.
    return left == right ||
           (left && right && port::defaultsEntry(*left) == port::defaultsEntry(*right));
}

// The file as another hand left it.
void check(std::string_view input) {
    static const Folder folder;
    const fs::path file = folder.path / "defaults.json";
    const fs::path aside = folder.path / "defaults.json.damaged";
    fs::remove(aside);
    std::ofstream(file, std::ios::binary) << input;

    const auto before = entriesOf(input);
    {
        port::FileDefaults defaults(file);
        for (const auto& [key, entry] : before.value_or(Dictionary()))
            require(isSame(defaults.read(key), port::defaultsValue(entry)), "entries are read");
        defaults.write("a key of this process", std::string(input));
        defaults.remove({"a", "absent"});
    }
    require(fs::exists(aside) == !before, "a damaged file is kept aside, a sound one is not");
    if (!before) require(contentOf(aside) == input, "as it was");

    auto after = entriesOf(contentOf(file));
    require(after.has_value(), "a file that was stored is sound");
    const auto written = after->find("a key of this process");
    require(written != after->end() &&
                port::defaultsValue(written->second) == DefaultsValue(std::string(input)),
            "any bytes are stored exactly");
    after->erase(written);
    auto expected = before.value_or(Dictionary());
    expected.erase("a");
    expected.erase("a key of this process");
    require(*after == expected, "nobody else's entry is touched, known or not");
    require(!fs::exists(folder.path / "defaults.json.new"), "no temporary file is left");
}

const Target target("defaults", check);

}  // namespace
}  // namespace zorvik::fuzz
