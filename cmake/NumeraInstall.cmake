# Rules for `cmake --install`: headers, libraries, the CMake package files and pkg-config files.
include(CMakePackageConfigHelpers)
include(GNUInstallDirs)

set(numera_cmake_dir ${CMAKE_INSTALL_LIBDIR}/cmake/numera)
set(numera_pc_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS cmake/public_headers.txt)
file(STRINGS cmake/public_headers.txt public_headers)
if(NOT NUMERA_BUILD_FILES)
  list(FILTER public_headers EXCLUDE REGEX "^numera/files/")
endif()
foreach(header IN LISTS public_headers)
  cmake_path(GET header PARENT_PATH folder)
  install(FILES ${header} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/${folder})
endforeach()

set(libraries numera_arrow numera_host numera_extras numera_numera)
if(NUMERA_BUILD_FILES)
  list(APPEND libraries numera_files)
endif()
install(TARGETS ${libraries} EXPORT numera
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT numera NAMESPACE numera:: FILE numera-targets.cmake
        DESTINATION ${numera_cmake_dir})

configure_package_config_file(cmake/numera-config.cmake.in numera-config.cmake
  INSTALL_DESTINATION ${numera_cmake_dir}
  NO_SET_AND_CHECK_MACRO NO_CHECK_REQUIRED_COMPONENTS_MACRO)
# Before 1.0, minor versions may be incompatible.
write_basic_package_version_file(numera-config-version.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/numera-config.cmake
              ${PROJECT_BINARY_DIR}/numera-config-version.cmake
              cmake/NumeraArrow.cmake
        DESTINATION ${numera_cmake_dir})

# An installed Arrow has its own pkg-config file. A wheel has none. Its folder is not on the search
# path of the loader, and its libraries have no plain names such as libarrow.so.
if(numera_arrow_wheel)
  set(numera_pc_requires "")
  set(numera_pc_arrow_cflags "-I${numera_arrow_wheel}/include")
  get_target_property(location numera_arrow_dependency IMPORTED_LOCATION)
  cmake_path(GET location FILENAME file)
  set(numera_pc_arrow_libs
      "-L${numera_arrow_wheel} -l:${file} -Wl,-rpath,${numera_arrow_wheel}")
else()
  math(EXPR next_major "${numera_arrow_major} + 1")
  set(numera_pc_requires "arrow >= ${numera_arrow_major}, arrow < ${next_major}")
  set(numera_pc_arrow_cflags "")
  set(numera_pc_arrow_libs "")
endif()
cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX
           BASE_DIRECTORY ${CMAKE_INSTALL_PREFIX}/${numera_pc_dir}
           OUTPUT_VARIABLE numera_pc_to_prefix)
set(pc_names numera numera-arrow)
if(NUMERA_BUILD_FILES)
  list(APPEND pc_names numera-files)
endif()
foreach(name IN LISTS pc_names)
  configure_file(cmake/${name}.pc.in ${name}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${name}.pc DESTINATION ${numera_pc_dir})
endforeach()
