include(CheckCXXCompilerFlag)
check_cxx_compiler_flag(-fcf-protection=full numera_has_cf_protection)
check_cxx_compiler_flag(-mbranch-protection=standard numera_has_branch_protection)

# What makes a fault harder to exploit, for what users run: checked copies of known size, guarded
# stacks, guarded jumps where the processor knows them, and tables of addresses that are bound when
# the program starts and read-only from then on.
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

# numera_compile_options(TARGET): what every target of the project is compiled with.
function(numera_compile_options target)
  set_target_properties(${target} PROPERTIES
    UNITY_BUILD_CODE_BEFORE_INCLUDE "// NOLINTNEXTLINE(bugprone-suspicious-include)")
  if(NUMERA_DEVELOPER_WARNINGS)
    target_compile_options(${target} PRIVATE
      -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wsign-compare -Wshadow
      -Wold-style-cast -Wnon-virtual-dtor -Woverloaded-virtual -Wimplicit-fallthrough -Wswitch
      -Wundef -Werror)
    # GCC 12 warns wrongly about the standard library's own string concatenation: about overlap, and
    # with optimisation about lengths.
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

# numera_precompile(TARGET HEADER...): the given headers, precompiled where that is wanted.
function(numera_precompile target)
  if(NUMERA_PRECOMPILE)
    target_precompile_headers(${target} PRIVATE ${ARGN})
  endif()
endfunction()

# numera_precompile_for_tests(TARGET): the headers that most tests include, precompiled once for all
# that are compiled in the same way.
function(numera_precompile_for_tests target)
  if(NUMERA_PRECOMPILE)
    target_precompile_headers(${target} REUSE_FROM numera_test_support)
  endif()
endfunction()

# numera_compile_apart(SOURCE...): sources of this folder that repeat a name of another one of their
# target, so that the presets which compile sources in batches compile them alone.
function(numera_compile_apart)
  set_source_files_properties(${ARGN} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
endfunction()

# numera_export_library(NAME): makes the shared library numera_NAME, which has its sources already,
# one of those that users link: numera::NAME, versioned, exporting the public names alone.
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
