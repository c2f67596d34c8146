include(CheckCXXCompilerFlag)
check_cxx_compiler_flag(-fcf-protection=full numera_has_cf_protection)
check_cxx_compiler_flag(-mbranch-protection=standard numera_has_branch_protection)

# Hardens what users run, so that a bug is harder to exploit: bounds checks for copies of known
# size, stack protection, protected jumps if the processor supports them, and relocation tables that
# are resolved at program start and then read-only.
function(numera_harden target)
  set(options -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2 -fstack-protector-strong
    -fstack-clash-protection)
  if(numera_has_cf_protection)
    list(APPEND options -fcf-protection=full)
  elseif(numera_has_branch_protection)
    list(APPEND options -mbranch-protection=standard)
  endif()
  target_compile_options(${target} PRIVATE "$<$<NOT:$<CONFIG:Debug>>:${options}>")
  target_link_options(${target} PRIVATE -Wl,-z,relro,-z,now,-z,noexecstack)
endfunction()

# numera_compile_options(TARGET): sets the compile options of all targets of the project.
function(numera_compile_options target)
  set_target_properties(${target} PROPERTIES
    UNITY_BUILD_CODE_BEFORE_INCLUDE "// NOLINTNEXTLINE(bugprone-suspicious-include)")
  if(NUMERA_DEVELOPER_WARNINGS)
    target_compile_options(${target} PRIVATE
      -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wsign-compare -Wshadow
      -Wold-style-cast -Wnon-virtual-dtor -Woverloaded-virtual -Wimplicit-fallthrough -Wswitch
      -Wundef -Werror)
    # GCC 12 reports false warnings for string concatenation in the standard library: about
    # overlap, and with optimisation about lengths.
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
      target_compile_options(${target} PRIVATE -Wno-restrict
        "$<$<NOT:$<CONFIG:Debug>>:-Wno-stringop-overflow;-Wno-array-bounds>")
    endif()
  endif()
  if(NUMERA_SANITIZE)
    target_compile_options(${target} PRIVATE -fsanitize=${NUMERA_SANITIZE}
      -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(${target} PRIVATE -fsanitize=${NUMERA_SANITIZE})
  else()
    numera_harden(${target})
  endif()
endfunction()

# numera_precompile(TARGET HEADER...): precompiles the headers if NUMERA_PRECOMPILE is on.
function(numera_precompile target)
  if(NUMERA_PRECOMPILE)
    target_precompile_headers(${target} PRIVATE ${ARGN})
  endif()
endfunction()

# numera_precompile_for_tests(TARGET): reuses the precompiled headers of numera_test_support. The
# target must be compiled with the same options.
function(numera_precompile_for_tests target)
  if(NUMERA_PRECOMPILE)
    target_precompile_headers(${target} REUSE_FROM numera_test_support)
  endif()
endfunction()

# numera_compile_apart(SOURCE...): excludes sources of this folder from unity builds, because they
# define a name that another source of their target defines too.
function(numera_compile_apart)
  set_source_files_properties(${ARGN} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
endfunction()

# numera_export_library(NAME): turns the existing shared library target numera_NAME into a library
# for users: numera::NAME, versioned, exporting only the public names.
function(numera_export_library name)
  set(exports ${PROJECT_SOURCE_DIR}/cmake/exports.map)
  add_library(numera::${name} ALIAS numera_${name})
  set_target_properties(numera_${name} PROPERTIES
    EXPORT_NAME ${name}
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR}
    LINK_DEPENDS ${exports})
  target_compile_features(numera_${name} PUBLIC cxx_std_20)
  target_include_directories(numera_${name} PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>)
  target_link_options(numera_${name} PRIVATE -Wl,--version-script=${exports})
  numera_compile_options(numera_${name})
endfunction()
