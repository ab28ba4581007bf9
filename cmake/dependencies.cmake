# What is linked into the library, statically, so that nothing but the C and C++ runtime is loaded into a host with it: the
# reference LAPACK and BLAS (another BLAS may be the system's default, with threads of its own), and of AMD the one routine
# that orders and keeps no state.
find_library(VQ_LAPACK_ARCHIVE liblapack_pic.a PATH_SUFFIXES lapack)
find_library(VQ_BLAS_ARCHIVE libblas.a PATH_SUFFIXES blas)
find_library(VQ_AMD_ARCHIVE libamd.a)
find_path(VQ_AMD_INCLUDE amd.h PATH_SUFFIXES suitesparse)
mark_as_advanced(VQ_LAPACK_ARCHIVE VQ_BLAS_ARCHIVE VQ_AMD_ARCHIVE VQ_AMD_INCLUDE)

# Ends the configuration with every file that was not found and the Debian package that holds it.
function(vq_demand)
  set(missing "")
  while(ARGN)
    list(POP_FRONT ARGN variable file package)
    if(NOT ${variable})
      string(APPEND missing "\n  ${file}, in Debian's package ${package}")
    endif()
  endwhile()
  if(missing)
    message(FATAL_ERROR "Velquor cannot be built without${missing}")
  endif()
endfunction()
if(VQ_BLAS_ARCHIVE)
  file(REAL_PATH "${VQ_BLAS_ARCHIVE}" reference_blas)
  if(reference_blas MATCHES "(openblas|atlas|blis)[^/]*/[^/]*$")
    set(reference_blas "")
    unset(VQ_BLAS_ARCHIVE CACHE)
  endif()
endif()
vq_demand(
  VQ_LAPACK_ARCHIVE liblapack_pic.a liblapack-dev
  reference_blas "libblas.a of the reference BLAS" libblas-dev
  VQ_AMD_ARCHIVE libamd.a libsuitesparse-dev
  VQ_AMD_INCLUDE amd.h libsuitesparse-dev)

# Whether the machine has what a part of the tests needs, in <result>. Where it has not, that part is left out with a
# message, or the configuration fails if VQ_BUILD_TESTS asks for all of them.
#   vq_look_for(<result> <name of the part> [<condition> <Debian package>]...)
function(vq_look_for result part)
  set(missing "")
  while(ARGN)
    list(POP_FRONT ARGN condition package)
    if(NOT ${condition})
      list(APPEND missing ${package})
    endif()
  endwhile()
  list(JOIN missing " " missing)
  set(${result} ON PARENT_SCOPE)
  if(missing)
    set(${result} OFF PARENT_SCOPE)
    if(VQ_BUILD_TESTS STREQUAL "AUTO")
      message(STATUS "Velquor: ${part} are left out, for want of Debian's packages: ${missing}")
    else()
      message(SEND_ERROR "Velquor: ${part} were asked for, and need Debian's packages: ${missing}")
    endif()
  endif()
endfunction()
