#include "tools/file_options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "tools/usage.h"

namespace numera::tools {
namespace {

/// The delimiter that a text means, or nothing.
std::optional<char> to_delimiter(const std::string& text) {
  if (text == "tab" || text == "\\t") return '\t';
  return text.size() == 1 ? std::optional(text.front()) : std::nullopt;
}

std::string check_name(const std::string& kind, const std::string& name,
                       const std::vector<std::string>& names) {
  return std::ranges::count(names, name) > 0 ? "" : no_such_name(kind, name, names);
}

}  // namespace

void add_csv(CLI::App* command, files::ReadOptions& options) {
  command
      ->add_option_function<std::string>(
          "--csv-delimiter",
          [&options](const std::string& text) { options.csv_delimiter = to_delimiter(text); },
          "What separates the fields of CSV (default: what splits the first line into most "
          "columns)")
      ->type_name("CHARACTER")
      ->check([](const std::string& text) -> std::string {
        return to_delimiter(text) ? "" : "found '" + text + "', expected one character or tab";
      });
  command->add_flag_callback(
      "--csv-no-heading", [&options] { options.csv_heading = false; },
      "The first line of CSV is a row; columns are called f0, f1 and so on");
  command
      ->add_option("--csv-null", options.csv_nulls,
                   "A further text that is null in CSV; may be repeated")
      ->type_name("TEXT")
      ->allow_extra_args(false);
  command
      ->add_option("--csv-encoding", options.csv_encoding,
                   "The encoding of CSV, such as latin1 (default: UTF-8)")
      ->type_name("NAME");
  command->add_flag("--csv-types-of-all-rows", options.csv_types_of_all_rows,
                    "Let all rows of CSV decide the types, not only the first MiB; reads it twice");
}

void add_encoding(CLI::App* convert, ConvertOptions& options) {
  CLI::Option* to = convert->add_option_function<std::string>(
      "--to",
      [&options](const std::string& name) {
        static_cast<void>(files::select_format(name, options.encoding));  // it was checked
      },
      "Write in this format, to standard output unless --output names a file: " +
          CLI::detail::join(files::format_names(), ", "));
  to->type_name("FORMAT")->check(
      [](const std::string& name) { return check_name("format", name, files::format_names()); });
  CLI::Option* compression =
      convert->add_option("--compression", options.encoding.compression,
                          "Compress the output, with a level if one is given: " +
                              CLI::detail::join(files::compression_names(), ", ") + "; zstd:9");
  compression->type_name("NAME[:LEVEL]")->check([](const std::string& text) {
    return check_name("compression", text.substr(0, text.find(':')), files::compression_names());
  });
  convert
      ->add_option("--partition-by", options.encoding.partition_by,
                   "Write a folder that is divided by the values of these columns, separated by "
                   "commas")
      ->type_name("NAMES")
      ->delimiter(',')
      ->allow_extra_args(false);
  convert->parse_complete_callback([to, compression, &options] {
    if (!to->empty() && options.output.empty()) options.output = "-";
    if (!compression->empty() && options.output.empty()) {
      throw CLI::ValidationError("--compression", "there is no output; add --to or --output");
    }
    if (!options.encoding.partition_by.empty() && options.output.empty()) {
      throw CLI::ValidationError("--partition-by", "there is no output; add --output");
    }
  });
}

}  // namespace numera::tools
