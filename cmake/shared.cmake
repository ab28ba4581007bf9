# The shared libraries, the rule where BUILD_SHARED_LIBS is not set.

# A shared library of the objects in <target>_objects, which exports what stands in cmake/<map>.
function(vq_shared_library target map)
  set(map ${PROJECT_SOURCE_DIR}/cmake/${map})
  add_library(${target} SHARED)
  target_link_libraries(${target} PRIVATE $<BUILD_INTERFACE:${target}_objects>)
  # Hidden visibility alone would still export templates of the standard library.
  target_link_options(${target} PRIVATE LINKER:--version-script=${map})
  # Addresses resolved when the library is loaded, and nothing of it both writable and executable, then or later.
  target_link_options(${target} PRIVATE LINKER:-z,relro,-z,now LINKER:-z,text LINKER:-z,noexecstack LINKER:--as-needed)
  # By a host's -ffast-math or -Ofast the linker would add what sets the processor's rounding of tiny numbers in the whole
  # process that loads the library.
  target_link_options(${target} PRIVATE -fno-fast-math -fno-unsafe-math-optimizations -O2)
  set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${map})
  set_target_properties(${target} PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}
    LINKER_LANGUAGE CXX)
endfunction()

target_compile_definitions(velquor_objects PRIVATE VQ_BUILDING)
vq_shared_library(velquor velquor.map)
target_compile_definitions(velquor_levels_objects PRIVATE VQ_BUILDING_LEVELS)
vq_shared_library(velquor_levels velquor-levels.map)
# It finds the first beside itself, in the build tree too; in a folder of the system's the loader does, and
# CMAKE_SKIP_INSTALL_RPATH leaves it to that.
set_target_properties(velquor_levels PROPERTIES BUILD_WITH_INSTALL_RPATH ON INSTALL_RPATH $ORIGIN)
set(library_kind shared)
