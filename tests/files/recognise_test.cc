// The first bytes of a file tell its format. What is known and not read is named.

#include <arrow/io/file.h>
#include <arrow/util/config.h>
#include <arrow/util/secure_string.h>
#include <gtest/gtest.h>
#include <parquet/arrow/writer.h>
#include <parquet/encryption/encryption.h>

#include <string>
#include <utility>

#include "tests/files/tables.h"

namespace numera::testing {
namespace {

constexpr const char* kUnknown =
    "Invalid: it is no table in a known format (Parquet, Arrow IPC, ORC, CSV, JSON lines)";
constexpr const char* kNoTable =
    "Invalid: it is JSON, but no table: of JSON, only files with one object per line are read";

#ifdef PARQUET_REQUIRE_ENCRYPTION
::arrow::util::SecureString key() {
  return ::arrow::util::SecureString(std::string("0123456789012345"));
}

void write_encrypted(const std::string& path, const ::arrow::Table& table,
                     parquet::FileEncryptionProperties::Builder& encryption) {
  const auto file = ::arrow::io::FileOutputStream::Open(path).ValueOrDie();
  const auto properties =
      parquet::WriterProperties::Builder().encryption(encryption.build())->build();
  ASSERT_TRUE(
      parquet::arrow::WriteTable(table, ::arrow::default_memory_pool(), file, 1024, properties)
          .ok());
  ASSERT_TRUE(file->Close().ok());
}
#endif

class Recognition : public ::testing::Test {
 protected:
  TemporaryFolder folder_;
  std::string file_ = folder_.path("a_file");
  std::shared_ptr<::arrow::Table> table_ = table_of(
      {{"n", ::arrow::int16(), "[1, null, 3]"}, {"t", ::arrow::utf8(), R"(["a", "b", null])"}});
};

TEST_F(Recognition, BinaryFormatsReturnTheirTable) {
  write_parquet(file_, *table_);
  expect_table(file_, *table_);
  for (const auto write : {write_ipc, write_ipc_stream, write_old_ipc_stream}) {
    write(file_, *table_);
    expect_table(file_, *table_);
  }
}

TEST_F(Recognition, AnOldStreamMayHaveASchemaOfAnySize) {
  write_old_ipc_stream(file_,
                       *table_of({{std::string(100000, 'x'), ::arrow::int16(), "[1, null, 3]"}}));
  EXPECT_EQ(read_table(file_).ValueOrDie()->num_rows(), 3);
}

#ifdef PARQUET_REQUIRE_ENCRYPTION
TEST_F(Recognition, AnEncryptedFooterIsNamed) {
  parquet::FileEncryptionProperties::Builder encryption(key());
  write_encrypted(file_, *table_, encryption);
  expect_refused(file_, "Invalid: it is Parquet with an encrypted footer, which is not read");
}

TEST_F(Recognition, AnEncryptedColumnIsNamedAndOthersAreRead) {
  parquet::ColumnEncryptionProperties::Builder column;
  parquet::FileEncryptionProperties::Builder encryption(key());
  encryption.set_plaintext_footer()->encrypted_columns({{"n", column.key(key())->build()}});
  write_encrypted(file_, *table_, encryption);
  expect_refused(file_, "Invalid: column 'n' is encrypted");
  expect_table(file_, *table_of({{"t", ::arrow::utf8(), R"(["a", "b", null])"}}),
               {.columns = {"t"}});
}
#endif

TEST_F(Recognition, FormatsThatAreNotReadAreNamed) {
  const std::pair<std::string, const char*> cases[] = {
      {std::string("FEA1\0\0\0\0FEA1", 12), "Feather of version 1"},
      {std::string("Obj\x01\x04\x16", 6), "Avro"},
      {std::string("SQLite format 3\0\x10", 17), "an SQLite database"},
      {std::string("PK\x03\x04\x14\0", 6), "a ZIP archive, as Excel workbooks are"},
      {std::string("\x89HDF\r\n\x1A\n\0", 9), "HDF5"},
      {"%PDF-1.7\n%\xE2\xE3\n", "PDF"},
      {std::string("\xFD\x37zXZ\0", 6), "xz"},
  };
  for (const auto& [bytes, name] : cases) {
    write_text(file_, bytes);
    expect_refused(file_, std::string("Invalid: it is ") + name + ", which is not read");
  }
}

TEST_F(Recognition, TextMayStartWithALetterOrTwoOfAFormat) {
  for (const char* name : {"ORCHID", "FEA1", "PARENT", "SQLite format 3", "Obj", "BZh9"}) {
    write_text(file_, std::string(name) + "\n1\n");
    expect_table(file_, *table_of({{name, ::arrow::int64(), "[1]"}}));
  }
}

TEST_F(Recognition, AnObjectInTheFirstLineIsJsonLines) {
  const auto one = table_of({{"n", ::arrow::int64(), "[1]"}});
  for (const char* text :
       {"{\"n\":1}", "{\"n\":1}\n", "\n\n {\"n\":1} \n", "\xEF\xBB\xBF{\"n\":1}"}) {
    write_text(file_, text);
    expect_table(file_, *one);
  }
  const std::string value(100000, 'x');  // the first line is longer than what is looked at
  write_text(file_, "{\"t\":\"" + value + "\"}\n");
  expect_table(file_, *table_of({{"t", ::arrow::utf8(), "[\"" + value + "\"]"}}));
}

TEST_F(Recognition, OtherJsonIsNoTable) {
  for (const char* text : {"{\n\"n\":1\n}\n", "{\"n\":1},\n{\"n\":2}\n", "{\"n\":", "[{\"n\":1}]\n",
                           "\n\t[1,2]", "{"}) {
    SCOPED_TRACE(text);
    write_text(file_, text);
    expect_refused(file_, kNoTable);
  }
}

TEST_F(Recognition, TextThatIsNotUtf8NeedsTheNameOfItsEncoding) {
  for (const char* bytes : {"gr\xF6\xDF\x65\n1\n", "{\"\xF6\":1}\n", "[\xF6]\n"}) {
    write_text(file_, bytes);
    expect_refused(file_, "Invalid: it is text that is not UTF-8, and its encoding was not named");
  }
}

TEST_F(Recognition, EverythingElseIsUnknown) {
  const std::string cases[] = {std::string("a,b\n1,\0\n", 8), "gr\xF6\xDF\x65\n\x01\n"};
  for (const std::string& bytes : cases) {
    write_text(file_, bytes);
    expect_refused(file_, kUnknown);
  }
  write_text(file_, "");
  expect_refused(file_, "Invalid: it is empty");
}

}  // namespace
}  // namespace numera::testing
