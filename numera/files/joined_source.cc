#include <arrow/type.h>

#include <algorithm>
#include <limits>
#include <string>
#include <utility>

#include "numera/files/formats.h"
#include "numera/files/joined_schema.h"
#include "numera/files/merged_schema.h"
#include "numera/files/open_file.h"

namespace numera::files {
namespace {

using SchemaPtr = std::shared_ptr<::arrow::Schema>;

/// Reads the files one after another.
class JoinedSource : public Source {
 public:
  JoinedSource(Opening opening, std::vector<Member> members, SchemaPtr schema, bool are_equal)
      : opening_(std::move(opening)),
        members_(std::move(members)),
        schema_(std::move(schema)),
        are_equal_(are_equal && opening_.options.columns.empty()) {}

  SchemaPtr schema() const override { return schema_; }

  std::optional<std::int64_t> rows() const override { return sum_of(&Member::rows); }
  std::optional<std::int64_t> bytes() const override { return sum_of(&Member::bytes); }
  std::int64_t bytes_read() const override {
    return bytes_ + (source_ == nullptr ? 0 : source_->bytes_read());
  }

  /// Opens the files once more.
  StatedCounts stated() const override {
    StatedCounts sum{.rows = 0, .chunks = 0, .nulls = {}};
    sum.nulls.resize(static_cast<size_t>(schema_->num_fields()), 0);
    for (const Member& member : members_) {
      const StatedCounts counts = stated_by(member);
      add(counts.rows, sum.rows);
      add(counts.chunks, sum.chunks);
      for (size_t i = 0; i < sum.nulls.size(); ++i) {
        add(nulls_in(member, counts, static_cast<int>(i)), sum.nulls[i]);
      }
    }
    return sum;
  }

  std::int64_t chunks() const override {
    return chunks_ + (source_ == nullptr ? 0 : source_->chunks());
  }

  ::arrow::Status ReadNext(std::shared_ptr<::arrow::RecordBatch>* batch) override {
    *batch = nullptr;
    while (failure_.ok() && *batch == nullptr && next_ < members_.size()) {
      failure_ = next().Value(batch);
      if (!failure_.ok()) failure_ = in_file(members_[next_].location, failure_);
    }
    return failure_;
  }

  ::arrow::Status Close() override {
    if (failure_.ok()) failure_ = ::arrow::Status::Invalid("it was closed");
    members_.clear();
    return source_ == nullptr ? ::arrow::Status::OK() : source_->Close();
  }

 private:
  using Count = std::optional<std::int64_t>;

  /// A damaged file may state more than the sum can hold.
  static void add(const Count& more, Count& sum) {
    const bool fits =
        more && sum && *more >= 0 && *more <= std::numeric_limits<std::int64_t>::max() - *sum;
    sum = fits ? Count(*sum + *more) : std::nullopt;
  }

  Count sum_of(Count Member::* count) const {
    Count sum = 0;
    for (const Member& member : members_) add(member.*count, sum);
    return sum;
  }

  StatedCounts stated_by(const Member& member) const {
    if (member.source != nullptr) return member.source->stated();
    Opening opening = opening_;
    opening.options.columns.clear();
    const auto file = open_file(member.location, opening);
    return file.ok() ? file->source->stated() : StatedCounts{};
  }

  /// A column that the file lacks is null or has the value of a key.
  Count nulls_in(const Member& member, const StatedCounts& counts, int column) const {
    const std::string& name = schema_->field(column)->name();
    const int place = are_equal_ ? column : member.schema->GetFieldIndex(name);
    if (place >= 0) {
      const auto index = static_cast<size_t>(place);
      return index < counts.nulls.size() ? counts.nulls[index] : std::nullopt;
    }
    const auto& keys = member.location.keys;
    const auto key = std::ranges::find(keys, name, &PartitionKey::name);
    return key == keys.end() || !key->value ? counts.rows : Count(0);
  }

  /// The next batch of a file, or null after its last one.
  BatchResult next() {
    const Member& member = members_[next_];
    if (source_ == nullptr) ARROW_RETURN_NOT_OK(open(member));
    std::shared_ptr<::arrow::RecordBatch> batch;
    ARROW_RETURN_NOT_OK(source_->ReadNext(&batch));
    if (batch == nullptr) {
      chunks_ += source_->chunks();
      bytes_ += source_->bytes_read();
      source_ = nullptr;
      ++next_;
      return nullptr;
    }
    if (are_equal_) return batch;
    return conform(*batch, member.location.keys, schema_, opening_.options.pool);
  }

  ::arrow::Status open(const Member& member) {
    source_ = member.source;
    if (source_ != nullptr) return ::arrow::Status::OK();
    Opening opening = opening_;
    opening.options.columns = are_equal_ ? std::vector<std::string>() : columns_in(*member.schema);
    ARROW_ASSIGN_OR_RAISE(const OpenedFile file, open_file(member.location, opening));
    const bool is_same = file.version == member.version;
    if (!is_same || !is_as_before(*file.source->schema(), *member.schema)) {
      return ::arrow::Status::IOError("it changed while it was read");
    }
    source_ = file.source;
    return ::arrow::Status::OK();
  }

  bool is_as_before(const ::arrow::Schema& now, const ::arrow::Schema& before) const {
    if (are_equal_) return now.Equals(before);
    return std::ranges::all_of(now.fields(), [&](const auto& field) {
      const auto expected = before.GetFieldByName(field->name());
      return expected != nullptr && expected->Equals(field);
    });
  }

  /// The columns to read, or one that tells the number of rows.
  std::vector<std::string> columns_in(const ::arrow::Schema& schema) const {
    std::vector<std::string> columns;
    for (const std::string& name : schema_->field_names()) {
      if (schema.GetFieldIndex(name) >= 0) columns.push_back(name);
    }
    if (columns.empty() && schema.num_fields() > 0) columns.push_back(schema.field(0)->name());
    return columns;
  }

  Opening opening_;
  std::vector<Member> members_;
  SchemaPtr schema_;
  bool are_equal_;  ///< all columns of all files are read as they are
  std::shared_ptr<Source> source_;
  size_t next_ = 0;
  std::int64_t chunks_ = 0;  ///< of the files before
  std::int64_t bytes_ = 0;   ///< of the files before
  ::arrow::Status failure_;
};

::arrow::Result<Member> open_member(const Location& location, Opening opening) {
  opening.options.columns.clear();
  auto opened = open_file(location, opening);
  if (!opened.ok()) return in_file(location, opened.status());
  const auto& source = opened->source;
  return Member{location,        source->schema(), source->rows(),
                source->bytes(), opened->version,  opened->is_pipe ? source : nullptr};
}

}  // namespace

::arrow::Result<std::shared_ptr<Source>> open_files(const std::vector<Location>& locations,
                                                    const Opening& opening) {
  std::vector<Member> members;
  for (const Location& location : locations) {
    ARROW_ASSIGN_OR_RAISE(members.emplace_back(), open_member(location, opening));
  }
  SchemaPtr joined = members.front().schema;
  const bool are_equal = have_equal_schemas(members);
  if (!are_equal) {
    ARROW_ASSIGN_OR_RAISE(const auto keys, fields_of_keys(locations));
    ARROW_ASSIGN_OR_RAISE(joined, join_schemas(members, opening.options.columns, keys));
  }
  ARROW_ASSIGN_OR_RAISE(const auto columns, find_columns(*joined, opening.options.columns));
  ::arrow::FieldVector fields;
  for (const int column : columns) fields.push_back(joined->field(column));
  auto schema = ::arrow::schema(std::move(fields), joined->metadata());
  return std::make_shared<JoinedSource>(opening, std::move(members), std::move(schema), are_equal);
}

}  // namespace numera::files
