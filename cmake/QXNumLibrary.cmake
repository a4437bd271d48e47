# Shared set-up of the two libraries: export header, hidden visibility, include paths, install.
include(GenerateExportHeader)

function(qxnum_library_setup target base_name export_file)
  generate_export_header(${target} BASE_NAME ${base_name}
    EXPORT_FILE_NAME ${PROJECT_BINARY_DIR}/include/qxnum/${export_file})
  # Only what the headers mark is exported; inline functions stay inside each binary.
  set_target_properties(${target} PROPERTIES CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
  target_include_directories(${target} PUBLIC
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
    $<BUILD_INTERFACE:${PROJECT_BINARY_DIR}/include>
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
  install(TARGETS ${target} EXPORT QXNumCtrlsTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  install(FILES ${PROJECT_BINARY_DIR}/include/qxnum/${export_file}
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/qxnum)
endfunction()
