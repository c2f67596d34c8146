# numera_compile_options(TARGET): what every target of the project is compiled with.
function(numera_compile_options target)
  if(NUMERA_DEVELOPER_WARNINGS)
    target_compile_options(${target} PRIVATE
      -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wsign-compare -Wshadow
      -Wold-style-cast -Wnon-virtual-dtor -Woverloaded-virtual -Wimplicit-fallthrough -Wswitch
      -Wundef -Werror)
  endif()
  if(NUMERA_SANITIZE)
    target_compile_options(${target} PRIVATE -fsanitize=${NUMERA_SANITIZE}
      -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(${target} PRIVATE -fsanitize=${NUMERA_SANITIZE})
  endif()
endfunction()

# numera_precompile(TARGET HEADER...): the given headers, precompiled where that is wanted.
function(numera_precompile target)
  if(NUMERA_PRECOMPILE)
    target_precompile_headers(${target} PRIVATE ${ARGN})
  endif()
endfunction()
