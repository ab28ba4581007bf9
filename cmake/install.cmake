# Installation: the libraries, their headers, a CMake package, pkg-config files, the bindings, examples and licences, all
# free to be moved as one tree; and the kit with the command, where they are built. The component runtime is what a program
# needs to run.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/velquor)
install(TARGETS velquor velquor_levels EXPORT velquor-targets
  ARCHIVE COMPONENT development
  LIBRARY COMPONENT runtime NAMELINK_COMPONENT development
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(FILES api/velquor.h levels/velquor_levels.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
install(DIRECTORY bindings/ DESTINATION ${CMAKE_INSTALL_DATADIR}/velquor COMPONENT development
  PATTERN __pycache__ EXCLUDE)

install(EXPORT velquor-targets NAMESPACE velquor:: DESTINATION ${package_dir} COMPONENT development)
configure_package_config_file(cmake/velquor-config.cmake.in velquor-config.cmake INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(velquor-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/velquor-config.cmake ${PROJECT_BINARY_DIR}/velquor-config-version.cmake
  DESTINATION ${package_dir} COMPONENT development)

foreach(folder LIBDIR INCLUDEDIR DATADIR)
  file(RELATIVE_PATH VQ_PC_${folder} ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_FULL_${folder}})
  string(REGEX REPLACE "/$" "" VQ_PC_${folder} "${VQ_PC_${folder}}")
endforeach()
list(TRANSFORM interface_libraries PREPEND " -l" OUTPUT_VARIABLE VQ_PC_LIBS)
list(TRANSFORM interface_definitions PREPEND " -D" OUTPUT_VARIABLE VQ_PC_CFLAGS)
string(REPLACE ";" "" VQ_PC_LIBS "${VQ_PC_LIBS}")
string(REPLACE ";" "" VQ_PC_CFLAGS "${VQ_PC_CFLAGS}")
foreach(file velquor.pc velquor-levels.pc)
  configure_file(cmake/${file}.in ${file} @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${file} DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
endforeach()

if(TARGET velquor_kit)
  include(cmake/install_kit.cmake)
endif()

# Licences and examples: each Debian package has a folder of its own for them.
if(VQ_DEBIAN_PACKAGES)
  include(cmake/packages.cmake)
else()
  set(doc_dir ${CMAKE_INSTALL_DATADIR}/doc/velquor)
  install(FILES cmake/debian/copyright DESTINATION ${doc_dir} COMPONENT ${library_component})
  install(DIRECTORY examples DESTINATION ${doc_dir} COMPONENT development)
endif()
