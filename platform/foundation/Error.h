#pragma once

#include <string>
#include <utility>
#include <variant>

namespace zorvik::platform {

// A failure as a value. Copyable, no owner; any thread.
struct Error {
    std::string domain;  // whose code it is
    int code = 0;
    std::string localizedDescription;  // for people

    friend bool operator==(const Error&, const Error&) = default;
};

// Either a value or an Error. Asking for the part that is not there is a programming error.
template <class T>
class Result {
  public:
    Result(T value) : content_(std::in_place_index<0>, std::move(value)) {}
    Result(Error error) : content_(std::in_place_index<1>, std::move(error)) {}

    bool isSuccess() const { return content_.index() == 0; }
    explicit operator bool() const { return isSuccess(); }
    const T& value() const& { return std::get<0>(content_); }
    T&& value() && { return std::get<0>(std::move(content_)); }
    const Error& error() const { return std::get<1>(content_); }

  private:
    std::variant<T, Error> content_;
};

}  // namespace zorvik::platform
