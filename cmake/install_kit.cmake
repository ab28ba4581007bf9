# The component kit: what a C++ program that calls the kit is built with. Its headers name one another from the folder that
# holds kit/, as in the sources.
set(kit_include_dir ${CMAKE_INSTALL_INCLUDEDIR}/velquor)
install(TARGETS velquor_kit EXPORT velquor-kit-targets
  ARCHIVE COMPONENT kit
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
  install(FILES kit/${header} DESTINATION ${kit_include_dir}/kit/${room} COMPONENT kit)
endforeach()
install(EXPORT velquor-kit-targets NAMESPACE velquor:: DESTINATION ${package_dir} COMPONENT kit)
install(FILES cmake/velquor-kit.cmake DESTINATION ${package_dir} COMPONENT kit)
configure_file(cmake/velquor-kit.pc.in velquor-kit.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/velquor-kit.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT kit)

# The component tools: the command, and the schemas of what it reads and gives.
install(TARGETS velquor_tool RUNTIME COMPONENT tools)
if(NOT VQ_DEBIAN_PACKAGES)
  file(RELATIVE_PATH libraries ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
  set_property(TARGET velquor_tool PROPERTY INSTALL_RPATH $ORIGIN/${libraries})
endif()
set(result_schema ${PROJECT_BINARY_DIR}/result.schema.json)
# In the build tree of the Debian packages the second library does not find the first by itself.
add_custom_command(OUTPUT ${result_schema}
  COMMAND ${CMAKE_COMMAND} -E env LD_LIBRARY_PATH=$<TARGET_FILE_DIR:velquor>
    $<TARGET_FILE:velquor_tool> schema --result > ${result_schema}
  DEPENDS velquor_tool COMMENT "Writing the schema of results")
add_custom_target(velquor_result_schema ALL DEPENDS ${result_schema})
install(FILES ${result_schema} DESTINATION ${CMAKE_INSTALL_DATADIR}/velquor COMPONENT tools)
install(FILES kit/section/schema.json DESTINATION ${CMAKE_INSTALL_DATADIR}/velquor RENAME section.schema.json
  COMPONENT tools)
