# The kit, of the component development: what a C++ program that calls it is built with. Its headers name one another from the folder that
# holds kit/, as in the sources.
set(kit_include_dir ${CMAKE_INSTALL_INCLUDEDIR}/velquor)
install(TARGETS velquor_kit EXPORT velquor-kit-targets
  ARCHIVE COMPONENT development
  INCLUDES DESTINATION ${kit_include_dir})
foreach(header
    analysis/analysis.h
    analysis/check.h
    analysis/loads.h
    analysis/slots.h
    analysis/stresses.h
    analysis/values.h
    draw/draw.h
    mesh/mesh.h
    mesh/mesh_file.h
    report/document.h
    report/report.h
    section/drawing.h
    section/file.h
    section/profiles.h
    section/section.h
    section/shapes.h
    section/templates.h
    section/units.h
    show/fields.h
    show/show.h
    requests/answer.h)
  get_filename_component(room ${header} DIRECTORY)
  install(FILES kit/${header} DESTINATION ${kit_include_dir}/kit/${room} COMPONENT development)
endforeach()
install(EXPORT velquor-kit-targets NAMESPACE velquor:: DESTINATION ${package_dir} COMPONENT development)
install(FILES cmake/velquor-kit.cmake DESTINATION ${package_dir} COMPONENT development)
configure_file(cmake/velquor-kit.pc.in velquor-kit.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/velquor-kit.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

# The component tools: the command; schemas and catalogue for programs; and, where there is Python to write them, the man
# page and the completion for bash: all of them as the command itself tells them.
file(RELATIVE_PATH libraries ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
set_property(TARGET velquor_tool PROPERTY INSTALL_RPATH $ORIGIN/${libraries})
install(TARGETS velquor_tool RUNTIME COMPONENT tools)

set(told ${PROJECT_BINARY_DIR}/told)
file(MAKE_DIRECTORY ${told})
# Where nothing is installed with a search path, the second library does not find the first by itself in the build tree.
set(ask ${CMAKE_COMMAND} -E env LD_LIBRARY_PATH=$<TARGET_FILE_DIR:velquor>)
set(velquor $<TARGET_FILE:velquor_tool>)
set(documents section.schema.json result.schema.json request.schema.json answer.schema.json catalogue.json)
list(TRANSFORM documents PREPEND ${told}/)
set(manual "")
set(write_manual "")
find_package(Python3 3.9 QUIET COMPONENTS Interpreter)
if(Python3_Interpreter_FOUND)
  set(script ${PROJECT_SOURCE_DIR}/cmake/manual.py)
  set(manual ${told}/velquor.1 ${told}/velquor.bash)
  set(write_manual COMMAND ${ask} ${Python3_EXECUTABLE} -B ${script} ${velquor} ${told}/velquor.1 ${told}/velquor.bash)
  install(FILES ${told}/velquor.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools)
  install(FILES ${told}/velquor.bash DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/bash-completion/completions RENAME velquor
    COMPONENT tools)
else()
  message(STATUS "Velquor: man page and completion are left out, for want of Debian's package: python3")
endif()
add_custom_command(OUTPUT ${documents} ${manual}
  COMMAND ${ask} ${velquor} schema > section.schema.json
  COMMAND ${ask} ${velquor} schema --result > result.schema.json
  COMMAND ${ask} ${velquor} schema --request > request.schema.json
  COMMAND ${ask} ${velquor} schema --answer > answer.schema.json
  COMMAND ${ask} ${velquor} catalogue > catalogue.json
  ${write_manual}
  WORKING_DIRECTORY ${told} DEPENDS velquor_tool ${script} VERBATIM
  COMMENT "Writing what the command tells of itself: schemas, catalogue, man page, completion")
set(by_default ALL)
if(VQ_SANITIZE)  # slow to start, and nobody's to install
  set(by_default "")
endif()
add_custom_target(velquor_told ${by_default} DEPENDS ${documents} ${manual})
install(FILES ${documents} DESTINATION ${CMAKE_INSTALL_DATADIR}/velquor COMPONENT tools)
