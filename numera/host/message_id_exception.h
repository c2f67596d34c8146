#pragma once

/// \file
/// The host's exceptions with a message identifier, and its argument-count errors. Any number of
/// threads may read the same exception at the same time.

#include <cstdint>
#include <exception>
#include <span>
#include <string>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "numera/export.h"

/// A failure that the host reports by a message identifier. It does not derive from
/// `std::exception`: `hxTaggedException`, the class that is thrown, derives from both.
class NUMERA_EXPORT MessageIdException {
 public:
  /// `identifier` is "catalog:key"; `message` is stored unchanged.
  MessageIdException(std::string identifier, std::u16string message)
      : identifier_(std::move(identifier)), message_(std::move(message)) {}
  virtual ~MessageIdException() = default;

  /// "catalog:key", which programs use to distinguish failures. Lives as long as this object.
  const std::string& identifier() const { return identifier_; }
  /// The text shown to users. Lives as long as this object.
  const std::u16string& message() const { return message_; }

 protected:
  /// Protected, so that a catch by value cannot slice the exception.
  MessageIdException(const MessageIdException&) = default;
  /// Protected like the copy constructor.
  MessageIdException& operator=(const MessageIdException&) = default;

 private:
  std::string identifier_;
  std::u16string message_;
};

/// A detail of one failure: a number, such as an element number, or a text. The tag of the
/// exception may state the encoding of the text.
using hxMessageArgument = std::variant<std::uint64_t, std::string>;

/// The exception of one message. `Tag` names it by `static constexpr` members `catalog` and `key`.
///
/// `StandardBase` is the class that callers catch if they do not use identifiers. If it can be
/// constructed from a `std::string`, it receives the identifier. `message()` is the identifier,
/// followed by the arguments in parentheses if there are any; the wording belongs to the message
/// catalogue of the host. Each byte of a text argument becomes one code unit.
template <class Tag, class StandardBase = std::exception>
class NUMERA_EXPORT hxTaggedException : public StandardBase, public MessageIdException {
 public:
  /// The exception of `Tag` with the arguments of its message, in the order that `Tag` states.
  explicit hxTaggedException(std::vector<hxMessageArgument> arguments = {})
      : StandardBase(make_base()),
        MessageIdException(make_identifier(), make_message(arguments)),
        arguments_(std::move(arguments)) {}

  /// The identifier, "catalog:key". Lives as long as the exception.
  const char* what() const noexcept override { return identifier().c_str(); }
  /// The arguments given at construction. Lives as long as the exception.
  std::span<const hxMessageArgument> arguments() const { return arguments_; }

 private:
  static std::string make_identifier() {
    return std::string(Tag::catalog) + ":" + std::string(Tag::key);
  }

  static StandardBase make_base() {
    if constexpr (std::is_constructible_v<StandardBase, const std::string&>) {
      return StandardBase(make_identifier());
    } else {
      return StandardBase();
    }
  }

  static std::u16string make_message(const std::vector<hxMessageArgument>& arguments) {
    std::string text = make_identifier();
    const char* separator = " (";
    for (const hxMessageArgument& argument : arguments) {
      text += separator;
      text += std::holds_alternative<std::uint64_t>(argument)
                  ? std::to_string(std::get<std::uint64_t>(argument))
                  : std::get<std::string>(argument);
      separator = ", ";
    }
    if (!arguments.empty()) text += ")";
    std::u16string units;
    units.reserve(text.size());
    for (const char byte : text) units.push_back(static_cast<unsigned char>(byte));
    return units;
  }

  std::vector<hxMessageArgument> arguments_;
};

/// Tag: the caller requests more outputs than the function has. No arguments.
struct NUMERA_EXPORT hxTooManyOutputs {
  static constexpr const char* catalog = "NUMERA:host";  ///< identifier before its last colon
  static constexpr const char* key = "TooManyOutputs";   ///< identifier after its last colon
};
/// Tag: the caller passes fewer inputs than the function needs. No arguments.
struct NUMERA_EXPORT hxTooFewInputs {
  static constexpr const char* catalog = "NUMERA:host";  ///< identifier before its last colon
  static constexpr const char* key = "TooFewInputs";     ///< identifier after its last colon
};
/// Tag: the caller passes more inputs than the function accepts. No arguments.
struct NUMERA_EXPORT hxTooManyInputs {
  static constexpr const char* catalog = "NUMERA:host";  ///< identifier before its last colon
  static constexpr const char* key = "TooManyInputs";    ///< identifier after its last colon
};

/// Throws the host's error for too many outputs: `hxTaggedException<hxTooManyOutputs>`.
[[noreturn]] NUMERA_EXPORT void hxErrorMaxLhs();
/// Throws the host's error for too few inputs: `hxTaggedException<hxTooFewInputs>`.
[[noreturn]] NUMERA_EXPORT void hxErrorMinRhs();
/// Throws the host's error for too many inputs: `hxTaggedException<hxTooManyInputs>`.
[[noreturn]] NUMERA_EXPORT void hxErrorMaxRhs();
