#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/foundation/Export.h"

namespace zorvik::platform {

// One item of a query, percent-decoded. "a" has no value, "a=" an empty one.
struct URLQueryItem {
    std::string name;
    std::optional<std::string> value;

    friend bool operator==(const URLQueryItem&, const URLQueryItem&) = default;
};

// [a=1, b] : the items for a console line.
ZORVIK_API std::string description(const std::vector<URLQueryItem>& items);

// The parts of a URI reference of RFC 3986. A value; any thread.
class ZORVIK_API URLComponents {
  public:
    // nullopt for a text that is no URI reference (see URL::parse; the empty text is one here).
    static std::optional<URLComponents> parse(std::string_view text);

    const std::optional<std::string>& scheme() const { return scheme_; }
    std::optional<std::string> host() const;
    const std::string& path() const { return path_; }

    // The query's items in order; nullopt without a query, an empty list for an empty one. Names
    // and values are percent-decoded, "+" stays "+"; one whose bytes are not UTF-8 once decoded
    // stays as written.
    std::optional<std::vector<URLQueryItem>> queryItems() const;
    // Replaces the query. Names and values are percent-escaped in UTF-8 where RFC 3986's query set
    // does not hold them, and "&" and "=" always; "+" is not.
    void setQueryItems(const std::vector<URLQueryItem>& items);

    // The composed text; nullopt when the parts cannot stand together (a path of "//" without an
    // authority).
    std::optional<std::string> string() const;

  private:
    std::optional<std::string> scheme_;
    std::optional<std::string> authority_;
    std::string path_;
    std::optional<std::string> query_;
    std::optional<std::string> fragment_;
};

}  // namespace zorvik::platform
