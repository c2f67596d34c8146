#include "tests/gauntlet/subjects.h"

#include <utility>

namespace numera::gauntlet {
namespace {

using ::arrow::field;
using ::arrow::TimeUnit;
using TypePtr = std::shared_ptr<::arrow::DataType>;

constexpr std::pair<Dictionaries, const char*> kKindsOfDictionaries[] = {
    {Dictionaries::kEqual, "equal"},           {Dictionaries::kDiffering, "differing"},
    {Dictionaries::kUnused, "unused entries"}, {Dictionaries::kOutOfRange, "codes out of range"},
    {Dictionaries::kNoEntries, "no entries"},  {Dictionaries::kSliced, "sliced"}};

std::vector<TypePtr> types() {
  return {::arrow::null(),
          ::arrow::boolean(),
          ::arrow::uint8(),
          ::arrow::int8(),
          ::arrow::uint16(),
          ::arrow::int16(),
          ::arrow::uint32(),
          ::arrow::int32(),
          ::arrow::uint64(),
          ::arrow::int64(),
          ::arrow::float32(),
          ::arrow::float64(),
          ::arrow::utf8(),
          ::arrow::large_utf8(),
          ::arrow::binary(),
          ::arrow::large_binary(),
          ::arrow::fixed_size_binary(1),
          ::arrow::fixed_size_binary(11),
          ::arrow::date32(),
          ::arrow::date64(),
          ::arrow::time32(TimeUnit::SECOND),
          ::arrow::time32(TimeUnit::MILLI),
          ::arrow::time64(TimeUnit::MICRO),
          ::arrow::time64(TimeUnit::NANO),
          ::arrow::timestamp(TimeUnit::SECOND),
          ::arrow::timestamp(TimeUnit::MILLI, "UTC"),
          ::arrow::timestamp(TimeUnit::MICRO, "+05:30"),
          ::arrow::timestamp(TimeUnit::NANO, "Europe/Paris"),
          ::arrow::duration(TimeUnit::MILLI)};
}

std::vector<TypePtr> index_types() {
  return {::arrow::uint8(),  ::arrow::int8(),  ::arrow::uint16(), ::arrow::int16(),
          ::arrow::uint32(), ::arrow::int32(), ::arrow::uint64(), ::arrow::int64()};
}

Subject dictionary_subject(TypePtr type, Dictionaries dictionaries, const char* kind) {
  return {type->ToString() + " (" + kind + ")", type, dictionaries};
}

TypePtr wrapped(Wrap wrap, TypePtr type) {
  switch (wrap) {
    case Wrap::kList:
      return ::arrow::list(std::move(type));
    case Wrap::kLargeList:
      return ::arrow::large_list(std::move(type));
    case Wrap::kStruct:
      return ::arrow::struct_({field("x", std::move(type)), field("ключ", ::arrow::int8())});
    case Wrap::kMap:
      return ::arrow::map(::arrow::utf8(), std::move(type));
  }
  return nullptr;
}

Subject subject_of(TypePtr type, Dictionaries dictionaries, bool sliced_children) {
  std::string name = type->ToString();
  if (sliced_children) name += ", children sliced";
  return {std::move(name), std::move(type), dictionaries, sliced_children};
}

}  // namespace

std::vector<Subject> plain_subjects() {
  std::vector<Subject> subjects;
  for (const TypePtr& type : types()) subjects.push_back({type->ToString(), type});
  for (const TypePtr& index : index_types()) {
    subjects.push_back(dictionary_subject(::arrow::dictionary(index, ::arrow::utf8(), true),
                                          Dictionaries::kEqual, "equal"));
  }
  for (const auto& [dictionaries, kind] : kKindsOfDictionaries) {
    subjects.push_back(dictionary_subject(
        ::arrow::dictionary(::arrow::int16(), ::arrow::utf8(), true), dictionaries, kind));
    subjects.push_back(dictionary_subject(
        ::arrow::dictionary(::arrow::uint64(), ::arrow::large_utf8()), dictionaries, kind));
  }
  return subjects;
}

std::vector<Subject> nested_subjects(Wrap wrap) {
  std::vector<Subject> subjects;
  for (const Subject& plain : plain_subjects()) {
    Subject nested = subject_of(wrapped(wrap, plain.type), plain.dictionaries, false);
    nested.name += " of " + plain.name;
    subjects.push_back(std::move(nested));
  }
  for (const TypePtr& type :
       {::arrow::boolean(), ::arrow::int32(), ::arrow::utf8(), ::arrow::fixed_size_binary(3),
        ::arrow::dictionary(::arrow::int8(), ::arrow::utf8())}) {
    subjects.push_back(subject_of(wrapped(wrap, type), Dictionaries::kEqual, true));
    if (wrap != Wrap::kMap) continue;
    for (const bool sliced : {false, true}) {
      const TypePtr keyed = ::arrow::map(type, ::arrow::boolean());
      subjects.push_back(subject_of(keyed, Dictionaries::kEqual, sliced));
    }
  }
  return subjects;
}

std::vector<Subject> deep_subjects() {
  std::vector<Subject> subjects;
  const Wrap wraps[] = {Wrap::kList, Wrap::kLargeList, Wrap::kStruct, Wrap::kMap};
  for (const bool sliced : {false, true}) {
    for (const Wrap outer : wraps) {
      for (const Wrap inner : wraps) {
        const TypePtr type = wrapped(outer, wrapped(inner, ::arrow::boolean()));
        subjects.push_back(subject_of(type, Dictionaries::kEqual, sliced));
      }
    }
    // Arrow makes the child arrays of a struct on demand. So the entries of a map inside a struct
    // have no null count yet.
    const TypePtr lazy = wrapped(Wrap::kStruct, wrapped(Wrap::kMap, ::arrow::boolean()));
    for (const Wrap outer : wraps) {
      subjects.push_back(subject_of(wrapped(outer, lazy), Dictionaries::kEqual, sliced));
    }
    subjects.push_back(
        subject_of(::arrow::map(::arrow::int64(), ::arrow::null()), Dictionaries::kEqual, sliced));
    subjects.push_back(subject_of(::arrow::struct_({}), Dictionaries::kEqual, sliced));
  }
  return subjects;
}

}  // namespace numera::gauntlet
