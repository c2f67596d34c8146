#include "tools/distinct_values.h"

namespace numera::tools {

void DistinctValues::add(std::string_view value) {
  if (is_full_ || held_.find(value) != held_.end()) return;
  if (count_ == most_values_ || value.size() > most_bytes_ - bytes_) {
    is_full_ = true;
    held_ = {};  // gives the memory back
    return;
  }
  held_.emplace(value);
  bytes_ += value.size();
  ++count_;
}

}  // namespace numera::tools
