#include <arrow/array/array_binary.h>
#include <arrow/array/array_primitive.h>
#include <arrow/buffer.h>
#include <arrow/compute/api_vector.h>
#include <arrow/compute/cast.h>
#include <arrow/type_traits.h>
#include <arrow/util/uri.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "numera/files/encoded_file.h"
#include "numera/files/formats.h"
#include "numera/files/last_error.h"
#include "numera/files/locations.h"
#include "numera/files/part_file.h"

namespace numera::files {
namespace {

/// So many files are written at the same time. Each of them holds a row group in memory.
constexpr size_t kOpenFiles = 64;
constexpr std::int64_t kGroupBytes = std::int64_t{2} * 1024 * 1024;

/// The name of a folder without slashes behind it.
std::string without_slashes(std::string path) {
  while (path.size() > 1 && path.ends_with('/')) path.pop_back();
  return path;
}

/// A folder that is made beside its target and renamed when it is complete.
class PartFolder {
 public:
  PartFolder() = default;
  ~PartFolder() {
    std::error_code ignored;
    if (!part_.empty()) std::filesystem::remove_all(part_, ignored);
  }
  PartFolder(const PartFolder&) = delete;
  PartFolder& operator=(const PartFolder&) = delete;

  /// IOError unless the target is new or an empty folder, or a link that leads to one.
  ::arrow::Status open(std::string target) {
    target = without_slashes(behind_links(without_slashes(std::move(target))));
    std::error_code error;
    const auto found = std::filesystem::status(target, error);
    const bool is_new = found.type() == std::filesystem::file_type::not_found;
    if (!is_new && error) return ::arrow::Status::IOError(error.message());
    if (!is_new && (!is_directory(found) || !std::filesystem::is_empty(target, error))) {
      return ::arrow::Status::IOError("it exists and is no empty folder");
    }
    std::string name = hidden_name_beside(target, ".part-XXXXXX");
    if (::mkdtemp(name.data()) == nullptr) return last_error();
    part_ = name;
    target_ = std::move(target);
    return ::chmod(name.c_str(), allowed_mode(0777)) == 0 ? ::arrow::Status::OK() : last_error();
  }

  const std::string& path() const { return part_; }

  ::arrow::Status put_in_place() {
    if (std::rename(part_.c_str(), target_.c_str()) != 0) return last_error();
    part_.clear();
    return ::arrow::Status::OK();
  }

 private:
  std::string target_;
  std::string part_;  ///< the unfinished folder; empty if there is none
};

bool can_be_key(const ::arrow::DataType& type) {
  if (type.id() == ::arrow::Type::DICTIONARY) {
    return can_be_key(*static_cast<const ::arrow::DictionaryType&>(type).value_type());
  }
  return ::arrow::is_integer(type.id()) || ::arrow::is_string(type.id()) ||
         type.id() == ::arrow::Type::BOOL || type.id() == ::arrow::Type::DATE32;
}

/// The values of a key as texts.
::arrow::Result<std::shared_ptr<::arrow::StringArray>> texts_of(
    const std::shared_ptr<::arrow::Array>& column) {
  auto values = column;
  if (column->type_id() == ::arrow::Type::DICTIONARY) {
    const auto& type = static_cast<const ::arrow::DictionaryType&>(*column->type());
    ARROW_ASSIGN_OR_RAISE(values, ::arrow::compute::Cast(*column, type.value_type()));
  }
  ARROW_ASSIGN_OR_RAISE(values, ::arrow::compute::Cast(*values, ::arrow::utf8()));
  return std::static_pointer_cast<::arrow::StringArray>(values);
}

/// The folder of a value, such as "city=New%20York".
::arrow::Result<std::string> folder_of(const std::string& name, const ::arrow::StringArray& values,
                                       std::int64_t row) {
  const std::string start = ::arrow::util::UriEscape(name) + "=";
  if (values.IsNull(row)) return start + kHiveNull;
  if (values.GetView(row) == kHiveNull) {
    return at_column(name, ::arrow::Status::Invalid("the text ", kHiveNull, " stands for null"));
  }
  return start + ::arrow::util::UriEscape(values.GetView(row));
}

/// Rows with the same keys.
struct Group {
  std::string folder;
  std::vector<std::int64_t> rows = {};
};

/// The file of a partition that is written now.
struct OpenFile {
  Encoder encoder;
  std::int64_t last_use = 0;
};

class Partitions {
 public:
  Partitions(const Encoding& encoding, const WriteOptions& options)
      : encoding_(encoding), options_(options) {
    encoding_.group_bytes = kGroupBytes;
    options_.inputs.clear();  // no file is replaced
  }

  ::arrow::Status open(const std::string& path) { return folder_.open(path); }

  ::arrow::Status write(const Batch& batch) {
    if (others_.empty()) ARROW_RETURN_NOT_OK(divide_columns(*batch->schema()));
    ARROW_ASSIGN_OR_RAISE(const auto rest, batch->SelectColumns(others_));
    ARROW_ASSIGN_OR_RAISE(auto groups, groups_of(*batch));
    for (Group& group : groups) {
      const std::int64_t count = std::ssize(group.rows);
      const auto rows = std::make_shared<::arrow::Int64Array>(
          count, ::arrow::Buffer::FromVector(std::move(group.rows)));
      ARROW_ASSIGN_OR_RAISE(const auto part, ::arrow::compute::Take(rest, rows));
      ARROW_RETURN_NOT_OK(write_to(group.folder, part.record_batch()));
    }
    return ::arrow::Status::OK();
  }

  ::arrow::Status close() {
    if (files_in_.empty()) return ::arrow::Status::Invalid("without rows, it has no partitions");
    for (auto& [folder, file] : open_) ARROW_RETURN_NOT_OK(file.encoder.close());
    open_.clear();
    return folder_.put_in_place();
  }

 private:
  ::arrow::Status divide_columns(const ::arrow::Schema& schema) {
    ARROW_ASSIGN_OR_RAISE(keys_, find_columns(schema, options_.partition_by));
    for (const int key : keys_) {
      const auto& field = schema.field(key);
      if (can_be_key(*field->type())) continue;
      return at_column(field->name(), ::arrow::Status::Invalid("values of type ", *field->type(),
                                                               " cannot name partitions"));
    }
    for (int i = 0; i < schema.num_fields(); ++i) {
      if (std::ranges::find(keys_, i) == keys_.end()) others_.push_back(i);
    }
    if (others_.empty()) return ::arrow::Status::Invalid("no column is left beside the keys");
    return ::arrow::Status::OK();
  }

  /// In the order of their first rows.
  ::arrow::Result<std::vector<Group>> groups_of(const ::arrow::RecordBatch& batch) const {
    std::vector<std::shared_ptr<::arrow::StringArray>> keys;
    for (const int key : keys_) {
      ARROW_ASSIGN_OR_RAISE(keys.emplace_back(), texts_of(batch.column(key)));
    }
    std::vector<Group> groups;
    std::map<std::string, size_t> places;
    for (std::int64_t row = 0; row < batch.num_rows(); ++row) {
      std::string folder;
      for (size_t i = 0; i < keys.size(); ++i) {
        ARROW_ASSIGN_OR_RAISE(const std::string part,
                              folder_of(batch.column_name(keys_[i]), *keys[i], row));
        folder += "/" + part;
      }
      const auto [place, is_new] = places.try_emplace(folder, groups.size());
      if (is_new) groups.push_back({folder});
      groups[place->second].rows.push_back(row);
    }
    return groups;
  }

  ::arrow::Status write_to(const std::string& folder, const Batch& rows) {
    if (!open_.contains(folder)) ARROW_RETURN_NOT_OK(open_file_in(folder));
    OpenFile& file = open_.at(folder);
    file.last_use = ++uses_;
    return file.encoder.write(rows);
  }

  /// Ends the file that was not used for longest if too many are open.
  ::arrow::Status open_file_in(const std::string& folder) {
    if (open_.size() >= kOpenFiles) {
      const auto oldest = std::ranges::min_element(
          open_, {}, [](const auto& file) { return file.second.last_use; });
      ARROW_RETURN_NOT_OK(oldest->second.encoder.close());
      open_.erase(oldest);
    }
    const std::string path = folder_.path() + folder;
    std::error_code error;
    std::filesystem::create_directories(path, error);
    if (error) return ::arrow::Status::IOError(error.message());
    const std::string name = "/part-" + std::to_string(files_in_[folder]++) + ending_of(encoding_);
    return open_encoded_file(path + name, encoding_, options_).Value(&open_[folder].encoder);
  }

  Encoding encoding_;
  WriteOptions options_;
  PartFolder folder_;
  std::vector<int> keys_;
  std::vector<int> others_;                       ///< empty before the first batch
  std::map<std::string, OpenFile> open_;          ///< by folder
  std::map<std::string, std::int64_t> files_in_;  ///< by folder
  std::int64_t uses_ = 0;
};

}  // namespace

::arrow::Result<Encoder> open_partitions(const std::string& path, const Encoding& encoding,
                                         const WriteOptions& options) {
  if (path == kStandardStream) {
    return ::arrow::Status::Invalid("partitions need a folder");
  }
  auto partitions = std::make_shared<Partitions>(encoding, options);
  ARROW_RETURN_NOT_OK(partitions->open(path));
  return checked(encoder_of(std::move(partitions)));
}

}  // namespace numera::files
