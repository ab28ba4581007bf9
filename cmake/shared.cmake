# The shared library, the rule where BUILD_SHARED_LIBS is not set.
target_compile_definitions(velquor_objects PRIVATE VQ_BUILDING)
add_library(velquor SHARED)
target_link_libraries(velquor PRIVATE $<BUILD_INTERFACE:velquor_objects>)
# Hidden visibility alone would still export templates of the standard library.
target_link_options(velquor PRIVATE LINKER:--version-script=${PROJECT_SOURCE_DIR}/cmake/velquor.map)
# Addresses resolved when the library is loaded, and nothing of it both writable and executable, then or later.
target_link_options(velquor PRIVATE LINKER:-z,relro,-z,now LINKER:-z,text LINKER:-z,noexecstack LINKER:--as-needed)
set_property(TARGET velquor APPEND PROPERTY LINK_DEPENDS ${PROJECT_SOURCE_DIR}/cmake/velquor.map)
set_target_properties(velquor PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}
  LINKER_LANGUAGE CXX)
set(library_component runtime)
