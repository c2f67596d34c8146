# Finds Apache Arrow: an installed package, or the libraries and headers inside a pyarrow wheel.
# Used by the build of this project and, once installed, by projects that find its package.
#
# numera_find_arrow(LIBRARY...), each of arrow, parquet, defines the imported targets
# numera_LIBRARY_dependency and sets
#   numera_arrow_version   the version found, such as 26.0.1; empty if none was found
#   numera_arrow_wheel     the folder of the wheel; empty for an installed package
#
# Order of search:
# 1. an Arrow that the calling project has already found, so that no process loads two
# 2. the wheel that numera was built with (numera_arrow_built_with, set by the package file)
# 3. an installed package
# 4. the wheel of a Python

set(NUMERA_ARROW_PYTHON "" CACHE FILEPATH
    "Python interpreter whose pyarrow wheel is used where no Arrow is installed")

function(numera_find_arrow)
  set(wheel "")
  set(version "")
  if(EXISTS "${numera_arrow_built_with}/include/arrow/util/config.h")
    set(wheel ${numera_arrow_built_with})
  endif()
  if(TARGET Arrow::arrow_shared OR NOT wheel)
    numera_arrow_from_package(${ARGN})
  endif()
  if(version)
    set(wheel "")
  else()
    if(NOT wheel)
      numera_python_wheel()
    endif()
    if(wheel)
      numera_arrow_from_wheel(${ARGN})
    endif()
  endif()
  set(numera_arrow_version "${version}" PARENT_SCOPE)
  set(numera_arrow_wheel "${wheel}" PARENT_SCOPE)
endfunction()

# Sets version if all of the libraries are installed.
function(numera_arrow_from_package)
  set(installed "")
  foreach(library IN LISTS ARGN)
    string(SUBSTRING ${library} 0 1 first)
    string(SUBSTRING ${library} 1 -1 rest)
    string(TOUPPER ${first} first)
    find_package(${first}${rest} CONFIG QUIET)
    list(APPEND installed ${first}${rest}::${library}_shared)
    if(NOT TARGET ${first}${rest}::${library}_shared)
      return()
    endif()
  endforeach()
  foreach(library target IN ZIP_LISTS ARGN installed)
    if(NOT TARGET numera_${library}_dependency)
      add_library(numera_${library}_dependency INTERFACE IMPORTED)
      target_link_libraries(numera_${library}_dependency INTERFACE ${target})
    endif()
  endforeach()
  set(version ${Arrow_VERSION} PARENT_SCOPE)
endfunction()

# Sets wheel to the folder of pyarrow in NUMERA_ARROW_PYTHON if set; otherwise in the project's
# virtual environment or the current Python.
function(numera_python_wheel)
  if(NUMERA_ARROW_PYTHON)
    set(python ${NUMERA_ARROW_PYTHON})
  else()
    find_program(python NAMES python3 python HINTS ${PROJECT_SOURCE_DIR}/.venv/bin NO_CACHE)
  endif()
  if(NOT python)
    return()
  endif()
  execute_process(
    COMMAND ${python} -c "import os, pyarrow; print(os.path.dirname(pyarrow.__file__))"
    OUTPUT_VARIABLE folder OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET RESULT_VARIABLE result)
  if(result EQUAL 0)
    set(wheel ${folder} PARENT_SCOPE)
  endif()
endfunction()

# Sets version, read from the wheel's headers. In a wheel, libraries have only their soname as name.
function(numera_arrow_from_wheel)
  file(STRINGS ${wheel}/include/arrow/util/config.h line REGEX "define ARROW_VERSION_STRING ")
  string(REGEX MATCH "[0-9]+\\.[0-9]+\\.[0-9]+" found "${line}")
  foreach(library IN LISTS ARGN)
    if(NOT TARGET numera_${library}_dependency)
      file(GLOB location ${wheel}/lib${library}.so.*)
      add_library(numera_${library}_dependency SHARED IMPORTED)
      set_target_properties(numera_${library}_dependency PROPERTIES
        IMPORTED_LOCATION "${location}"
        INTERFACE_INCLUDE_DIRECTORIES ${wheel}/include
        INTERFACE_COMPILE_FEATURES cxx_std_20)
      if(NOT library STREQUAL arrow)
        target_link_libraries(numera_${library}_dependency INTERFACE numera_arrow_dependency)
      endif()
    endif()
  endforeach()
  set(version ${found} PARENT_SCOPE)
endfunction()
