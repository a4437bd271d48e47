# Configures and builds examples/ against the installed package in PREFIX, then runs each example
# with --check, offscreen and without LD_LIBRARY_PATH. Called by ctest with
#   -DPREFIX=... -DSOURCE_DIR=... -DWORK_DIR=... -DCXX_COMPILER=... [-DCXX_LAUNCHER=...]
file(REMOVE_RECURSE ${WORK_DIR})

function(run what)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE out TIMEOUT 240)
  if(rc)
    message(FATAL_ERROR "${what} failed (${rc}):\n${out}")
  endif()
endfunction()

set(args -G Ninja -DCMAKE_PREFIX_PATH=${PREFIX} -DCMAKE_CXX_COMPILER=${CXX_COMPILER})
if(CXX_LAUNCHER)
  list(APPEND args -DCMAKE_CXX_COMPILER_LAUNCHER=${CXX_LAUNCHER})
endif()
run("configuring the examples" ${CMAKE_COMMAND} -S ${SOURCE_DIR} -B ${WORK_DIR} ${args})
run("building the examples" ${CMAKE_COMMAND} --build ${WORK_DIR})
foreach(example pressure formxml gridpaste)
  run("example ${example}" ${CMAKE_COMMAND} -E env --unset=LD_LIBRARY_PATH QT_QPA_PLATFORM=offscreen
      ${WORK_DIR}/example_${example} --check)
endforeach()
