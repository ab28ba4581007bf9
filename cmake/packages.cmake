# Two Debian packages, one for each component: cmake --workflow --preset package.
if(NOT library_component STREQUAL "runtime")
  message(FATAL_ERROR "The Debian packages hold the shared libraries: BUILD_SHARED_LIBS and VQ_DEBIAN_PACKAGES contradict")
endif()
set(runtime_package libvelquor${PROJECT_VERSION_MAJOR})
set(development_package libvelquor-dev)
set(VQ_MAINTAINER "The Velquor authors <velquor@localhost>" CACHE STRING "Who answers for the Debian packages")

install(FILES cmake/debian/copyright DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/${runtime_package} COMPONENT runtime)
install(FILES cmake/debian/copyright DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/${development_package}
  COMPONENT development)
install(DIRECTORY examples DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/${development_package} COMPONENT development)

set(CPACK_GENERATOR DEB)
set(CPACK_COMPONENTS_ALL runtime development)
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
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS "python3-numpy, gfortran")
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)  # on the runtime package of the very same version
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS runtime)
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "characteristics of beam cross-sections, development files
What a program that calls Velquor is built with: the C headers of its two
libraries, a CMake package, pkg-config files, modules for Python and Fortran,
and examples.")

include(CPack)
