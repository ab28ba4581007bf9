# The static library: one object, of ours and of what is taken from the archives, in which vq_velquor alone has a name for
# others. So a host's own LAPACK and BLAS are never taken for these, nor these for its own. The name is hidden, too: a shared
# library of the host does not pass it on.
target_compile_definitions(velquor_objects PUBLIC VQ_STATIC)
# Machine code with names that can be made local, also where the host has its programs optimised at link time.
target_compile_options(velquor_objects PRIVATE -fno-lto $<$<CXX_COMPILER_ID:GNU>:-fno-gnu-unique>)
set(archives ${VQ_LAPACK_ARCHIVE} ${VQ_BLAS_ARCHIVE} ${VQ_AMD_ARCHIVE})
add_custom_command(OUTPUT velquor$<CONFIG>.o
  COMMAND ${CMAKE_CXX_COMPILER} -fuse-ld=bfd -nostdlib -r -Wl,--force-group-allocation -o velquor$<CONFIG>.o
    $<TARGET_OBJECTS:velquor_objects> ${archives}
  COMMAND ${CMAKE_OBJCOPY} --keep-global-symbol=vq_velquor velquor$<CONFIG>.o
  DEPENDS velquor_objects $<TARGET_OBJECTS:velquor_objects> ${archives}
  COMMENT "Linking the object of libvelquor.a" COMMAND_EXPAND_LISTS VERBATIM)
add_library(velquor STATIC ${PROJECT_BINARY_DIR}/velquor$<CONFIG>.o)
set_target_properties(velquor PROPERTIES LINKER_LANGUAGE CXX)

# By name, so that a host without C++ can link it: the runtime of the compiler that built the library.
set(interface_libraries ${CMAKE_CXX_IMPLICIT_LINK_LIBRARIES})
list(REMOVE_ITEM interface_libraries ${CMAKE_C_IMPLICIT_LINK_LIBRARIES})
set(interface_definitions VQ_STATIC)
target_link_libraries(velquor INTERFACE ${interface_libraries})
target_compile_definitions(velquor INTERFACE ${interface_definitions})
set(library_component development)
