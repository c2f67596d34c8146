# What is read and written only if Arrow was built with it: the macros of arrow/util/config.h, each
# with the name that users know it by. The sources ask the same header, or Arrow itself.
set(numera_arrow_parts
    ARROW_ORC ORC
    ARROW_WITH_ZLIB gzip
    ARROW_WITH_ZSTD zstd
    ARROW_WITH_BZ2 bzip2
    ARROW_WITH_LZ4 lz4
    ARROW_WITH_SNAPPY Snappy
    ARROW_WITH_BROTLI Brotli
    ARROW_S3 S3
    ARROW_GCS "Google Cloud Storage"
    ARROW_AZURE "Azure Blob Storage"
    ARROW_HDFS HDFS)

# numera_missing_in_arrow(CONFIG RESULT) sets RESULT to the names of the parts that the file CONFIG
# does not define.
function(numera_missing_in_arrow config result)
  file(READ ${config} text)
  set(missing "")
  set(parts ${numera_arrow_parts})
  while(parts)
    list(POP_FRONT parts macro name)
    if(NOT "\n${text}\n" MATCHES "\n#define ${macro}[ \r\n]")
      list(APPEND missing ${name})
    endif()
  endwhile()
  set(${result} "${missing}" PARENT_SCOPE)
endfunction()

# Says what the Arrow lacks that numera_find_arrow has found.
function(numera_report_missing_in_arrow)
  if(numera_arrow_wheel)
    set(folders ${numera_arrow_wheel}/include)
  else()
    get_target_property(folders Arrow::arrow_shared INTERFACE_INCLUDE_DIRECTORIES)
  endif()
  find_file(numera_arrow_config arrow/util/config.h HINTS ${folders} NO_CACHE)
  if(NOT numera_arrow_config)
    return()
  endif()
  numera_missing_in_arrow(${numera_arrow_config} missing)
  if(missing)
    list(JOIN missing ", no " names)
    message(STATUS "Files: this Arrow has no ${names}")
  endif()
endfunction()
