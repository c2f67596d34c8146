#pragma once

/// \file
/// A list whose items contain their own links: insertion and removal do not allocate.

namespace numera::host::memory {

/// `T` has the members `previous` and `next`, which only the list may use.
template <class T>
struct IntrusiveList {
  T* first = nullptr;
  T* last = nullptr;

  void push_front(T* item) noexcept {
    item->previous = nullptr;
    item->next = first;
    (first != nullptr ? first->previous : last) = item;
    first = item;
  }

  void remove(T* item) noexcept {
    (item->previous != nullptr ? item->previous->next : first) = item->next;
    (item->next != nullptr ? item->next->previous : last) = item->previous;
  }
};

}  // namespace numera::host::memory
