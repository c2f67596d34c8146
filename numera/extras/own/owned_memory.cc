#include "numera/extras/own/owned_memory.h"

#include <utility>
#include <vector>

namespace numera::extras::own {
namespace {

/// Slices hold this buffer as their parent, and so keep the host value alive.
class OwnedBuffer final : public ::arrow::Buffer {
 public:
  OwnedBuffer(std::shared_ptr<::arrow::Buffer> borrowed, Owner owner)
      : Buffer(borrowed->data(), borrowed->size()),
        owner_(std::move(owner)),
        borrowed_(std::move(borrowed)) {}

 private:
  Owner owner_;
  // Destroyed before `owner_`. Also keeps Arrow's own memory alive, such as narrowed offsets.
  std::shared_ptr<::arrow::Buffer> borrowed_;
};

}  // namespace

std::shared_ptr<::arrow::Buffer> owned(std::shared_ptr<::arrow::Buffer> borrowed,
                                       const Owner& owner) {
  if (borrowed == nullptr) return nullptr;
  return std::make_shared<OwnedBuffer>(std::move(borrowed), owner);
}

// Built member by member: Arrow's own copy of an array terminates the process if memory runs out.
std::shared_ptr<::arrow::ArrayData> owned(const ::arrow::ArrayData& borrowed, const Owner& owner) {
  std::vector<std::shared_ptr<::arrow::Buffer>> buffers;
  buffers.reserve(borrowed.buffers.size());
  for (const auto& buffer : borrowed.buffers) buffers.push_back(owned(buffer, owner));
  std::vector<std::shared_ptr<::arrow::ArrayData>> children;
  children.reserve(borrowed.child_data.size());
  for (const auto& child : borrowed.child_data) children.push_back(owned(*child, owner));
  auto array = ::arrow::ArrayData::Make(borrowed.type, borrowed.length, std::move(buffers),
                                        std::move(children), borrowed.null_count, borrowed.offset);
  if (borrowed.dictionary != nullptr) array->dictionary = owned(*borrowed.dictionary, owner);
  return array;
}

}  // namespace numera::extras::own
