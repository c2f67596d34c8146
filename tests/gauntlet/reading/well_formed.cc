#include "tests/gauntlet/reading/well_formed.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace numera::gauntlet::reading {
namespace {

constexpr hxClassID kNumberClasses[] = {
    hxClassID::Double, hxClassID::Single, hxClassID::Int8,   hxClassID::UInt8, hxClassID::Int16,
    hxClassID::UInt16, hxClassID::Int32,  hxClassID::UInt32, hxClassID::Int64, hxClassID::UInt64};

/// Every name that "Type" may have. An envelope of numbers may have any of them.
constexpr const char16_t* kTypeNames[] = {
    u"double",       u"single",      u"int8",       u"int16",
    u"int32",        u"int64",       u"uint8",      u"uint16",
    u"uint32",       u"uint64",      u"logical",    u"datetime",
    u"string",       u"duration",    u"char",       u"struct",
    u"binary_array", u"map",         u"list_array", u"large_list_array",
    u"null",         u"categorical", u"",           u"fixed_binary_array"};

constexpr const char16_t* kUnits[] = {u"seconds", u"milliseconds", u"microseconds", u"nanoseconds",
                                      u"second"};

constexpr size_t kLengths[] = {0, 1, 2, 3, 7, 8, 9, 17};
constexpr std::u16string_view kFieldNames[] = {u"x", u"y", u"ключ", u"", {u"\0z", 2}};

Bytes any_bytes(Random& random, size_t size) {
  Bytes bytes(size);
  for (size_t i = 0; i < size; i += 8) {
    const std::uint64_t word = random.next();
    std::memcpy(bytes.data() + i, &word, std::min<size_t>(8, size - i));
  }
  return bytes;
}

DraftPtr scalar(double value) {
  Bytes bytes(sizeof(value));
  std::memcpy(bytes.data(), &value, sizeof(value));
  return draft_numbers(hxClassID::Double, {1, 1}, std::move(bytes));
}

/// 0, 1, 2, ..., `count` - 1
DraftPtr start_offsets(Random& random, size_t count) {
  DraftPtr starts = any_numbers(random, hxClassID::UInt64, count);
  for (size_t i = 0; i < count; ++i) {
    const std::uint64_t start = i;
    std::memcpy(starts->bytes.data() + 8 * i, &start, sizeof(start));
  }
  return starts;
}

size_t bytes_of_bits(size_t bits) { return (bits + 7) / 8; }

DraftPtr validity(Random& random, size_t length) {
  return any_buffer(random, random.once_in(2) ? 0 : bytes_of_bits(length));
}

/// Sometimes has no offsets. The conversion reads that as a length of -1.
DraftPtr text_data(Random& random, size_t length) {
  const size_t starts = random.once_in(16) ? 0 : length + 1;
  DraftFields fields;
  fields.emplace_back("Values", any_numbers(random, hxClassID::UInt8, length + random.below(3)));
  fields.emplace_back("StartOffsets", start_offsets(random, starts));
  return draft_struct(std::move(fields));
}

/// The conversion truncates the length toward zero. The length may be negative.
DraftPtr logical_data(Random& random, size_t length) {
  const double whole = static_cast<double>(length);
  DraftPtr data = any_buffer(random, bytes_of_bits(length));
  data->fields.emplace_back("Length");
  data->slots.push_back(scalar(random.pick(std::array{whole, whole + 0.75, whole, -whole - 0.75})));
  return data;
}

DraftPtr any_unit(Random& random) { return draft_text(random.pick(kUnits)); }

DraftPtr datetime_data(Random& random, size_t length) {
  DraftFields fields;
  fields.emplace_back("Values", any_numbers(random, hxClassID::Int64, length));
  fields.emplace_back("Units", any_unit(random));
  fields.emplace_back("TimeZone", draft_text(random.once_in(2) ? u"" : u"Europe/Paris"));
  if (random.once_in(2)) fields.emplace_back("DateType", draft_text(u"Timestamp"));
  return draft_struct(std::move(fields));
}

/// Half of the units do not fit the class.
DraftPtr duration_data(Random& random, size_t length) {
  const hxClassID class_id = random.once_in(2) ? hxClassID::Int32 : hxClassID::Int64;
  DraftFields fields;
  fields.emplace_back("Values", any_numbers(random, class_id, length));
  fields.emplace_back("Units", any_unit(random));
  return draft_struct(std::move(fields));
}

/// Two of the ten classes cannot hold codes.
DraftPtr categorical_data(Random& random, size_t length) {
  DraftFields fields;
  fields.emplace_back("Categories", text_data(random, random.below(4)));
  fields.emplace_back("Values", any_numbers(random, random.pick(kNumberClasses), length));
  fields.emplace_back("Ordinal", draft_numbers(hxClassID::Logical, {1, 1},
                                               {static_cast<std::uint8_t>(random.below(2))}));
  return draft_struct(std::move(fields));
}

DraftPtr envelope(const char16_t* kind, const char16_t* type, DraftPtr valid, DraftPtr data) {
  DraftFields fields;
  fields.emplace_back("ArrowType", draft_text(kind));
  fields.emplace_back("Type", draft_text(type));
  fields.emplace_back("Valid", std::move(valid));
  fields.emplace_back("Data", std::move(data));
  return draft_struct(std::move(fields));
}

DraftPtr list_of(Random& random, DraftPtr values, size_t length) {
  DraftFields data;
  data.emplace_back("Values", std::move(values));
  data.emplace_back("StartOffsets", start_offsets(random, length + 1));
  return envelope(u"list_array", u"list_array", validity(random, length),
                  draft_struct(std::move(data)));
}

DraftPtr struct_of(Random& random, std::vector<DraftPtr> children, size_t length) {
  std::vector<DraftPtr> names;
  for (size_t i = 0; i < children.size(); ++i)
    names.push_back(draft_text(random.pick(kFieldNames)));
  DraftFields data;
  data.emplace_back("FieldName", draft_cells(std::move(names)));
  data.emplace_back("FieldData", draft_cells(std::move(children)));
  return envelope(u"struct", u"struct", validity(random, length), draft_struct(std::move(data)));
}

DraftPtr nested_envelope(Random& random, size_t length, int depth) {
  if (random.once_in(2)) {
    return list_of(random, any_envelope(random, random.pick(kLengths), depth - 1), length);
  }
  std::vector<DraftPtr> children;
  for (size_t n = 1 + random.below(3); n > 0; --n) {
    children.push_back(any_envelope(random, length, depth - 1));
  }
  return struct_of(random, std::move(children), length);
}

struct StructType {
  const char16_t* name;
  DraftPtr (*data)(Random&, size_t length);
};

constexpr StructType kStructTypes[] = {{u"string", text_data},
                                       {u"char", text_data},
                                       {u"binary_array", text_data},
                                       {u"logical", logical_data},
                                       {u"datetime", datetime_data},
                                       {u"duration", duration_data},
                                       {u"categorical", categorical_data}};

}  // namespace

Dims any_dims(Random& random, size_t count) {
  switch (random.below(6)) {
    case 0:
      return {1, count};
    case 1:
      return {1, 1, count};
    case 2:
      if (count % 2 == 0) return {2, count / 2};
      break;
    default:
      break;
  }
  return {count, 1};
}

DraftPtr any_numbers(Random& random, hxClassID class_id, size_t count) {
  return draft_numbers(class_id, any_dims(random, count), any_bytes(random, 8 * count));
}

DraftPtr any_value(Random& random) {
  const size_t count = random.below(3);
  switch (random.below(8)) {
    case 0:
      return draft_text(random.pick(kTypeNames));
    case 1:
      return draft_numbers(hxClassID::Logical, any_dims(random, count), {1, 0, 1});
    case 2:
      return draft_cells(std::vector<DraftPtr>(count));
    case 3:
      return draft_struct({});
    case 4: {
      DraftPtr object = draft_struct({});
      object->class_id = hxClassID::Object;
      object->object_name = random.once_in(2) ? "string" : "table";
      return object;
    }
    default:
      return any_numbers(random, random.pick(kNumberClasses), count);
  }
}

DraftPtr any_buffer(Random& random, size_t size) {
  DraftFields fields;
  fields.emplace_back("ArrowType", draft_text(u"buffer"));
  fields.emplace_back("Values", any_numbers(random, hxClassID::UInt8, size));
  return draft_struct(std::move(fields));
}

DraftPtr any_envelope(Random& random, size_t length, int depth) {
  if (depth > 0 && random.once_in(4)) return nested_envelope(random, length, depth);
  DraftPtr valid = validity(random, length);
  if (random.once_in(4)) {
    return envelope(u"array", random.pick(kTypeNames), std::move(valid),
                    any_numbers(random, random.pick(kNumberClasses), length));
  }
  const StructType& type = random.pick(kStructTypes);
  return envelope(u"array", type.name, std::move(valid), type.data(random, length));
}

DraftPtr any_envelopes(Random& random, size_t count, size_t length, int depth) {
  std::vector<DraftPtr> elements;
  for (size_t i = 0; i < count; ++i) elements.push_back(any_envelope(random, length, depth));
  return draft_structs(any_dims(random, count), std::move(elements));
}

DraftPtr deep_envelope(Random& random, size_t levels) {
  DraftPtr inner = any_envelope(random, 1, 0);
  for (; levels > 0; --levels) {
    if (random.once_in(2)) {
      inner = list_of(random, std::move(inner), 1);
      continue;
    }
    std::vector<DraftPtr> children;
    children.push_back(std::move(inner));
    inner = struct_of(random, std::move(children), 1);
  }
  return inner;
}

DraftPtr any_table(Random& random) {
  const size_t columns = random.below(4);
  std::vector<DraftPtr> names;
  for (size_t i = 0; i < columns; ++i) names.push_back(draft_text(random.pick(kFieldNames)));
  DraftFields fields;
  fields.emplace_back("ArrowType", draft_text(random.once_in(2) ? u"table" : u"array"));
  fields.emplace_back("Columns", any_envelopes(random, columns, random.pick(kLengths), 1));
  fields.emplace_back("Names", draft_cells(std::move(names)));
  return draft_struct(std::move(fields));
}

}  // namespace numera::gauntlet::reading
