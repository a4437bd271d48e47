# Configures and builds examples/ against the installed package in PREFIX, then runs each example
# with --check, offscreen and without LD_LIBRARY_PATH. Called by ctest with
#   -DPREFIX=... -DSOURCE_DIR=... -DWORK_DIR=... -DCXX_COMPILER=... [-DCXX_LAUNCHER=...]
file(REMOVE_RECURSE ${WORK_DIR})

include(${CMAKE_CURRENT_LIST_DIR}/run.cmake)

set(args -G Ninja -DCMAKE_PREFIX_PATH=${PREFIX} -DCMAKE_CXX_COMPILER=${CXX_COMPILER})
if(CXX_LAUNCHER)
  list(APPEND args -DCMAKE_CXX_COMPILER_LAUNCHER=${CXX_LAUNCHER})
endif()
run("configuring the examples" ${CMAKE_COMMAND} -S ${SOURCE_DIR} -B ${WORK_DIR} ${args})
run("building the examples" ${CMAKE_COMMAND} --build ${WORK_DIR})
foreach(example pressure formxml gridpaste)
  run_bare("example ${example}" ${WORK_DIR}/example_${example} --check)
endforeach()
