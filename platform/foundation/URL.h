#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/foundation/Export.h"

namespace zorvik::platform {

// An address. A value; any thread.
class ZORVIK_API URL {
  public:
    // A URI reference of RFC 3986, strictly: a space, a bare non-ASCII character or a broken
    // percent-escape is no URL, and neither is the empty text. Relative references are URLs.
    static std::optional<URL> parse(std::string_view text);

    // An address as a web engine reports it. Engines leave characters bare that RFC 3986 wants
    // escaped (braces, pipes, quotes, non-ASCII): those are percent-escaped here, everything else,
    // broken escapes included, stays as it was, so nothing the page said is lost. nullopt only for
    // the empty text.
    static std::optional<URL> fromEngine(std::string_view text);

    const std::string& absoluteString() const { return text_; }
    // As written (no change of case); nullopt when the address has none.
    std::optional<std::string> scheme() const;
    // Without port, user or brackets; "" for an authority with an empty host, nullopt without one.
    std::optional<std::string> host() const;

    friend bool operator==(const URL&, const URL&) = default;

  private:
    explicit URL(std::string text) : text_(std::move(text)) {}

    std::string text_;
};

}  // namespace zorvik::platform
