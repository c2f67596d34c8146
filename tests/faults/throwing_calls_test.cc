// The host headers declare `noexcept` on operations that cannot throw. The recording host can fail
// every other operation. So failing each call that may throw leaves no operation out.

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "numera/host/string_array.h"
#include "numera/host/text_codec.h"
#include "tests/support/host_builder.h"
#include "tests/support/recording_host.h"

namespace numera::testing {
namespace {

struct Operation {
  const char* name;
  bool is_noexcept;
  std::function<void()> call;
};

/// The values on which the operations are called.
struct Values {
  hxArrayPtr number = Scalar<double>(1);
  hxArrayPtr text = Char("a");
  hxArrayPtr cell = Cell({Scalar<double>(1)});
  hxArrayPtr record = Struct({{"x", Scalar<double>(1)}});
  hxArrayPtr strings = Strings({u"a"});
  std::unique_ptr<hxStringArray> own_strings = hxMakeStringArray(Dims{1, 1});
  hxUTF8ToUTF16 to_utf16{"UTF-8"};
  hxUTF16ToUTF8 to_utf8{"UTF-8"};
};

std::vector<Operation> inspecting(const Values& values) {
  const hxArray* n = values.number.get();
  const hxArray* c = values.cell.get();
  const hxArray* s = values.record.get();
  return {
      {"hxGetClassID", noexcept(hxGetClassID(n)), [=] { hxGetClassID(n); }},
      {"hxGetClassName", noexcept(hxGetClassName(n)), [=] { hxGetClassName(n); }},
      {"hxIsEmpty", noexcept(hxIsEmpty(n)), [=] { hxIsEmpty(n); }},
      {"hxIsNumeric", noexcept(hxIsNumeric(n)), [=] { hxIsNumeric(n); }},
      {"hxIsComplex", noexcept(hxIsComplex(n)), [=] { hxIsComplex(n); }},
      {"hxIsSparse", noexcept(hxIsSparse(n)), [=] { hxIsSparse(n); }},
      {"hxIsDataShared", noexcept(hxIsDataShared(n)), [=] { hxIsDataShared(n); }},
      {"hxGetElementSize", noexcept(hxGetElementSize(n)), [=] { hxGetElementSize(n); }},
      {"hxGetNumberOfElements", noexcept(hxGetNumberOfElements(n)),
       [=] { hxGetNumberOfElements(n); }},
      {"hxGetDimensions", noexcept(hxGetDimensions(n)), [=] { hxGetDimensions(n); }},
      {"hxGetData const", noexcept(hxGetData(n)), [=] { hxGetData(n); }},
      {"hxGetString", noexcept(hxGetString(n)), [t = values.text.get()] { hxGetString(t); }},
      {"hxGetFieldNumber", noexcept(hxGetFieldNumber(s, "x")), [=] { hxGetFieldNumber(s, "x"); }},
      {"hxGetNumberOfFields", noexcept(hxGetNumberOfFields(s)), [=] { hxGetNumberOfFields(s); }},
      {"hxGetFieldName", noexcept(hxGetFieldName(s, 0)), [=] { hxGetFieldName(s, 0); }},
      {"hxGetField", noexcept(hxGetField(s, 0, "x")), [=] { hxGetField(s, 0, "x"); }},
      {"hxGetFieldChecked", noexcept(hxGetFieldChecked(s, 0, "x")),
       [=] { hxGetFieldChecked(s, 0, "x"); }},
      {"hxGetCell", noexcept(hxGetCell(c, 0)), [=] { hxGetCell(c, 0); }},
      {"hxGetCellChecked", noexcept(hxGetCellChecked(c, 0)), [=] { hxGetCellChecked(c, 0); }},
      {"hxIsStringArray", noexcept(hxIsStringArray(n)), [=] { hxIsStringArray(n); }},
      {"hxGetStringArray", noexcept(hxGetStringArray(n)),
       [t = values.strings.get()] { hxGetStringArray(t); }},
  };
}

std::vector<Operation> making_and_writing(const Values& values) {
  static constexpr std::array<size_t, 2> kDims = {1, 1};
  static constexpr std::array<const char*, 1> kNames = {"x"};
  constexpr auto kDouble = hxClassID::Double;
  constexpr auto kReal = hxComplexity::Real;
  hxArray* const n = values.number.get();
  hxArray* const c = values.cell.get();
  hxArray* const s = values.record.get();
  return {
      {"hxCreateNumericArray", noexcept(hxCreateNumericArray(kDims, kDouble, kReal)),
       [=] { hxCreateNumericArray(kDims, kDouble, kReal); }},
      {"hxCreateUninitNumericArray", noexcept(hxCreateUninitNumericArray(kDims, kDouble, kReal)),
       [=] { hxCreateUninitNumericArray(kDims, kDouble, kReal); }},
      {"hxCreateCellArray", noexcept(hxCreateCellArray(kDims)), [] { hxCreateCellArray(kDims); }},
      {"hxCreateStructArray", noexcept(hxCreateStructArray(kDims, kNames)),
       [] { hxCreateStructArray(kDims, kNames); }},
      {"hxCreateCharArray", noexcept(hxCreateCharArray("a", 1)), [] { hxCreateCharArray("a", 1); }},
      {"hxCreateCharArray", noexcept(hxCreateCharArray(u"a", 1)),
       [] { hxCreateCharArray(u"a", 1); }},
      {"hxSharedCopy", noexcept(hxSharedCopy(n)), [=] { hxSharedCopy(n); }},
      {"hxDestroyArray", noexcept(hxDestroyArray(n)), [] { hxDestroyArray(nullptr); }},
      {"hxGetData", noexcept(hxGetData(n)), [=] { hxGetData(n); }},
      {"hxReplaceCell", noexcept(hxReplaceCell(c, 0, hxArrayPtr())),
       [=] { hxReplaceCell(c, 0, hxArrayPtr()); }},
      {"hxSetCell", noexcept(hxSetCell(c, 0, hxArrayPtr())),
       [=] { hxSetCell(c, 0, hxArrayPtr()); }},
      {"hxSetField", noexcept(hxSetField(s, 0, "x", hxArrayPtr())),
       [=] { hxSetField(s, 0, "x", hxArrayPtr()); }},
      {"hxThrowIfInterruptPending", noexcept(hxThrowIfInterruptPending()),
       [] { hxThrowIfInterruptPending(); }},
      {"hxMakeStringArray", noexcept(hxMakeStringArray(kDims)), [] { hxMakeStringArray(kDims); }},
      {"hxCreateStringArrayFrom",
       noexcept(hxCreateStringArrayFrom(std::unique_ptr<hxStringArray>())),
       [inner = values.own_strings.get()] {
         hxCreateStringArrayFrom(hxMakeStringArray(inner->dimensions()));
       }},
  };
}

std::vector<Operation> texts(const Values& values) {
  static constexpr std::array<std::int32_t, 2> kOffsets = {0, 1};
  static constexpr std::array<std::int64_t, 2> kLargeOffsets = {0, 1};
  static constexpr std::array<std::uint8_t, 1> kBytes = {'a'};
  hxStringArray* const s = values.own_strings.get();
  const hxUTF8ToUTF16* const decoder = &values.to_utf16;
  const hxUTF16ToUTF8* const encoder = &values.to_utf8;
  return {
      {"hxStringArray::dimensions", noexcept(s->dimensions()), [=] { s->dimensions(); }},
      {"hxStringArray::size", noexcept(s->size()), [=] { s->size(); }},
      {"hxStringArray::element", noexcept(s->element(0)), [=] { s->element(0); }},
      {"hxStringArray::set", noexcept(s->set(0, u"a")), [=] { s->set(0, u"a"); }},
      {"hxStringArray::set_missing", noexcept(s->set_missing(0)), [=] { s->set_missing(0); }},
      {"hxStringArray::assign_utf8", noexcept(s->assign_utf8(0, kOffsets, kBytes.data())),
       [=] { s->assign_utf8(0, kOffsets, kBytes.data()); }},
      {"hxStringArray::assign_utf8", noexcept(s->assign_utf8(0, kLargeOffsets, kBytes.data())),
       [=] { s->assign_utf8(0, kLargeOffsets, kBytes.data()); }},
      {"hxUTF8ToUTF16", noexcept(hxUTF8ToUTF16("UTF-8")), [] { hxUTF8ToUTF16("UTF-8"); }},
      {"hxUTF8ToUTF16::convert", noexcept(decoder->convert("a")), [=] { decoder->convert("a"); }},
      {"hxUTF16ToUTF8", noexcept(hxUTF16ToUTF8("UTF-8")), [] { hxUTF16ToUTF8("UTF-8"); }},
      {"hxUTF16ToUTF8::convert", noexcept(encoder->convert(u"a", 1)),
       [=] { encoder->convert(u"a", 1); }},
  };
}

TEST(HostCalls, MayThrowUnlessTheHeadersSayNoexcept) {
  const Values values;
  size_t operations = 0;
  for (const auto& group : {inspecting(values), making_and_writing(values), texts(values)}) {
    for (const Operation& operation : group) {
      SCOPED_TRACE(operation.name);
      ++operations;
      Reset();
      operation.call();
      EXPECT_GE(Calls(operation.name), 1U);
      EXPECT_EQ(TotalThrowingCalls() == 0, operation.is_noexcept);
    }
  }
  Reset();
  EXPECT_EQ(operations, 47U);  // two are called twice; three that only throw are left out
}

}  // namespace
}  // namespace numera::testing
