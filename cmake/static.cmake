# The static libraries: each one object, of ours and of what is taken from archives, in which the routines of the C header
# alone have names for others. So a host's own LAPACK and BLAS are never taken for these, nor these for its own. The names
# are hidden, too: a shared library of the host does not pass them on.
set(interface_definitions VQ_STATIC)

# A static library of the objects in <target>_objects: OUTPUT its file's name, NAMES for others, ARCHIVES it takes from.
function(vq_static_library target)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" OUTPUT "NAMES;ARCHIVES")
  target_compile_definitions(${target}_objects PUBLIC ${interface_definitions})
  # Machine code with names that can be made local, also where the host has its programs optimised at link time.
  target_compile_options(${target}_objects PRIVATE -fno-lto $<$<CXX_COMPILER_ID:GNU>:-fno-gnu-unique>)
  set(object ${arg_OUTPUT}$<CONFIG>.o)
  list(TRANSFORM arg_NAMES PREPEND --keep-global-symbol=)
  add_custom_command(OUTPUT ${object}
    COMMAND ${CMAKE_CXX_COMPILER} -fuse-ld=bfd -nostdlib -r -Wl,--force-group-allocation -o ${object}
      $<TARGET_OBJECTS:${target}_objects> ${arg_ARCHIVES}
    COMMAND ${CMAKE_OBJCOPY} ${arg_NAMES} ${object}
    DEPENDS ${target}_objects $<TARGET_OBJECTS:${target}_objects> ${arg_ARCHIVES}
    COMMENT "Linking the object of lib${arg_OUTPUT}.a" COMMAND_EXPAND_LISTS VERBATIM)
  add_library(${target} STATIC ${PROJECT_BINARY_DIR}/${object})
  set_target_properties(${target} PROPERTIES LINKER_LANGUAGE CXX)
endfunction()

vq_static_library(velquor OUTPUT velquor NAMES vq_velquor
  ARCHIVES ${VQ_LAPACK_ARCHIVE} ${VQ_BLAS_ARCHIVE} ${VQ_AMD_ARCHIVE})
vq_static_library(velquor_levels OUTPUT velquor-levels NAMES vq_levels vq_levels_watched vq_check vq_reason)

target_link_libraries(velquor INTERFACE ${runtime_libraries})
target_compile_definitions(velquor INTERFACE ${interface_definitions})
set(library_kind static)
