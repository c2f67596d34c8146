#include "tests/gauntlet/reading/defects.h"

#include <cmath>
#include <cstring>
#include <limits>

#include "tests/gauntlet/reading/well_formed.h"
#include "tests/support/host_builder.h"

namespace numera::gauntlet::reading {
namespace {

/// Changes the value of a slot that is not empty. Returns false if the defect does not fit the
/// value.
using Defect = bool (*)(Random&, DraftPtr&);

bool empty_slot(Random& /*random*/, DraftPtr& slot) {
  slot = nullptr;
  return true;
}

bool another_value(Random& random, DraftPtr& slot) {
  slot = draft_of(any_value(random).get());
  return true;
}

/// The same bytes in another numeric class.
bool another_class(Random& random, DraftPtr& slot) {
  if (!slot->is_numeric() || slot->complex) return false;
  constexpr auto kFirst = static_cast<int>(hxClassID::Double);
  slot->class_id = static_cast<hxClassID>(kFirst + static_cast<int>(random.below(10)));
  return true;
}

bool complex_numbers(Random& /*random*/, DraftPtr& slot) {
  if (!slot->is_numeric() || slot->sparse) return false;
  slot->complex = true;
  return true;
}

bool sparse_numbers(Random& /*random*/, DraftPtr& slot) {
  if (slot->complex || !(slot->is_numeric() || slot->class_id == hxClassID::Logical)) return false;
  slot->sparse = true;
  return true;
}

bool object_for_struct(Random& /*random*/, DraftPtr& slot) {
  if (slot->class_id != hxClassID::Struct) return false;
  slot->class_id = hxClassID::Object;
  slot->object_name = "my.Value";
  return true;
}

bool cell_for_struct(Random& /*random*/, DraftPtr& slot) {
  if (!slot->is_struct()) return false;
  slot->class_id = hxClassID::Cell;
  slot->dims = {1, slot->slots.size()};
  slot->fields.clear();
  return true;
}

bool struct_for_cell(Random& /*random*/, DraftPtr& slot) {
  if (slot->class_id != hxClassID::Cell) return false;
  slot->class_id = hxClassID::Struct;
  slot->dims = {1, 1};
  slot->fields.assign(slot->slots.size(), "cell");
  return true;
}

bool wrapped_in_cell(Random& /*random*/, DraftPtr& slot) {
  auto cell = std::make_unique<Draft>();
  cell->slots.push_back(std::move(slot));
  slot = std::move(cell);
  return true;
}

bool no_elements(Random& random, DraftPtr& slot) {
  static const Dims kDims[] = {
      {0, 0}, {0, 1}, {1, 0}, {0, 3}, {5, 0}, {2, 0, 3}, {std::numeric_limits<size_t>::max(), 0}};
  slot->dims = random.pick(kDims);
  slot->slots.clear();
  slot->text.clear();
  return true;
}

/// One or two elements more, or one fewer. New slots are empty.
bool another_count(Random& random, DraftPtr& slot) {
  const size_t count = slot->count();
  const size_t wanted = random.once_in(2) ? count + 1 + random.below(2) : count - (count > 0);
  slot->dims = any_dims(random, wanted);
  if (slot->class_id == hxClassID::Char) slot->text.resize(wanted, u's');
  if (slot->class_id == hxClassID::Cell) slot->slots.resize(wanted);
  if (slot->is_struct()) slot->slots.resize(wanted * slot->fields.size());
  return true;
}

bool another_shape(Random& random, DraftPtr& slot) {
  slot->dims = any_dims(random, slot->count());
  return true;
}

bool another_text(Random& random, DraftPtr& slot) {
  using namespace std::string_view_literals;
  static constexpr std::u16string_view kTexts[] = {
      u"array",  u"list_array",   u"struct",       u"map",          u"buffer",      u"table",
      u"Array",  u"array\0"sv,    u"arrays",       u"arra",         u"buffer\0"sv,  u"Buffer",
      u"",       u"seconds",      u"milliseconds", u"microseconds", u"nanoseconds", u"SECONDS",
      u"string", u"binary_array", u"logical",      u"datetime",     u"duration",    u"categorical",
      u"char",   u"double",       u"String",       u"string\0"sv,   u"null",        u"seconds\0"sv,
      u"größer"};
  if (slot->class_id != hxClassID::Char) return false;
  slot = draft_of(testing::Char(random.pick(kTexts)).get());
  return true;
}

/// A text that ends with an unpaired surrogate at a random position. The host's exception names the
/// position.
bool undecodable_text(Random& random, DraftPtr& slot) {
  if (slot->class_id != hxClassID::Char) return false;
  std::u16string text(random.below(8), u'a');
  text.push_back(random.once_in(2) ? u'\xD83D' : u'\xDE00');
  slot = draft_of(testing::Char(text).get());
  return true;
}

bool another_number(Random& random, DraftPtr& slot) {
  static const double kNumbers[] = {std::nan(""),
                                    -std::nan(""),
                                    std::numeric_limits<double>::infinity(),
                                    -std::numeric_limits<double>::infinity(),
                                    1e300,
                                    std::ldexp(1.0, 63),
                                    std::nextafter(std::ldexp(1.0, 63), 0.0),
                                    -std::ldexp(1.0, 63),
                                    std::nextafter(-std::ldexp(1.0, 63), -1e300),
                                    -1.0,
                                    -0.5,
                                    -3.9,
                                    5e-324,
                                    10.9,
                                    0.0};
  if (slot->class_id != hxClassID::Double || slot->bytes.size() < sizeof(double)) return false;
  const double number = random.pick(kNumbers);
  std::memcpy(slot->bytes.data(), &number, sizeof(number));
  return true;
}

/// Removes field `number` from all elements and returns its values.
std::vector<DraftPtr> take_field(Draft& value, size_t number) {
  std::vector<DraftPtr> taken;
  std::vector<DraftPtr> kept;
  for (size_t i = 0; i < value.slots.size(); ++i) {
    auto& target = i % value.fields.size() == number ? taken : kept;
    target.push_back(std::move(value.slots[i]));
  }
  value.slots = std::move(kept);
  value.fields.erase(value.fields.begin() + static_cast<std::ptrdiff_t>(number));
  return taken;
}

bool field_absent(Random& random, DraftPtr& slot) {
  if (!slot->is_struct() || slot->fields.empty()) return false;
  take_field(*slot, random.below(slot->fields.size()));
  return true;
}

bool field_renamed(Random& random, DraftPtr& slot) {
  static constexpr const char* kNames[] = {"values", "Data", "Values", "Length", "ArrowType"};
  if (!slot->is_struct() || slot->fields.empty()) return false;
  slot->fields[random.below(slot->fields.size())] = random.pick(kNames);
  return true;
}

bool fields_swapped(Random& random, DraftPtr& slot) {
  if (!slot->is_struct() || slot->fields.size() < 2) return false;
  const size_t first = random.below(slot->fields.size() - 1);
  std::swap(slot->fields[first], slot->fields[first + 1]);
  return true;
}

constexpr Defect kDefects[] = {
    empty_slot,       empty_slot,       another_value,   another_value,   another_class,
    complex_numbers,  sparse_numbers,   cell_for_struct, struct_for_cell, wrapped_in_cell,
    no_elements,      no_elements,      another_count,   another_count,   another_shape,
    another_text,     another_text,     another_number,  another_number,  object_for_struct,
    undecodable_text, undecodable_text, field_absent,    field_renamed,   fields_swapped};

void damage_slot(Random& random, DraftPtr& slot) {
  while (slot != nullptr && !random.pick(kDefects)(random, slot)) {
  }
  if (random.once_in(4)) damage_slot(random, slot);
}

/// Lists all slots that hold a value, starting with the value itself.
void collect(DraftPtr& slot, std::vector<DraftPtr*>& found) {
  if (slot == nullptr) return;
  found.push_back(&slot);
  for (DraftPtr& child : slot->slots) collect(child, found);
}

std::vector<DraftPtr*> slots_of(DraftPtr& value) {
  std::vector<DraftPtr*> found;
  collect(value, found);
  return found;
}

void damage_anywhere(Random& random, DraftPtr& value) {
  const auto slots = slots_of(value);
  if (!slots.empty()) damage_slot(random, *random.pick(slots));
}

void damage_one_container(Random& random, DraftPtr& value) {
  auto slots = slots_of(value);
  std::erase_if(slots, [](const DraftPtr* slot) { return (*slot)->slots.empty(); });
  if (slots.empty()) return;
  DraftPtr& chosen = *random.pick(slots);
  for (DraftPtr& slot : chosen->slots) {
    if (random.once_in(2)) damage_slot(random, slot);
  }
  if (random.once_in(8)) field_absent(random, chosen);
}

}  // namespace

void damage(Random& random, DraftPtr& value) {
  switch (random.below(6)) {
    case 0:
      return;
    case 1:
      damage_anywhere(random, value);
      return;
    case 2:
      for (size_t n = 2 + random.below(4); n > 0; --n) damage_anywhere(random, value);
      return;
    case 3:
      damage_one_container(random, value);
      damage_anywhere(random, value);
      return;
    default:
      damage_one_container(random, value);
  }
}

}  // namespace numera::gauntlet::reading
