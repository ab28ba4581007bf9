# Debian packages, one for each component: cmake --workflow --preset package.
if(NOT library_component STREQUAL "runtime")
  message(FATAL_ERROR "The Debian packages hold the shared libraries: BUILD_SHARED_LIBS and VQ_DEBIAN_PACKAGES contradict")
endif()
set(runtime_package libvelquor${PROJECT_VERSION_MAJOR})
set(development_package libvelquor-dev)
set(kit_package libvelquor-kit-dev)
set(tools_package velquor)
set(components runtime development)
if(TARGET velquor_kit)
  list(APPEND components kit tools)
endif()
set(VQ_MAINTAINER "The Velquor authors <velquor@localhost>" CACHE STRING "Who answers for the Debian packages")

foreach(component IN LISTS components)
  install(FILES cmake/debian/copyright DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/${${component}_package}
    COMPONENT ${component})
endforeach()
install(DIRECTORY examples DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/${development_package} COMPONENT development
  PATTERN section.cpp EXCLUDE PATTERN sections EXCLUDE PATTERN handbook.py EXCLUDE)
if(TARGET velquor_kit)
  install(FILES examples/section.cpp DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/${kit_package}/examples COMPONENT kit)
  install(FILES examples/handbook.py DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/${tools_package}/examples
    COMPONENT tools)
  install(DIRECTORY examples/sections DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/${tools_package}/examples
    COMPONENT tools)
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_COMPONENTS_ALL ${components})
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_STRIP_FILES ON)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/debian/permissions.cmake)
set(CPACK_PACKAGE_CONTACT "${VQ_MAINTAINER}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # each package has its own

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SOURCE velquor)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${runtime_package})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
# Programs built against this release need it or a later one.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/cmake/debian/triggers)
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "characteristics of beam cross-sections, shared libraries
Velquor finds the axial, bending, torsional and shear stiffness of a beam's
cross-section, its plastic moduli, shear centre and warping constants, and the
stresses of unit loads, from a finite-element mesh of its plane. A second
library refines the mesh, and gives each value a bound for its error.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME ${development_package})
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS "velquor, python3-numpy, python3-matplotlib, python3-distributed, gfortran")
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)  # on the runtime package of the very same version
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS runtime)
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "characteristics of beam cross-sections, development files
What a program that calls Velquor is built with: the C headers of its two
libraries, a CMake package, pkg-config files, modules for Python and Fortran,
and examples.")

set(CPACK_DEBIAN_KIT_PACKAGE_NAME ${kit_package})
set(CPACK_DEBIAN_KIT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_KIT_PACKAGE_DEPENDS "libdxflib-dev, libgmsh-dev, libcairo2-dev, libpango1.0-dev")
set(CPACK_COMPONENT_KIT_DEPENDS development)
set(CPACK_DEBIAN_KIT_DESCRIPTION "characteristics of beam cross-sections, kit for programs in C++
A static library that meshes a cross-section from its description, its outlines
or the name of a rolled profile, and calculates it with Velquor. Programs that
link it link Gmsh and dxflib too, and are under the GPL as a whole.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME ${tools_package})
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION science)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_TOOLS_PACKAGE_RECOMMENDS "fonts-dejavu-core | fonts-liberation")  # the words of pictures
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})  # our own libraries, which are not installed
set(CPACK_COMPONENT_TOOLS_DEPENDS runtime)
set(CPACK_DEBIAN_TOOLS_DESCRIPTION "characteristics of beam cross-sections, command
The command velquor calculates a cross-section from a file, a parametric shape
or the name of a rolled profile: axial, bending, torsional, shear and plastic
values, shear centre and warping constant, each with a bound for its error. It
draws outlines, meshes and stresses as SVG, PNG and PDF.")

include(CPack)
