#include "tests/support/recorder.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <iterator>
#include <mutex>
#include <optional>
#include <span>
#include <stdexcept>
#include <utility>

#include "numera/host/memory/operations.h"
#include "tests/support/recording_host.h"

namespace numera::testing {
namespace {

constexpr std::array<std::string_view, 48> kOperations = {
    "hxCreateNumericArray",
    "hxCreateUninitNumericArray",
    "hxCreateCellArray",
    "hxCreateStructArray",
    "hxCreateCharArray",
    "hxSharedCopy",
    "hxDestroyArray",
    "hxGetClassID",
    "hxGetClassName",
    "hxIsEmpty",
    "hxIsNumeric",
    "hxIsComplex",
    "hxIsSparse",
    "hxIsDataShared",
    "hxGetElementSize",
    "hxGetNumberOfElements",
    "hxGetDimensions",
    "hxGetData const",
    "hxGetData",
    "hxGetString",
    "hxGetFieldNumber",
    "hxGetNumberOfFields",
    "hxGetFieldName",
    "hxGetField",
    "hxGetFieldChecked",
    "hxGetCell",
    "hxGetCellChecked",
    "hxSetCell",
    "hxReplaceCell",
    "hxSetField",
    "hxThrowIfInterruptPending",
    "hxMakeStringArray",
    "hxCreateStringArrayFrom",
    "hxIsStringArray",
    "hxGetStringArray",
    "hxStringArray::dimensions",
    "hxStringArray::size",
    "hxStringArray::element",
    "hxStringArray::set",
    "hxStringArray::set_missing",
    "hxStringArray::assign_utf8",
    "hxUTF8ToUTF16",
    "hxUTF8ToUTF16::convert",
    "hxUTF16ToUTF8",
    "hxUTF16ToUTF8::convert",
    "hxErrorMaxLhs",
    "hxErrorMinRhs",
    "hxErrorMaxRhs",
};

struct Record {
  std::array<size_t, kOperations.size()> calls{};
  size_t throwing_calls = 0;
  std::vector<Creation> creations;
  std::optional<size_t> calls_until_failure;
  std::exception_ptr error;
  std::string_view failed_call;
};

std::mutex record_mutex;
Record record;
std::atomic<bool> texts_at_once_threw = false;
std::atomic<bool> texts_at_once = true;
std::atomic<bool> unpaired_replaced = false;

size_t number_of(std::string_view operation) {
  const auto found = std::find(kOperations.begin(), kOperations.end(), operation);
  if (found == kOperations.end()) {
    throw std::invalid_argument("no operation " + std::string(operation));
  }
  return static_cast<size_t>(std::distance(kOperations.begin(), found));
}

void list(const char* operation, hxClassID class_id, std::span<const size_t> dims) {
  const std::lock_guard lock(record_mutex);
  record.creations.push_back({operation, class_id, {dims.begin(), dims.end()}});
}

class RecordingStringArray final : public hxStringArray {
 public:
  explicit RecordingStringArray(std::unique_ptr<hxStringArray> inner) : inner_(std::move(inner)) {}

  std::span<const size_t> dimensions() const override {
    note_throwing("hxStringArray::dimensions");
    return inner_->dimensions();
  }
  size_t size() const override {
    note_throwing("hxStringArray::size");
    return inner_->size();
  }
  std::optional<std::u16string_view> element(size_t i) const override {
    note_throwing("hxStringArray::element");
    return inner_->element(i);
  }
  void set(size_t i, std::u16string_view text) override {
    note_throwing("hxStringArray::set");
    inner_->set(i, text);
  }
  void set_missing(size_t i) override {
    note_throwing("hxStringArray::set_missing");
    inner_->set_missing(i);
  }
  std::optional<size_t> assign_utf8(size_t first, std::span<const std::int32_t> offsets,
                                    const std::uint8_t* bytes) override {
    return assign(first, offsets, bytes);
  }
  std::optional<size_t> assign_utf8(size_t first, std::span<const std::int64_t> offsets,
                                    const std::uint8_t* bytes) override {
    return assign(first, offsets, bytes);
  }

 private:
  template <class Offset>
  std::optional<size_t> assign(size_t first, std::span<const Offset> offsets,
                               const std::uint8_t* bytes) {
    try {
      note_throwing("hxStringArray::assign_utf8");
      return at_once_ ? inner_->assign_utf8(first, offsets, bytes)
                      : hxStringArray::assign_utf8(first, offsets, bytes);
    } catch (...) {
      texts_at_once_threw = true;
      throw;
    }
  }

  std::unique_ptr<hxStringArray> inner_;
  bool at_once_ = texts_at_once;
};

}  // namespace

void Reset() {
  const std::lock_guard lock(record_mutex);
  record = Record();
  texts_at_once_threw = false;
}

size_t Calls(std::string_view operation) {
  const size_t number = number_of(operation);
  const std::lock_guard lock(record_mutex);
  return record.calls[number];
}

size_t TotalThrowingCalls() {
  const std::lock_guard lock(record_mutex);
  return record.throwing_calls;
}

std::vector<Creation> Created() {
  const std::lock_guard lock(record_mutex);
  return record.creations;
}

void FailCall(size_t k, std::exception_ptr error) {
  const std::lock_guard lock(record_mutex);
  record.calls_until_failure = k;
  record.error = std::move(error);
  record.failed_call = {};
}

bool HasFailed() { return !FailedCall().empty(); }

std::string_view FailedCall() {
  const std::lock_guard lock(record_mutex);
  return record.failed_call;
}

bool TextsAtOnceThrew() { return texts_at_once_threw; }

void TakeTextsAtOnce(bool at_once) { texts_at_once = at_once; }

void ReplaceUnpairedSurrogates(bool replace) { unpaired_replaced = replace; }

std::u16string codec_input(std::u16string_view text) {
  std::u16string units(text);
  if (!unpaired_replaced) return units;
  for (size_t i = 0; i < units.size(); ++i) {
    const bool high = (units[i] & 0xFC00) == 0xD800;
    if (high && i + 1 < units.size() && (units[i + 1] & 0xFC00) == 0xDC00) {
      ++i;
    } else if ((units[i] & 0xF800) == 0xD800) {
      units[i] = u'?';
    }
  }
  return units;
}

void note(const char* operation) noexcept {
  const size_t number = number_of(operation);
  const std::lock_guard lock(record_mutex);
  ++record.calls[number];
}

void note_throwing(const char* operation) {
  note(operation);
  const std::lock_guard lock(record_mutex);
  ++record.throwing_calls;
  if (!record.calls_until_failure) return;
  if (*record.calls_until_failure != 0) {
    --*record.calls_until_failure;
    return;
  }
  record.calls_until_failure.reset();
  record.failed_call = operation;
  std::rethrow_exception(record.error);
}

hxArrayPtr created(const char* operation, hxArrayPtr array) {
  list(operation, host::memory::get_class_id(array.get()),
       host::memory::get_dimensions(array.get()));
  return array;
}

std::unique_ptr<hxStringArray> created(const char* operation,
                                       std::unique_ptr<hxStringArray> strings) {
  list(operation, hxClassID::Object, strings->dimensions());
  return std::make_unique<RecordingStringArray>(std::move(strings));
}

}  // namespace numera::testing
