// String arrays, the text codecs, and what a host raises.

#include <utf8cpp/utf8.h>

#include <cstdint>
#include <new>
#include <stdexcept>
#include <utility>

#include "examples/own_host/own_array.h"
#include "numera/host/message_id_exception.h"
#include "numera/host/text_codec.h"

namespace {

// The interface itself implements the functions that set many texts at once.
class Strings final : public hxStringArray {
 public:
  explicit Strings(std::span<const size_t> dims)
      : dims_(dims.begin(), dims.end()), texts_(count(dims), std::u16string()) {}

  std::span<const size_t> dimensions() const override { return dims_; }
  size_t size() const override { return texts_.size(); }
  std::optional<std::u16string_view> element(size_t i) const override { return texts_.at(i); }
  void set(size_t i, std::u16string_view text) override { texts_.at(i) = std::u16string(text); }
  void set_missing(size_t i) override { texts_.at(i) = std::nullopt; }

 private:
  using Text = std::optional<std::u16string>;

  static size_t count(std::span<const size_t> dims) {
    const size_t elements = own_host::count_elements(dims);
    if (elements > PTRDIFF_MAX / sizeof(Text)) throw std::bad_alloc();
    return elements;
  }

  std::vector<size_t> dims_;
  std::vector<Text> texts_;
};

void check_encoding(const char* encoding) {
  if (encoding == nullptr || std::string_view(encoding) != "UTF-8") {
    throw std::invalid_argument("The encoding is not UTF-8.");
  }
}

}  // namespace

std::unique_ptr<hxStringArray> hxMakeStringArray(std::span<const size_t> dims) {
  return std::make_unique<Strings>(dims);
}

hxArrayPtr hxCreateStringArrayFrom(std::unique_ptr<hxStringArray> strings) {
  if (!strings) throw std::invalid_argument("There is no string array.");
  const auto dims = strings->dimensions();
  hxArrayPtr array = own_host::make_array(
      {.class_id = hxClassID::Object, .dims = {dims.begin(), dims.end()}}, own_host::Fill::None);
  array->content->strings = std::move(strings);
  return array;
}

bool hxIsStringArray(const hxArray* array) noexcept {
  return array != nullptr && array->content->strings != nullptr;
}

const hxStringArray& hxGetStringArray(const hxArray* array) {
  if (!hxIsStringArray(array)) throw std::invalid_argument("Array is not string array.");
  return *array->content->strings;
}

class hxUTF8ToUTF16::Implementation {};
hxUTF8ToUTF16::hxUTF8ToUTF16(const char* encoding) { check_encoding(encoding); }
hxUTF8ToUTF16::~hxUTF8ToUTF16() = default;

std::u16string hxUTF8ToUTF16::convert(std::string_view text) const {
  const auto fault = utf8::find_invalid(text.begin(), text.end());
  if (fault != text.end()) {
    throw hxCodecError("No UTF-8 at byte " + std::to_string(fault - text.begin()) + ".");
  }
  std::u16string units;
  utf8::utf8to16(text.begin(), text.end(), std::back_inserter(units));
  return units;
}

class hxUTF16ToUTF8::Implementation {};
hxUTF16ToUTF8::hxUTF16ToUTF8(const char* encoding) { check_encoding(encoding); }
hxUTF16ToUTF8::~hxUTF16ToUTF8() = default;

std::string hxUTF16ToUTF8::convert(const char16_t* text, size_t length) const {
  std::string bytes;
  try {
    utf8::utf16to8(text, text + length, std::back_inserter(bytes));
  } catch (const utf8::exception&) {
    throw hxCodecError("A surrogate without its other half behind byte " +
                       std::to_string(bytes.size()) + " of the result.");
  }
  return bytes;
}

std::string hxGetString(const hxArray* array) {
  if (array == nullptr || hxGetClassID(array) != hxClassID::Char) {
    throw std::invalid_argument("Array is not char array.");
  }
  return hxUTF16ToUTF8("UTF-8").convert(static_cast<const char16_t*>(hxGetData(array)),
                                        hxGetNumberOfElements(array));
}

// Nobody can interrupt this host.
void hxThrowIfInterruptPending() {}

void hxErrorMaxLhs() { throw hxTaggedException<hxTooManyOutputs>(); }
void hxErrorMinRhs() { throw hxTaggedException<hxTooFewInputs>(); }
void hxErrorMaxRhs() { throw hxTaggedException<hxTooManyInputs>(); }
