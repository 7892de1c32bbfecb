// For the tests, with any compiler: gives every target its first inputs, and each of them changed
// in ways that are the same in every run. usage: replay CORPUS CHANGES
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>

#include "fuzz/Target.h"

namespace zorvik::fuzz {
namespace {

const Target* target = nullptr;
std::string input;

std::string contentOf(const std::filesystem::path& path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

// One to four bytes are changed, left out or doubled.
std::string changed(std::string text, std::mt19937& random) {
    for (std::size_t count = random() % 4 + 1; count > 0; --count) {
        const std::size_t at = random() % (text.size() + 1);
        const std::size_t length = std::min<std::size_t>(random() % 8, text.size() - at);
        switch (random() % 3) {
            case 0:
                text.erase(at, length);
                break;
            case 1:
                text.insert(at, text.substr(at, length));
                break;
            default:
                text.insert(text.begin() + static_cast<std::ptrdiff_t>(at),
                            static_cast<char>(random()));
        }
    }
    return text;
}

// Before an assertion or a sanitizer ends the process too.
void run(std::string_view text) {
    input = text;
    target->check(input);
}

void replay(const std::filesystem::path& corpus, int changes) {
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(corpus / target->name))
        files.push_back(entry.path());
    std::ranges::sort(files);
    std::mt19937 random(files.size() == 0 ? 0U : 1U);
    for (const auto& file : files) {
        const std::string first = contentOf(file);
        run(first);
        for (int count = 0; count < changes; ++count)
            run(changed(first, random));
    }
    std::printf("%-9s %zu inputs\n", target->name,
                files.size() * static_cast<unsigned>(changes + 1));
}

}  // namespace

void require(bool holds, const char* property) {
    if (holds) return;
    std::string text;
    for (const char byte : input) {
        const bool isPlain = byte >= ' ' && byte <= '~' && byte != '\\';
        char escape[8];
        std::snprintf(escape, sizeof escape, "\\x%02x", static_cast<unsigned char>(byte));
        text += isPlain ? std::string(1, byte) : escape;
    }
    std::fprintf(stderr, "%s: does not hold: %s\n%s\n", target->name, property, text.c_str());
    std::abort();
}

}  // namespace zorvik::fuzz

int main(int count, char** arguments) {
    if (count != 3) return 2;
    for (const auto* target : zorvik::fuzz::Target::all()) {
        zorvik::fuzz::target = target;
        zorvik::fuzz::replay(arguments[1], std::atoi(arguments[2]));
    }
}
