#include "numera/extras/own/owned_memory.h"

#include <utility>

namespace numera::extras::own {
namespace {

/// Slices of it hold it as their parent, and with it the host value.
class OwnedBuffer final : public ::arrow::Buffer {
 public:
  OwnedBuffer(std::shared_ptr<::arrow::Buffer> borrowed, Owner owner)
      : Buffer(borrowed->data(), borrowed->size()),
        owner_(std::move(owner)),
        borrowed_(std::move(borrowed)) {}

 private:
  Owner owner_;
  // Goes before its owner does. Memory of Arrow's own, such as narrowed offsets, lives through it.
  std::shared_ptr<::arrow::Buffer> borrowed_;
};

}  // namespace

std::shared_ptr<::arrow::Buffer> owned(std::shared_ptr<::arrow::Buffer> borrowed,
                                       const Owner& owner) {
  if (borrowed == nullptr) return nullptr;
  return std::make_shared<OwnedBuffer>(std::move(borrowed), owner);
}

std::shared_ptr<::arrow::ArrayData> owned(const ::arrow::ArrayData& borrowed, const Owner& owner) {
  auto array = borrowed.Copy();
  for (auto& buffer : array->buffers) buffer = owned(std::move(buffer), owner);
  for (auto& child : array->child_data) child = owned(*child, owner);
  if (array->dictionary != nullptr) array->dictionary = owned(*array->dictionary, owner);
  return array;
}

}  // namespace numera::extras::own
