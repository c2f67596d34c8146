#pragma once

/// \file
/// A place in a text that is read from left to right, and the failures that name it.

#include <cstddef>
#include <string>
#include <string_view>

namespace numera::extras::inspect {

class Scanner {
 public:
  explicit Scanner(std::string_view text) : text_(text) {}

  size_t position() const { return position_; }
  bool at_end() const { return position_ == text_.size(); }
  /// The next byte, NUL at the end.
  char peek() const { return at_end() ? '\0' : text_[position_]; }
  bool at_line_end() const { return at_end() || peek() == '\n'; }
  bool at_digit() const { return peek() >= '0' && peek() <= '9'; }

  /// Whether the text goes on with `token`, which is then passed.
  bool take(std::string_view token);
  /// The same, and a failure where it does not.
  void expect(std::string_view token);
  void skip_blanks();  ///< blanks of this line
  void skip_space();   ///< blanks and ends of lines

  /// Letters, digits and underscores, as many as follow.
  std::string_view take_word();
  /// Bytes up to white space, a bracket, a quote or a separator.
  std::string_view take_token();
  /// Decimal digits. Fails where there are none, or where the number is no `size_t`.
  size_t take_count();
  /// A text in quotes.
  std::u16string take_text();
  /// An identifier, or a name in quotes, as bytes. It holds no NUL.
  std::string take_name();

  /// Passes the rest of the line, which must be blank, and blank lines behind it.
  void end_line();
  void skip_blank_lines();
  /// Blanks at the start of the line, which are passed by `take_indent`.
  size_t indent() const;
  void take_indent() { position_ += indent(); }

  /// \name Failures
  /// `std::invalid_argument`: "line 2, column 7: found "x", expected a number."
  /// @{
  [[noreturn]] void fail(std::string_view expected) const { fail_at(position_, expected); }
  [[noreturn]] void fail_at(size_t position, std::string_view expected) const;
  [[noreturn]] void fail_at(size_t position, std::string_view found,
                            std::string_view expected) const;
  /// @}

 private:
  template <class OnPlain, class OnUnit, class OnByte>
  void take_quoted(OnPlain on_plain, OnUnit on_unit, OnByte on_byte);
  template <class OnUnit, class OnByte>
  void take_escape(OnUnit on_unit, OnByte on_byte);
  unsigned take_hexadecimal(int digits);
  std::string found_at(size_t position) const;

  std::string_view text_;
  size_t position_ = 0;
};

}  // namespace numera::extras::inspect
