#pragma once

/// \file
/// The host's exceptions with a message identifier, and its argument-count errors. Any number of
/// threads may read one exception at a time.

#include <cstdint>
#include <exception>
#include <span>
#include <string>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "numera/export.h"

/// A failure that the host reports by a message identifier. On purpose no `std::exception`: a
/// thrown object derives from both.
class NUMERA_EXPORT MessageIdException {
 public:
  /// `identifier` is "catalog:key"; `message` is kept as it is given.
  MessageIdException(std::string identifier, std::u16string message)
      : identifier_(std::move(identifier)), message_(std::move(message)) {}
  virtual ~MessageIdException() = default;

  /// "catalog:key", by which a program tells one failure from another. Lives as long as this.
  const std::string& identifier() const { return identifier_; }
  /// What a person is shown. Lives as long as this.
  const std::u16string& message() const { return message_; }

 protected:
  /// A part alone is never copied: a catch by value would lose the rest of the exception.
  MessageIdException(const MessageIdException&) = default;
  /// Like the copy, for derived classes alone.
  MessageIdException& operator=(const MessageIdException&) = default;

 private:
  std::string identifier_;
  std::u16string message_;
};

/// What a message tells about one failure: a number, such as that of an element, or a text, whose
/// encoding the tag of the exception may state.
using hxMessageArgument = std::variant<std::uint64_t, std::string>;

/// The exception of one message. `Tag` names it by `static constexpr` members `catalog` and `key`.
///
/// `StandardBase` is the class that a caller who knows nothing of identifiers catches it by; one
/// that takes a `std::string` is given the identifier. `message()` is the identifier followed by
/// the arguments in parentheses, a text byte for byte, since the wording belongs to the message
/// catalogue of the host.
template <class Tag, class StandardBase = std::exception>
class NUMERA_EXPORT hxTaggedException : public StandardBase, public MessageIdException {
 public:
  /// The exception of `Tag` with what its message tells, in the order that `Tag` states.
  explicit hxTaggedException(std::vector<hxMessageArgument> arguments = {})
      : StandardBase(make_base()),
        MessageIdException(make_identifier(), make_message(arguments)),
        arguments_(std::move(arguments)) {}

  /// The identifier, "catalog:key". Lives as long as the exception.
  const char* what() const noexcept override { return identifier().c_str(); }
  /// What was given at construction. Lives as long as the exception.
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

/// Tag: a function is asked for more outputs than it has. No arguments.
struct NUMERA_EXPORT hxTooManyOutputs {
  static constexpr const char* catalog = "NUMERA:host";  ///< before the last colon
  static constexpr const char* key = "TooManyOutputs";   ///< after the last colon
};
/// Tag: a function is given fewer inputs than it needs. No arguments.
struct NUMERA_EXPORT hxTooFewInputs {
  static constexpr const char* catalog = "NUMERA:host";  ///< before the last colon
  static constexpr const char* key = "TooFewInputs";     ///< after the last colon
};
/// Tag: a function is given more inputs than it takes. No arguments.
struct NUMERA_EXPORT hxTooManyInputs {
  static constexpr const char* catalog = "NUMERA:host";  ///< before the last colon
  static constexpr const char* key = "TooManyInputs";    ///< after the last colon
};

/// Throws the host's error for more outputs than there are: `hxTaggedException<hxTooManyOutputs>`.
[[noreturn]] NUMERA_EXPORT void hxErrorMaxLhs();
/// Throws the host's error for too few inputs: `hxTaggedException<hxTooFewInputs>`.
[[noreturn]] NUMERA_EXPORT void hxErrorMinRhs();
/// Throws the host's error for too many inputs: `hxTaggedException<hxTooManyInputs>`.
[[noreturn]] NUMERA_EXPORT void hxErrorMaxRhs();
