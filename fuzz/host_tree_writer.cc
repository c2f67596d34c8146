#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <string>

#include "fuzz/host_tree.h"
#include "fuzz/host_tree_format.h"
#include "numera/host/string_array.h"

namespace numera::fuzz {
namespace {

class Writer {
 public:
  void write(const hxArray* value) {
    if (value == nullptr) return put(Operation::kEmpty);
    switch (hxGetClassID(value)) {
      case hxClassID::Char:
        return write_chars(value);
      case hxClassID::Cell:
        put(Operation::kCell);
        write_dims(hxGetDimensions(value));
        return write_slots(value);
      case hxClassID::Struct:
        return write_struct(value);
      case hxClassID::Logical:
        put(Operation::kLogical);
        write_dims(hxGetDimensions(value));
        return write_elements(value);
      case hxClassID::Object:
        if (hxIsStringArray(value)) return write_strings(hxGetStringArray(value));
        throw std::invalid_argument("objects but strings are not written");
      case hxClassID::Double:
      case hxClassID::Single:
      case hxClassID::Int8:
      case hxClassID::UInt8:
      case hxClassID::Int16:
      case hxClassID::UInt16:
      case hxClassID::Int32:
      case hxClassID::UInt32:
      case hxClassID::Int64:
      case hxClassID::UInt64:
        return write_numbers(value);
      case hxClassID::Unknown:
      case hxClassID::Void:
      case hxClassID::Function:
        throw std::invalid_argument("there are no values of this class");
    }
  }

  std::vector<std::uint8_t> bytes;

 private:
  template <class T>
  void put(T value) {
    bytes.push_back(static_cast<std::uint8_t>(value));
  }

  void put_count(size_t count) {
    if (count > 0xFF) throw std::invalid_argument("more than 255");
    put(count);
  }

  void put_word(size_t count) {
    if (count > kMostElements) throw std::invalid_argument("too many elements");
    put(count & 0xFF);
    put(count >> 8);
  }

  void write_dims(std::span<const size_t> dims) {
    if (dims.size() == 2 && dims[1] == 1 && dims[0] < 256) {
      put(Shape::kColumn);
      put(dims[0]);
      return;
    }
    put(Shape::kGeneral);
    put_count(dims.size() - 2);
    for (const size_t dim : dims) put_word(dim);
  }

  void write_elements(const hxArray* value) {
    put(Filling::kBytes);
    const auto* const data = static_cast<const std::uint8_t*>(hxGetData(value));
    bytes.insert(bytes.end(), data, data + hxGetNumberOfElements(value) * hxGetElementSize(value));
  }

  void write_numbers(const hxArray* value) {
    const auto* const found = std::ranges::find(kNumberClasses, hxGetClassID(value));
    if (found == kNumberClasses.end() || hxIsSparse(value)) {
      throw std::invalid_argument("no full array of numbers");
    }
    put(hxIsComplex(value) ? Operation::kComplex : Operation::kNumbers);
    put(found - kNumberClasses.begin());
    write_dims(hxGetDimensions(value));
    write_elements(value);
  }

  void write_chars(const hxArray* value) {
    const auto* const units = static_cast<const char16_t*>(hxGetData(value));
    const std::u16string text(units, hxGetNumberOfElements(value));
    const auto* const word = std::ranges::find_if(
        kWords, [&](std::string_view known) { return std::ranges::equal(known, text); });
    if (word != kWords.end() && hxGetDimensions(value)[0] == 1) {
      put(Operation::kWord);
      return put(word - kWords.begin());
    }
    put(Operation::kChars);
    write_dims(hxGetDimensions(value));
    write_elements(value);
  }

  void write_strings(const hxStringArray& strings) {
    put(Operation::kStrings);
    write_dims(strings.dimensions());
    for (size_t i = 0; i < strings.size(); ++i) {
      const auto text = strings.element(i);
      if (!text) {
        put(kMissingText);
        continue;
      }
      if (text->size() >= kMissingText) throw std::invalid_argument("a long text");
      put(text->size());
      put(Filling::kBytes);
      for (const char16_t unit : *text) {
        put(unit & 0xFF);
        put(unit >> 8);
      }
    }
  }

  void write_slots(const hxArray* cell) {
    for (size_t i = 0; i < hxGetNumberOfElements(cell); ++i) write(hxGetCell(cell, i));
  }

  void write_struct(const hxArray* value) {
    std::vector<const char*> names;
    for (int i = 0; i < hxGetNumberOfFields(value); ++i) names.push_back(hxGetFieldName(value, i));
    const size_t form = find_form(names);
    const auto dims = hxGetDimensions(value);
    if (form < kForms.size() && dims.size() == 2 && dims[1] == 1) {
      put(Operation::kForm);
      put(form);
      put_count(dims[0]);
    } else {
      put(Operation::kStruct);
      write_dims(dims);
      write_names(names);
    }
    for (size_t i = 0; i < hxGetNumberOfElements(value); ++i) {
      for (const char* name : names) write(hxGetField(value, i, name));
    }
  }

  static size_t find_form(const std::vector<const char*>& names) {
    const auto same = [](const char* a, const char* b) { return std::strcmp(a, b) == 0; };
    size_t form = 0;
    while (form < kForms.size() && !std::ranges::equal(names_of_form(form), names, same)) ++form;
    return form;
  }

  void write_names(const std::vector<const char*>& names) {
    if (names.size() >= 16) throw std::invalid_argument("many fields");
    put(names.size());
    for (const std::string name : names) {
      if (name.size() >= 32) throw std::invalid_argument("a long field name");
      put(name.size());
      bytes.insert(bytes.end(), name.begin(), name.end());
    }
  }
};

}  // namespace

std::vector<std::uint8_t> write_host_tree(const hxArray* value) {
  Writer writer;
  writer.write(value);
  return std::move(writer.bytes);
}

}  // namespace numera::fuzz
