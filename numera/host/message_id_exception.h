#pragma once

/// \file
/// The host's exceptions with a message identifier, and its argument-count errors.

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
  MessageIdException(std::string identifier, std::u16string message)
      : identifier_(std::move(identifier)), message_(std::move(message)) {}
  virtual ~MessageIdException() = default;

  const std::string& identifier() const { return identifier_; }  ///< "catalog:key"
  const std::u16string& message() const { return message_; }

 protected:
  MessageIdException(const MessageIdException&) = default;
  MessageIdException& operator=(const MessageIdException&) = default;

 private:
  std::string identifier_;
  std::u16string message_;
};

using hxMessageArgument = std::variant<std::uint64_t, std::string>;

/// The exception of one message. `Tag` names it by `static constexpr` members `catalog` and `key`.
///
/// `what()` is the identifier. `message()` is the identifier followed by the arguments in
/// parentheses, a text byte for byte, since the wording belongs to the message catalogue of the
/// host.
template <class Tag, class StandardBase = std::exception>
class NUMERA_EXPORT hxTaggedException : public StandardBase, public MessageIdException {
 public:
  explicit hxTaggedException(std::vector<hxMessageArgument> arguments = {})
      : StandardBase(make_base()),
        MessageIdException(make_identifier(), make_message(arguments)),
        arguments_(std::move(arguments)) {}

  const char* what() const noexcept override { return identifier().c_str(); }
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

/// Tags of the argument-count errors.
struct NUMERA_EXPORT hxTooManyOutputs {
  static constexpr const char* catalog = "NUMERA:host";
  static constexpr const char* key = "TooManyOutputs";
};
struct NUMERA_EXPORT hxTooFewInputs {
  static constexpr const char* catalog = "NUMERA:host";
  static constexpr const char* key = "TooFewInputs";
};
struct NUMERA_EXPORT hxTooManyInputs {
  static constexpr const char* catalog = "NUMERA:host";
  static constexpr const char* key = "TooManyInputs";
};

/// Throws the host's error for more outputs than there are: `hxTaggedException<hxTooManyOutputs>`.
[[noreturn]] NUMERA_EXPORT void hxErrorMaxLhs();
/// Throws the host's error for too few inputs: `hxTaggedException<hxTooFewInputs>`.
[[noreturn]] NUMERA_EXPORT void hxErrorMinRhs();
/// Throws the host's error for too many inputs: `hxTaggedException<hxTooManyInputs>`.
[[noreturn]] NUMERA_EXPORT void hxErrorMaxRhs();
