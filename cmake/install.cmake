# Installation, free to be moved as one tree, in components: runtime, the shared libraries; development, what programs are
# built with, the kit's too where it is built; python, the package; tools, the command and what is beside it. Each
# component is whole by itself.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)
set(VQ_INSTALL_PYTHONDIR ${CMAKE_INSTALL_DATADIR}/velquor/python CACHE STRING "Where the package for Python is installed")
mark_as_advanced(VQ_INSTALL_PYTHONDIR)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/velquor)
install(TARGETS velquor velquor_levels EXPORT velquor-targets
  ARCHIVE COMPONENT development
  LIBRARY COMPONENT runtime NAMELINK_COMPONENT development
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
if(library_kind STREQUAL "shared")
  foreach(component development python tools)
    install(TARGETS velquor velquor_levels LIBRARY COMPONENT ${component} NAMELINK_SKIP EXCLUDE_FROM_ALL)
  endforeach()
endif()
install(FILES api/velquor.h levels/velquor_levels.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
install(DIRECTORY bindings/fortran DESTINATION ${CMAKE_INSTALL_DATADIR}/velquor COMPONENT development)
install(DIRECTORY bindings/python/velquor DESTINATION ${VQ_INSTALL_PYTHONDIR} COMPONENT python
  PATTERN __pycache__ EXCLUDE)

# Shared and static libraries may stand side by side, of two builds with one prefix: the component static of the CMake
# package chooses the latter, as pkg-config --static does, whose flags the shared ones keep apart.
install(EXPORT velquor-targets FILE velquor-${library_kind}-targets.cmake NAMESPACE velquor::
  DESTINATION ${package_dir} COMPONENT development)
configure_package_config_file(cmake/velquor-config.cmake.in velquor-config.cmake INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(velquor-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/velquor-config.cmake ${PROJECT_BINARY_DIR}/velquor-config-version.cmake
  DESTINATION ${package_dir} COMPONENT development)

foreach(folder LIBDIR INCLUDEDIR DATADIR)
  file(RELATIVE_PATH VQ_PC_${folder} ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_FULL_${folder}})
  string(REGEX REPLACE "/$" "" VQ_PC_${folder} "${VQ_PC_${folder}}")
endforeach()
cmake_path(ABSOLUTE_PATH VQ_INSTALL_PYTHONDIR BASE_DIRECTORY ${CMAKE_INSTALL_PREFIX} NORMALIZE OUTPUT_VARIABLE VQ_PC_PYTHONDIR)
file(RELATIVE_PATH VQ_PC_PYTHONDIR ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${VQ_PC_PYTHONDIR})
list(TRANSFORM runtime_libraries PREPEND "-l" OUTPUT_VARIABLE libs)
list(TRANSFORM interface_definitions PREPEND " -D" OUTPUT_VARIABLE VQ_PC_CFLAGS)
list(JOIN libs " " libs)
string(REPLACE ";" "" VQ_PC_CFLAGS "${VQ_PC_CFLAGS}")
if(library_kind STREQUAL "static")
  set(VQ_PC_LIBS " ${libs}")
else()
  set(VQ_PC_PRIVATE "\nLibs.private: ${libs}\nCflags.private: -DVQ_STATIC")
endif()
foreach(file velquor.pc velquor-levels.pc)
  configure_file(cmake/${file}.in ${file} @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${file} DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
endforeach()

set(doc_dir ${CMAKE_INSTALL_DATAROOTDIR}/doc/velquor)
install(DIRECTORY examples DESTINATION ${doc_dir} COMPONENT development)
install(FILES bindings/python/example.py DESTINATION ${doc_dir}/examples COMPONENT python)
install(FILES debian/copyright DESTINATION ${doc_dir} COMPONENT runtime)
foreach(component development python tools)
  install(FILES debian/copyright DESTINATION ${doc_dir} COMPONENT ${component} EXCLUDE_FROM_ALL)
endforeach()

if(TARGET velquor_kit)
  include(cmake/install_kit.cmake)
endif()
