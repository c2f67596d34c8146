#include "numera/host/bound_host.h"

#include <cxxabi.h>
#include <dlfcn.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

#include "numera/host/array.h"
#include "numera/host/message_id_exception.h"
#include "numera/host/string_array.h"
#include "numera/host/text_codec.h"

namespace numera::host {
namespace {

/// The address of a function, or of a member function that is not virtual: the first word of both.
template <class Function>
const void* address_of(Function function) {
  const void* address = nullptr;
  static_assert(sizeof function >= sizeof address);
  std::memcpy(static_cast<void*>(&address), static_cast<const void*>(&function), sizeof address);
  return address;
}

/// All host functions that the library uses, but for constructors and destructors, which have no
/// address.
std::vector<const void*> functions_in_use() {
  return {
      address_of(hxDestroyArray),
      address_of(hxCreateNumericArray),
      address_of(hxCreateUninitNumericArray),
      address_of(hxCreateCellArray),
      address_of(hxCreateStructArray),
      address_of<hxArrayPtr(const char16_t*, size_t)>(hxCreateCharArray),
      address_of<hxArrayPtr(const char*, size_t)>(hxCreateCharArray),
      address_of(hxSharedCopy),
      address_of(hxGetClassID),
      address_of(hxGetClassName),
      address_of(hxIsEmpty),
      address_of(hxIsNumeric),
      address_of(hxIsComplex),
      address_of(hxIsSparse),
      address_of(hxGetElementSize),
      address_of(hxGetNumberOfElements),
      address_of(hxGetDimensions),
      address_of<const void*(const hxArray*)>(hxGetData),
      address_of<void*(hxArray*)>(hxGetData),
      address_of(hxGetString),
      address_of(hxGetField),
      address_of(hxGetFieldChecked),
      address_of(hxGetCell),
      address_of(hxGetCellChecked),
      address_of(hxSetCell),
      address_of(hxSetField),
      address_of(hxThrowIfInterruptPending),
      address_of(hxMakeStringArray),
      address_of(hxCreateStringArrayFrom),
      address_of(hxIsStringArray),
      address_of(hxGetStringArray),
      address_of(hxErrorMaxLhs),
      address_of(hxErrorMinRhs),
      address_of(hxErrorMaxRhs),
      address_of(&hxUTF8ToUTF16::convert),
      address_of(&hxUTF16ToUTF8::convert),
  };
}

/// All null where the address lies in no loaded file.
Dl_info place_of(const void* address) {
  Dl_info place{};
  if (dladdr(address, &place) == 0) place = {};
  return place;
}

std::string or_unknown(const char* text) { return text == nullptr ? "an unknown place" : text; }

/// The declaration of a function for people.
std::string readable(const char* symbol) {
  if (symbol == nullptr) return "a host function";
  int status = 0;
  const std::unique_ptr<char, decltype(&std::free)> text(
      abi::__cxa_demangle(symbol, nullptr, nullptr, &status), &std::free);
  return text == nullptr ? symbol : text.get();
}

}  // namespace

std::string other_host(const void* here) {
  const Dl_info host = place_of(here);
  for (const void* function : functions_in_use()) {
    const Dl_info found = place_of(function);
    if (found.dli_fbase == host.dli_fbase) continue;
    return "The library takes " + readable(found.dli_sname) + " from " +
           or_unknown(found.dli_fname) + ", not from " + or_unknown(host.dli_fname) +
           ". A process holds one host, and a host is whole.";
  }
  return {};
}

}  // namespace numera::host
