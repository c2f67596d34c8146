#include <utility>

#include "tests/gauntlet/host_values.h"

namespace numera::gauntlet {
namespace {

constexpr std::pair<const char*, hxClassID> kClasses[] = {
    {"double", hxClassID::Double}, {"single", hxClassID::Single}, {"int8", hxClassID::Int8},
    {"int16", hxClassID::Int16},   {"int32", hxClassID::Int32},   {"int64", hxClassID::Int64},
    {"uint8", hxClassID::UInt8},   {"uint16", hxClassID::UInt16}, {"uint32", hxClassID::UInt32},
    {"uint64", hxClassID::UInt64}};

/// The kinds that a single chunk can have. Dictionaries can differ only between chunks.
constexpr std::pair<Dictionaries, const char*> kDictionaries[] = {
    {Dictionaries::kUnused, "unused entries"},
    {Dictionaries::kOutOfRange, "codes out of range"},
    {Dictionaries::kNoEntries, "no entries"}};

std::vector<HostType> plain_types() {
  std::vector<HostType> types;
  for (const auto& [name, class_id] : kClasses) {
    types.push_back({name, HostKind::kNumeric, name, class_id, "", {}});
  }
  types.push_back({"logical", HostKind::kLogical, "logical", hxClassID::UInt8, "", {}});
  for (const char* units : {"seconds", "milliseconds", "microseconds", "nanoseconds", "sec"}) {
    const std::string name = std::string("datetime ") + units;
    types.push_back({name, HostKind::kDatetime, "datetime", hxClassID::Int64, units, {}});
  }
  for (const char* units : {"seconds", "milliseconds", "SECONDS"}) {
    const std::string name = std::string("duration ") + units;
    types.push_back({name, HostKind::kDuration, "duration", hxClassID::Int32, units, {}});
  }
  for (const char* units : {"microseconds", "nanoseconds"}) {
    const std::string name = std::string("duration ") + units;
    types.push_back({name, HostKind::kDuration, "duration", hxClassID::Int64, units, {}});
  }
  for (const char* text : {"string", "char", "binary_array"}) {
    types.push_back({text, HostKind::kText, text, hxClassID::UInt64, "", {}});
  }
  for (const auto& [name, class_id] : kClasses) {
    if (class_id == hxClassID::Double || class_id == hxClassID::Single) continue;
    types.push_back({std::string("categorical ") + name,
                     HostKind::kCategorical,
                     "categorical",
                     class_id,
                     "",
                     {}});
  }
  for (const auto& [dictionaries, name] : kDictionaries) {
    for (const hxClassID class_id : {hxClassID::Int8, hxClassID::UInt64}) {
      const char* const width = class_id == hxClassID::Int8 ? "int8" : "uint64";
      types.push_back({std::string("categorical ") + width + ", " + name,
                       HostKind::kCategorical,
                       "categorical",
                       class_id,
                       "",
                       {},
                       dictionaries});
    }
  }
  return types;
}

HostType list_of(HostType child) {
  return {"list of " + child.name, HostKind::kList, "list_array", hxClassID::UInt64, "", {child}};
}

HostType struct_of(HostType child) {
  HostType other = plain_types()[2];
  return {"struct of " + child.name,
          HostKind::kStruct,
          "struct",
          hxClassID::UInt64,
          "",
          {child, other}};
}

}  // namespace

std::vector<HostType> host_types() {
  std::vector<HostType> types = plain_types();
  const HostType logical = types[10];
  for (const HostType& type : plain_types()) {
    types.push_back(list_of(type));
    types.push_back(struct_of(type));
  }
  types.push_back(list_of(list_of(logical)));
  types.push_back(list_of(struct_of(logical)));
  types.push_back(struct_of(list_of(logical)));
  types.push_back(struct_of(struct_of(logical)));
  return types;
}

}  // namespace numera::gauntlet
