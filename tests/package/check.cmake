# Installs the build into a scratch prefix, then configures, builds and runs two host projects
# against it: a Core-only one and a widgets one. Called by ctest with
#   -DBUILD_DIR=... -DSOURCE_DIR=... -DWORK_DIR=... -DCXX_COMPILER=... [-DCXX_LAUNCHER=...]
# Every program runs without LD_LIBRARY_PATH: the installed run paths must suffice.
file(REMOVE_RECURSE ${WORK_DIR})
set(prefix ${WORK_DIR}/prefix)

include(${CMAKE_CURRENT_LIST_DIR}/run.cmake)

run("install" ${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix})

set(consumer_args -G Ninja -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_CXX_COMPILER=${CXX_COMPILER})
if(CXX_LAUNCHER)
  list(APPEND consumer_args -DCMAKE_CXX_COMPILER_LAUNCHER=${CXX_LAUNCHER})
endif()
# A REQUIRED lookup of a disabled package is an error, so these make the configure step fail if the
# Core component asks for Qt Gui or Widgets, pugixml or muparser.
set(not_for_core -DCMAKE_DISABLE_FIND_PACKAGE_Qt6Gui=ON -DCMAKE_DISABLE_FIND_PACKAGE_Qt6Widgets=ON
    -DCMAKE_DISABLE_FIND_PACKAGE_pugixml=ON -DCMAKE_DISABLE_FIND_PACKAGE_muparser=ON)

run("configuring the Core consumer" ${CMAKE_COMMAND} -S ${SOURCE_DIR}/core -B ${WORK_DIR}/core
    ${consumer_args} ${not_for_core})
run("building the Core consumer" ${CMAKE_COMMAND} --build ${WORK_DIR}/core)
run_bare("the Core consumer" ${WORK_DIR}/core/consumer_core)

# The same switches must stop a host that asks for the widgets, or the check above proves nothing.
execute_process(COMMAND ${CMAKE_COMMAND} -S ${SOURCE_DIR}/widgets -B ${WORK_DIR}/widgets-disabled
                ${consumer_args} ${not_for_core} RESULT_VARIABLE rc OUTPUT_QUIET ERROR_QUIET)
if(NOT rc)
  message(FATAL_ERROR "the widgets consumer configured with Qt Widgets disabled")
endif()

run("configuring the widgets consumer" ${CMAKE_COMMAND} -S ${SOURCE_DIR}/widgets -B ${WORK_DIR}/widgets
    ${consumer_args})
run("building the widgets consumer" ${CMAKE_COMMAND} --build ${WORK_DIR}/widgets)
run_bare("the widgets consumer" ${WORK_DIR}/widgets/consumer_widgets)

# Installed binaries carry only run paths relative to themselves, never one into the build tree.
find_program(READELF readelf)
if(READELF)
  file(GLOB_RECURSE plugins ${prefix}/*/libqxnumdesigner.so)
  file(GLOB installed ${prefix}/lib*/libqxnum*.so.* ${prefix}/lib*/*/libqxnum*.so.* ${prefix}/bin/*)
  list(APPEND installed ${plugins})
  foreach(f IN LISTS installed)
    if(IS_SYMLINK ${f})
      continue()
    endif()
    execute_process(COMMAND ${READELF} -d ${f} OUTPUT_VARIABLE dyn)
    if(NOT dyn MATCHES "(RUNPATH|RPATH)[^\n]*\\[\\$ORIGIN[^\n]*\\]" OR dyn MATCHES "${BUILD_DIR}")
      message(FATAL_ERROR "${f}: run path not relative to \$ORIGIN:\n${dyn}")
    endif()
  endforeach()
endif()

if(EXISTS ${prefix}/bin/qxnum_demo)
  run_bare("the installed demo" ${prefix}/bin/qxnum_demo --screenshot ${WORK_DIR}/demo.png)
endif()
