#include "platform/foundation/JSONSerialization.h"

#include <cmath>
#include <cstdint>
#include <map>
#include <utility>
#include <vector>

// The parser asserts that the C library read its decimals to their end, which is not so where the
// locale's decimal point has several bytes. What the C library read is not used here.
#define JSON_ASSERT(condition) static_cast<void>(0)
#include <nlohmann/json.hpp>

#include "platform/foundation/Data.h"

namespace zorvik::platform {

namespace {

Error readingError(std::string_view reason) {
    return Error{"JSON", 1, "The text is not JSON: " + std::string(reason)};
}

Error writingError(std::string_view reason) {
    return Error{"JSON", 2, "The value has no JSON text: " + std::string(reason)};
}

// Stands in for the parser's own decimals, which lose digits and refuse what exceeds a double's
// range: always finite, so that the parser goes on and hands over the number's text.
class IgnoredNumber {
  public:
    IgnoredNumber(double) {}
    operator double&() { return number_; }  // where the parser writes what it read
    operator double() const { return 0; }

  private:
    double number_ = 0;
};

// Builds the value, or the one member asked for, from the parser's events. A false answer ends the
// parsing; reason() then says why. Containers under way stand on a stack, so nothing recurses.
class Reader {
  public:
    using Library = nlohmann::basic_json<std::map, std::vector, std::string, bool, std::int64_t,
                                         std::uint64_t, IgnoredNumber>;

    explicit Reader(JSONSerialization::ReadingOptions options)
        : refusesFragments_(options == JSONSerialization::ReadingOptions::none) {}
    explicit Reader(std::string_view member) : refusesFragments_(true), member_(member) {}

    const std::string& reason() const { return reason_; }
    std::optional<Value> takeResult() { return std::move(result_); }

    bool null() { return addScalar(nullptr); }
    bool boolean(bool value) { return addScalar(value); }
    bool number_integer(Library::number_integer_t value) { return addScalar(value); }
    bool number_unsigned(Library::number_unsigned_t value) { return addScalar(value); }
    // Every decimal, and integers beyond 64 bits.
    bool number_float(IgnoredNumber, const std::string& text) {
        if (!keeps()) return addScalar(nullptr);
        // The parser hands the decimal point over as the first byte of the locale's.
        const std::size_t point = text.find_first_not_of("+-0123456789eE.");
        std::string corrected;
        if (point != std::string::npos) {
            corrected = text;
            corrected[point] = '.';
        }
        auto number = Value::parseNumber(corrected.empty() ? text : corrected);
        return number ? addScalar(*std::move(number)) : refuse("a number");
    }
    bool string(std::string& value) { return addScalar(std::move(value)); }
    bool binary(Library::binary_t&) { return refuse("binary data"); }

    bool start_object(std::size_t) { return enter(true); }
    bool key(std::string& key) {
        if (isMemberLevel()) {
            isMember_ = key == *member_;
        } else if (keeps()) {
            containers_.back().key = std::move(key);
        }
        return true;
    }
    bool end_object() { return leave(); }
    bool start_array(std::size_t) { return enter(false); }
    bool end_array() { return leave(); }

    bool parse_error(std::size_t position, const std::string&, const Library::exception&) {
        return refuse("byte " + std::to_string(position));
    }

  private:
    struct Container {
        bool isObject;
        Dictionary dictionary;
        Array array;
        std::string key;
    };

    bool keeps() const { return !member_ || isMember_; }
    // Directly inside the top-level object, when one member of it is asked for.
    bool isMemberLevel() const { return member_ && depth_ == 1; }

    bool refuse(std::string_view reason) {
        reason_ = reason;
        return false;
    }

    bool enter(bool isObject) {
        if (++depth_ > JSONSerialization::maximumDepth) return refuse("nested too deep");
        if (isMemberLevel()) return isObject || refuse("the top level is no object");
        if (keeps()) containers_.push_back({isObject, {}, {}, {}});
        return true;
    }

    bool leave() {
        const bool endsTopLevel = isMemberLevel();
        --depth_;
        if (endsTopLevel || !keeps()) return true;
        Container ended = std::move(containers_.back());
        containers_.pop_back();
        add(ended.isObject ? Value(std::move(ended.dictionary)) : Value(std::move(ended.array)));
        return true;
    }

    template <class T>
    bool addScalar(T&& value) {
        if (depth_ == 0 && refusesFragments_) return refuse("the top level is no container");
        if (keeps()) add(Value(std::forward<T>(value)));
        return true;
    }

    void add(Value value) {
        if (containers_.empty()) {
            result_ = std::move(value);
        } else if (Container& container = containers_.back(); container.isObject) {
            container.dictionary.insert_or_assign(std::move(container.key), std::move(value));
        } else {
            container.array.push_back(std::move(value));
        }
    }

    const bool refusesFragments_;
    const std::optional<std::string_view> member_;
    bool isMember_ = false;
    std::size_t depth_ = 0;
    std::vector<Container> containers_;
    std::optional<Value> result_;
    std::string reason_;
};

// Feeds the reader; an Error for anything but one JSON text.
std::optional<Error> read(std::string_view text, Reader& reader) {
    // The parser takes a NUL for the end of the text and skips a byte-order mark.
    if (text.find('\0') != std::string_view::npos) return readingError("a NUL byte");
    if (text.starts_with("\xEF\xBB\xBF")) return readingError("a byte-order mark");
    if (Reader::Library::sax_parse(text.begin(), text.end(), &reader)) return std::nullopt;
    return readingError(reader.reason());
}

class Writer {
  public:
    bool write(const Value& value, std::size_t depth) {
        if (const bool* boolean = value.boolean()) {
            text_ += *boolean ? "true" : "false";
        } else if (const std::int64_t* integer = value.integer()) {
            text_ += std::to_string(*integer);
        } else if (const std::uint64_t* unsignedInteger = value.unsignedInteger()) {
            text_ += std::to_string(*unsignedInteger);
        } else if (const double* number = value.number()) {
            if (!std::isfinite(*number)) return refuse("a number is not finite");
            text_ += description(*number);
        } else if (const ExactNumber* exactNumber = value.exactNumber()) {
            text_ += exactNumber->text();
        } else if (const std::string* string = value.string()) {
            return writeString(*string);
        } else if (const Array* array = value.array()) {
            return writeArray(*array, depth + 1);
        } else if (const Dictionary* dictionary = value.dictionary()) {
            return writeDictionary(*dictionary, depth + 1);
        } else {
            text_ += "null";
        }
        return true;
    }

    std::string takeText() { return std::move(text_); }
    std::string_view reason() const { return reason_; }

  private:
    bool refuse(std::string_view reason) {
        reason_ = reason;
        return false;
    }

    bool writeArray(const Array& array, std::size_t depth) {
        if (depth > JSONSerialization::maximumDepth) return refuse("nested too deep");
        text_.push_back('[');
        for (const Value& element : array) {
            if (&element != &array.front()) text_.push_back(',');
            if (!write(element, depth)) return false;
        }
        text_.push_back(']');
        return true;
    }

    bool writeDictionary(const Dictionary& dictionary, std::size_t depth) {
        if (depth > JSONSerialization::maximumDepth) return refuse("nested too deep");
        text_.push_back('{');
        for (const auto& [key, value] : dictionary) {
            if (text_.back() != '{') text_.push_back(',');
            if (!writeString(key)) return false;
            text_.push_back(':');
            if (!write(value, depth)) return false;
        }
        text_.push_back('}');
        return true;
    }

    bool writeString(std::string_view string) {
        if (!isValidUtf8(string)) return refuse("a string is not UTF-8");
        constexpr std::string_view digits = "0123456789abcdef";
        text_.reserve(text_.size() + string.size() + 2);
        text_.push_back('"');
        std::size_t plain = 0;  // where the characters begin that stand as they are
        for (std::size_t index = 0; index < string.size(); ++index) {
            const char character = string[index];
            const auto byte = static_cast<unsigned char>(character);
            if (byte >= 0x20 && character != '"' && character != '\\') continue;
            text_ += string.substr(plain, index - plain);
            plain = index + 1;
            if (byte >= 0x20) {
                text_.push_back('\\');
                text_.push_back(character);
            } else if (character == '\n') {
                text_ += "\\n";
            } else if (character == '\r') {
                text_ += "\\r";
            } else if (character == '\t') {
                text_ += "\\t";
            } else {
                text_ += "\\u00";
                text_.push_back(digits[byte >> 4]);
                text_.push_back(digits[byte & 0xF]);
            }
        }
        text_ += string.substr(plain);
        text_.push_back('"');
        return true;
    }

    std::string text_;
    std::string_view reason_;
};

}  // namespace

Result<Value> JSONSerialization::jsonObject(std::string_view text, ReadingOptions options) {
    Reader reader(options);
    if (std::optional<Error> error = read(text, reader)) return *std::move(error);
    return *reader.takeResult();
}

Result<std::optional<Value>> JSONSerialization::member(std::string_view text,
                                                       std::string_view key) {
    Reader reader(key);
    if (std::optional<Error> error = read(text, reader)) return *std::move(error);
    return reader.takeResult();
}

Result<std::string> JSONSerialization::data(const Value& value) {
    Writer writer;
    if (!writer.write(value, 0)) return writingError(writer.reason());
    return writer.takeText();
}

}  // namespace zorvik::platform
