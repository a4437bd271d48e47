# Shared set-up of the two libraries: export header, hidden visibility, include paths, run path,
# install into the export set of their package component.
include(GenerateExportHeader)

function(qxnum_library_setup target base_name export_file component)
  generate_export_header(${target} BASE_NAME ${base_name}
    EXPORT_FILE_NAME ${PROJECT_BINARY_DIR}/include/qxnum/${export_file})
  # Only what the headers mark is exported; inline functions stay inside each binary.
  set_target_properties(${target} PROPERTIES CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
  if(CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang" AND NOT APPLE AND NOT WIN32)
    set(map ${PROJECT_SOURCE_DIR}/cmake/qxnum-libs.map)
    target_link_options(${target} PRIVATE "LINKER:--version-script=${map}")
    set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${map})
  endif()
  # Installed libraries find each other in their own directory, wherever the prefix is.
  set_target_properties(${target} PROPERTIES INSTALL_RPATH "$ORIGIN")
  target_include_directories(${target} PUBLIC
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
    $<BUILD_INTERFACE:${PROJECT_BINARY_DIR}/include>
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
  install(TARGETS ${target} EXPORT QXNumCtrls${component}Targets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  install(EXPORT QXNumCtrls${component}Targets NAMESPACE QXNumCtrls::
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/QXNumCtrls)
  install(FILES ${PROJECT_BINARY_DIR}/include/qxnum/${export_file}
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/qxnum)
endfunction()

# Installed programs find the libraries in ../lib (or wherever CMAKE_INSTALL_LIBDIR points).
function(qxnum_program_setup target)
  file(RELATIVE_PATH rel ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
  set_target_properties(${target} PROPERTIES INSTALL_RPATH "$ORIGIN/${rel}")
  install(TARGETS ${target} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endfunction()
