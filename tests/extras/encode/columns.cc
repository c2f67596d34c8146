#include "tests/extras/encode/columns.h"

#include <new>

#include "tests/support/arrow_values.h"

namespace numera::testing {

std::vector<ColumnType> column_types() {
  using namespace ::arrow;  // NOLINT(google-build-using-namespace)
  const auto text_dictionary = [](const auto& index, const auto& value, bool ordered) {
    return ColumnType{dictionary(index, value, ordered), R"(["b", null, "a", "b"])",
                      R"(["c", "a", null])"};
  };
  return {
      {null(), "[null, null, null]", "[null]"},
      {boolean(), "[true, null, false, true]", "[false, true, null]"},
      {int8(), "[-128, null, 127]", "[1]"},
      {uint8(), "[0, null, 255]", "[1]"},
      {int16(), "[-32768, null, 32767]", "[1, 2]"},
      {uint16(), "[0, null, 65535]", "[1]"},
      {int32(), "[-2147483648, null, 2147483647]", "[1]"},
      {uint32(), "[0, null, 4294967295]", "[1]"},
      {int64(), "[-9223372036854775808, null, 9223372036854775807]", "[1]"},
      {uint64(), "[0, null, 18446744073709551615]", "[1]"},
      {float32(), "[NaN, null, -0.0, 1.5]", "[2.5]"},
      {float64(), "[NaN, null, -0.0, 1e300]", "[2.5]"},
      {utf8(), R"(["", null, "Zürich", "a\u0000b", "😀"])", R"(["ascii"])"},
      {large_utf8(), R"(["x", null, "日本"])", R"([null])"},
      {binary(), R"(["", null, "bytes"])", R"(["more"])"},
      {large_binary(), R"(["x", null, ""])", R"([""])"},
      {fixed_size_binary(3), R"(["abc", null, "def"])", R"(["ghi"])"},
      {fixed_size_binary(0), R"(["", null, ""])", R"([""])"},
      {date32(), "[-2147483648, null, 2147483647, 0]", "[19000]"},
      {date64(), "[-86400000, null, 86400000, 0]", "[1641600000000]"},
      {time32(TimeUnit::SECOND), "[0, null, 86399]", "[1]"},
      {time32(TimeUnit::MILLI), "[0, null, 86399999]", "[1]"},
      {time64(TimeUnit::MICRO), "[0, null, 86399999999]", "[1]"},
      {time64(TimeUnit::NANO), "[0, null, 86399999999999]", "[1]"},
      {timestamp(TimeUnit::SECOND), "[-1, null, 1]", "[2]"},
      {timestamp(TimeUnit::MILLI, "Europe/Paris"), "[-1, null, 1]", "[2]"},
      {timestamp(TimeUnit::MICRO, "América/São_Paulo"), "[-1, null, 1]", "[2]"},
      {timestamp(TimeUnit::NANO, "日本"), "[-1, null, 1]", "[2]"},
      {duration(TimeUnit::SECOND), "[-1, null, 1]", "[2]"},
      {duration(TimeUnit::NANO), "[-1, null, 1]", "[2]"},
      text_dictionary(int8(), utf8(), false),
      text_dictionary(int8(), utf8(), true),
      text_dictionary(uint8(), large_utf8(), false),
      text_dictionary(int16(), utf8(), false),
      text_dictionary(uint16(), utf8(), true),
      text_dictionary(int32(), large_utf8(), true),
      text_dictionary(uint32(), utf8(), false),
      text_dictionary(int64(), utf8(), false),
      text_dictionary(uint64(), utf8(), false),
      {list(int32()), "[[1, null], null, [], [2]]", "[[3]]"},
      {large_list(utf8()), R"([["a", null], null, [], ["b"]])", R"([["c"]])"},
      {map(utf8(), int16()), R"([[["a", 1], ["b", null]], null, []])", R"([[["c", 2]]])"},
      {map(int32(), list(date32())), "[[[1, [1, 2]], [2, null]], null, []]", "[[[3, []]]]"},
      {struct_({field("x", float64()), field("ñ", utf8())}),
       R"([{"x": 1, "ñ": "a"}, null, {"x": null, "ñ": null}])", R"([{"x": 2, "ñ": "b"}])"},
  };
}

std::vector<Nest> nestings() {
  using ArrayPtr = std::shared_ptr<::arrow::Array>;
  // Lists: null, the first element, empty, all other elements.
  const auto offsets = [](const ::arrow::Array& child, const auto& type) {
    const auto end = std::to_string(child.length());
    return ArrowArray(type,
                      child.length() == 0 ? "[null, 0, 0, 0, 0]" : "[null, 0, 1, 1, " + end + "]");
  };
  return {
      [=](const ArrayPtr& child) -> ArrayPtr {
        return ::arrow::ListArray::FromArrays(*offsets(*child, ::arrow::int32()), *child)
            .ValueOrDie();
      },
      [=](const ArrayPtr& child) -> ArrayPtr {
        return ::arrow::LargeListArray::FromArrays(*offsets(*child, ::arrow::int64()), *child)
            .ValueOrDie();
      },
      [](const ArrayPtr& child) -> ArrayPtr {
        ::arrow::BooleanBuilder present;
        for (std::int64_t i = 0; i < child->length(); ++i) {
          if (!present.Append(i % 2 == 0).ok()) throw std::bad_alloc();
        }
        const auto bits = present.Finish().ValueOrDie();
        const std::vector<std::string> names = {"one", "two"};
        return ::arrow::StructArray::Make({child, child}, names, bits->data()->buffers[1])
            .ValueOrDie();
      },
      [=](const ArrayPtr& child) -> ArrayPtr {
        ::arrow::Int32Builder keys;
        for (std::int64_t i = 0; i < child->length(); ++i) {
          if (!keys.Append(static_cast<std::int32_t>(i)).ok()) throw std::bad_alloc();
        }
        return ::arrow::MapArray::FromArrays(offsets(*child, ::arrow::int32()),
                                             keys.Finish().ValueOrDie(), child)
            .ValueOrDie();
      },
  };
}

}  // namespace numera::testing
