#include "python/bindings/errors.h"

#include <arrow/util/io_util.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <exception>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "numera/core/util/table_error.h"
#include "numera/host/memory.h"
#include "numera/host/message_id_exception.h"
#include "numera/host/text_codec.h"

namespace numera::python {
namespace {

using io::arrow::core::util::TableErrorStatusDetail;

nb::object exception_class(::arrow::StatusCode code) {
  const char* name = nullptr;
  switch (code) {
    case ::arrow::StatusCode::TypeError:
      name = "ArrowTypeError";
      break;
    case ::arrow::StatusCode::Invalid:
      name = "ArrowInvalid";
      break;
    case ::arrow::StatusCode::KeyError:
      name = "ArrowKeyError";
      break;
    case ::arrow::StatusCode::IndexError:
      name = "ArrowIndexError";
      break;
    case ::arrow::StatusCode::OutOfMemory:
      name = "ArrowMemoryError";
      break;
    case ::arrow::StatusCode::CapacityError:
      name = "ArrowCapacityError";
      break;
    case ::arrow::StatusCode::NotImplemented:
      name = "ArrowNotImplementedError";
      break;
    case ::arrow::StatusCode::Cancelled:
      name = "ArrowCancelled";
      break;
    case ::arrow::StatusCode::SerializationError:
      name = "ArrowSerializationError";
      break;
    case ::arrow::StatusCode::IOError:
      return nb::borrow(PyExc_OSError);
    case ::arrow::StatusCode::OK:
    case ::arrow::StatusCode::UnknownError:
    case ::arrow::StatusCode::RError:
    case ::arrow::StatusCode::CodeGenError:
    case ::arrow::StatusCode::ExpressionValidationError:
    case ::arrow::StatusCode::ExecutionError:
    case ::arrow::StatusCode::AlreadyExists:
      name = "ArrowException";
      break;
  }
  return nb::module_::import_("pyarrow.lib").attr(name == nullptr ? "ArrowException" : name);
}

void name_column(const nb::object& error, const ::arrow::Status& status) {
  const auto* detail = dynamic_cast<const TableErrorStatusDetail*>(status.detail().get());
  if (detail == nullptr) return;
  error.attr("column_name") = text_of(detail->column_name());
  error.attr("column_index") = detail->column_index();
  error.attr("error_code") = nb::module_::import_("numera._core")
                                 .attr("TableErrorCode")(static_cast<int>(detail->error_code()));
}

/// Sets a Python error. The text of a codec error says which byte or code unit is wrong.
void set_error(PyObject* type, std::string_view text, const char* identifier = nullptr) {
  const nb::object error = nb::borrow(type)(text_of(text));
  if (identifier != nullptr) error.attr("identifier") = identifier;
  PyErr_SetObject(type, error.ptr());
}

std::string narrow(const std::u16string& message) {
  std::string text;
  for (const char16_t unit : message) text.push_back(static_cast<char>(unit));
  return text;
}

void translate(const std::exception_ptr& thrown, void*) {
  try {
    std::rethrow_exception(thrown);
  } catch (const hxCodecError& error) {
    set_error(PyExc_UnicodeError, error.what());
  } catch (const MessageIdException& error) {
    set_error(PyExc_ValueError, narrow(error.message()), error.identifier().c_str());
  } catch (const host::memory::InterruptException&) {
    PyErr_SetNone(PyExc_KeyboardInterrupt);
  }
}

/// The path of which a message of `numera::files` says the reason of the system and no more.
const std::string* only_path_in(std::string_view message, std::string_view reason,
                                const std::vector<std::string>& paths) {
  if (message == reason && paths.size() == 1) return paths.data();
  const auto found = std::ranges::find_if(paths, [&](const std::string& path) {
    const std::string named = path + ": " + std::string(reason);
    return message == named || message == "cannot write " + named;
  });
  return found == paths.end() ? nullptr : &*found;
}

}  // namespace

void raise_status(const ::arrow::Status& status, const std::string& note) {
  const nb::object type = exception_class(status.code());
  const nb::object error = type(text_of(status.message()));
  name_column(error, status);
  if (!note.empty() && (status.IsTypeError() || status.IsInvalid())) {
    error.attr("add_note")(text_of(note));
  }
  PyErr_SetObject(type.ptr(), error.ptr());
  throw nb::python_error();
}

nb::str text_of(std::string_view text) {
  return nb::steal<nb::str>(
      PyUnicode_DecodeUTF8(text.data(), static_cast<Py_ssize_t>(text.size()), "replace"));
}

nb::str path_text(std::string_view path) {
  return nb::steal<nb::str>(
      PyUnicode_DecodeFSDefaultAndSize(path.data(), static_cast<Py_ssize_t>(path.size())));
}

void raise_file_status(const ::arrow::Status& status, const std::vector<std::string>& paths,
                       const std::string& prefix) {
  const int number = ::arrow::internal::ErrnoFromStatus(status);
  const std::string message = prefix + status.message();
  if (!status.IsIOError() || number == 0) raise_status(status.WithMessage(message));
  if (number == EINTR && PyErr_CheckSignals() != 0) throw nb::python_error();
  const nb::object type = nb::borrow(PyExc_OSError);
  const std::string reason = std::generic_category().message(number);
  const std::string* path = only_path_in(status.message(), reason, paths);
  const nb::object error = path == nullptr ? type(number, text_of(message))
                                           : type(number, text_of(reason), path_text(*path));
  PyErr_SetObject(error.type().ptr(), error.ptr());
  throw nb::python_error();
}

void raise_with_note(PyObject* type, const char* text, const nb::object& note) {
  const nb::object error = nb::borrow(type)(text);
  error.attr("add_note")(note);
  PyErr_SetObject(type, error.ptr());
  throw nb::python_error();
}

void register_host_exceptions() { nb::register_exception_translator(translate); }

}  // namespace numera::python
