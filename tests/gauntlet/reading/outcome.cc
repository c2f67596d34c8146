#include "tests/gauntlet/reading/outcome.h"

#include <algorithm>
#include <sstream>

namespace numera::gauntlet::reading {
namespace {

using ::arrow::ArrayData;
using ::arrow::DataType;

ArrayTree describe(const ArrayData& data, const DataType& declared) {
  ArrayTree tree{.type = data.type,
                 .length = data.length,
                 .offset = data.offset,
                 .null_count = data.null_count.load()};
  tree.has_declared_type = data.type.get() == &declared || data.type->Equals(declared);
  for (const auto& buffer : data.buffers) {
    tree.buffers.push_back(buffer == nullptr ? std::nullopt
                                             : std::optional(reading::describe(*buffer)));
  }
  for (size_t i = 0; i < data.child_data.size(); ++i) {
    const auto& field = data.type->field(static_cast<int>(i));
    tree.children.push_back(describe(*data.child_data[i], *field->type()));
  }
  if (data.dictionary != nullptr) {
    const auto& type = static_cast<const ::arrow::DictionaryType&>(*data.type);
    tree.dictionary.push_back(describe(*data.dictionary, *type.value_type()));
  }
  return tree;
}

bool same_trees(const std::vector<ArrayTree>& a, const std::vector<ArrayTree>& b);

/// Compares everything but types. Those are compared at the root, which declares all types below
/// it.
bool same_but_type(const ArrayTree& a, const ArrayTree& b) {
  return a.length == b.length && a.offset == b.offset && a.null_count == b.null_count &&
         a.buffers == b.buffers && a.has_declared_type == b.has_declared_type &&
         (a.object == b.object || (a.object && b.object && *a.object == *b.object)) &&
         same_trees(a.children, b.children) && same_trees(a.dictionary, b.dictionary);
}

bool same_trees(const std::vector<ArrayTree>& a, const std::vector<ArrayTree>& b) {
  return std::ranges::equal(a, b, same_but_type);
}

bool same_tables(const TableTree& a, const TableTree& b) {
  return a.names == b.names && a.rows == b.rows && a.is_plain == b.is_plain &&
         std::ranges::equal(a.columns, b.columns,
                            [](const auto& x, const auto& y) { return same(x, y); });
}

void print(std::ostream& out, const Region& region) {
  out << region.size << " bytes at " << region.data;
  if (!region.borrowed) out << ", not borrowed";
}

void print(std::ostream& out, const ArrayTree& tree, const std::string& indent) {
  out << indent << tree.type->ToString() << ", length " << tree.length << ", offset " << tree.offset
      << ", null count " << tree.null_count;
  if (tree.object != nullptr) out << ", object " << tree.object->name();
  if (!tree.has_declared_type) out << ", not the type declared for it";
  for (const auto& buffer : tree.buffers) {
    out << "\n" << indent << "  buffer: ";
    if (buffer) {
      print(out, *buffer);
    } else {
      out << "none";
    }
  }
  for (const ArrayTree& child : tree.children) print(out << "\n", child, indent + "  ");
  for (const ArrayTree& dictionary : tree.dictionary) {
    print(out << "\n" << indent << "  dictionary:\n", dictionary, indent + "    ");
  }
}

struct Printer {
  std::ostringstream out;

  void operator()(const ArrayTree& tree) { print(out, tree, "  "); }
  void operator()(const Region& region) { print(out << "  buffer: ", region); }
  void operator()(const TableTree& table) {
    out << "  table of " << table.rows << " rows" << (table.is_plain ? "" : ", not plain");
    for (size_t i = 0; i < table.columns.size(); ++i) {
      print(out << "\n  '" << table.names[i] << "':\n", table.columns[i], "    ");
    }
  }
  void operator()(const ::arrow::Status& status) { out << "  " << status.ToString(); }
  void operator()(const Thrown& thrown) { out << "  " << thrown.type << ": " << thrown.what; }
};

}  // namespace

ArrayTree describe(const ::arrow::Array& array) {
  ArrayTree tree = describe(*array.data(), *array.type());
  tree.object = &typeid(array);
  return tree;
}

Region describe(const ::arrow::Buffer& buffer) {
  const bool is_borrowed = !buffer.is_mutable() && buffer.parent() == nullptr &&
                           buffer.capacity() == buffer.size() && buffer.is_cpu();
  return {buffer.data(), buffer.size(), is_borrowed};
}

TableTree describe(const ::arrow::Table& table) {
  TableTree tree{.rows = table.num_rows(), .is_plain = table.schema()->metadata() == nullptr};
  for (int i = 0; i < table.num_columns(); ++i) {
    const ::arrow::Field& field = *table.schema()->field(i);
    const ::arrow::ChunkedArray& column = *table.column(i);
    tree.names.push_back(field.name());
    tree.is_plain &= field.nullable() && field.metadata() == nullptr && column.num_chunks() == 1;
    tree.columns.push_back(describe(*column.chunk(0)));
    tree.columns.back().has_declared_type &= field.type()->Equals(*column.chunk(0)->type());
  }
  return tree;
}

bool same(const ArrayTree& a, const ArrayTree& b) {
  return a.type->Equals(*b.type, /*check_metadata=*/true) && same_but_type(a, b);
}

bool same(const Outcome& a, const Outcome& b) {
  if (a.index() != b.index()) return false;
  if (const auto* array = std::get_if<ArrayTree>(&a)) return same(*array, std::get<ArrayTree>(b));
  if (const auto* table = std::get_if<TableTree>(&a)) {
    return same_tables(*table, std::get<TableTree>(b));
  }
  if (const auto* region = std::get_if<Region>(&a)) return *region == std::get<Region>(b);
  if (const auto* thrown = std::get_if<Thrown>(&a)) return *thrown == std::get<Thrown>(b);
  const auto& status = std::get<::arrow::Status>(a);
  const auto& other = std::get<::arrow::Status>(b);
  return status.code() == other.code() && status.message() == other.message() &&
         status.detail() == other.detail();
}

std::string to_string(const Outcome& outcome) {
  Printer printer;
  std::visit(printer, outcome);
  return printer.out.str();
}

}  // namespace numera::gauntlet::reading
