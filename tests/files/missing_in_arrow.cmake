# Fails unless PARTS finds what a header of Arrow does not define.
include(${PARTS})

function(expect_missing text expected)
  file(WRITE config.h "${text}")
  numera_missing_in_arrow(config.h missing)
  if(NOT missing STREQUAL expected)
    message(FATAL_ERROR "found '${missing}' missing, expected '${expected}', in:\n${text}")
  endif()
endfunction()

set(all "#define ARROW_ORC\n#define ARROW_WITH_ZLIB\n#define ARROW_WITH_ZSTD\n\
#define ARROW_WITH_BZ2\n#define ARROW_WITH_LZ4\n#define ARROW_WITH_SNAPPY\n\
#define ARROW_WITH_BROTLI\n#define ARROW_S3\n#define ARROW_GCS\n#define ARROW_AZURE\n\
#define ARROW_HDFS\n")
expect_missing("${all}" "")

string(REPLACE "#define ARROW_ORC\n" "/* #undef ARROW_ORC */\n" without_two "${all}")
string(REPLACE "#define ARROW_S3\n" "#define ARROW_S3_OTHER\n" without_two "${without_two}")
expect_missing("${without_two}" "ORC;S3")

string(REPLACE "\n" "\r\n" other_line_ends "${all}")
expect_missing("${other_line_ends}" "")

expect_missing("#define ARROW_ORC\n"
  "gzip;zstd;bzip2;lz4;Snappy;Brotli;S3;Google Cloud Storage;Azure Blob Storage;HDFS")
