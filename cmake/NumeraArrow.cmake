# Finds Apache Arrow and Parquet: installed packages first, else the libraries and headers inside
# the pyarrow wheel of a Python interpreter. Used by the project's own build and, installed, by
# everyone who finds its package.
#
# numera_find_arrow() defines the imported targets numera_arrow_dependency and
# numera_parquet_dependency and sets, in the caller's scope:
#   numera_arrow_version      the version found, such as 26.0.1
#   numera_arrow_library_dir  the folder of the wheel's libraries, empty for an installed Arrow
#   numera_arrow_include_dir  the folder of the wheel's headers, empty for an installed Arrow

set(NUMERA_ARROW_PYTHON "" CACHE FILEPATH
    "Python interpreter whose pyarrow wheel is used where no Arrow is installed")

macro(numera_find_arrow)
  find_package(Arrow CONFIG QUIET)
  find_package(Parquet CONFIG QUIET)
  if(Arrow_FOUND AND Parquet_FOUND)
    numera_arrow_from_package()
    set(numera_arrow_version ${Arrow_VERSION})
    set(numera_arrow_library_dir "")
    set(numera_arrow_include_dir "")
  else()
    numera_arrow_from_wheel()
  endif()
endmacro()

function(numera_arrow_from_package)
  if(NOT TARGET numera_arrow_dependency)
    add_library(numera_arrow_dependency INTERFACE IMPORTED)
    target_link_libraries(numera_arrow_dependency INTERFACE Arrow::arrow_shared)
    add_library(numera_parquet_dependency INTERFACE IMPORTED)
    target_link_libraries(numera_parquet_dependency INTERFACE Parquet::parquet_shared)
  endif()
endfunction()

function(numera_arrow_from_wheel)
  find_program(numera_python NAMES python3 python
               HINTS ${PROJECT_SOURCE_DIR}/.venv/bin NO_CACHE)
  if(NUMERA_ARROW_PYTHON)
    set(numera_python ${NUMERA_ARROW_PYTHON})
  endif()
  execute_process(
    COMMAND ${numera_python} -c
      "import pyarrow as p; print(p.__version__, p.get_include(), p.get_library_dirs()[0], sep=';')"
    OUTPUT_VARIABLE found OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET RESULT_VARIABLE result)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "Found neither an installed Apache Arrow nor a pyarrow wheel; run "
                        "./dev setup, or set NUMERA_ARROW_PYTHON to a Python that has pyarrow.")
  endif()
  list(GET found 0 version)
  list(GET found 1 include_dir)
  list(GET found 2 library_dir)
  string(REGEX MATCH "^[0-9]+" major ${version})
  foreach(name arrow parquet)
    if(NOT TARGET numera_${name}_dependency)
      add_library(numera_${name}_dependency SHARED IMPORTED)
      set_target_properties(numera_${name}_dependency PROPERTIES
        IMPORTED_LOCATION ${library_dir}/lib${name}.so.${major}00
        INTERFACE_INCLUDE_DIRECTORIES ${include_dir}
        INTERFACE_COMPILE_FEATURES cxx_std_20)
    endif()
  endforeach()
  target_link_libraries(numera_parquet_dependency INTERFACE numera_arrow_dependency)
  set(numera_arrow_version ${version} PARENT_SCOPE)
  set(numera_arrow_library_dir ${library_dir} PARENT_SCOPE)
  set(numera_arrow_include_dir ${include_dir} PARENT_SCOPE)
endfunction()
