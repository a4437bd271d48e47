# run(WHAT COMMAND...): runs a command of the package checks and fails with its output. The wait is
# bounded: a program stuck in a modal dialog fails here instead of at the test's timeout.
function(run what)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE out TIMEOUT 240)
  if(rc)
    message(FATAL_ERROR "${what} failed (${rc}):\n${out}")
  endif()
endfunction()

# run_bare(WHAT PROGRAM ARGS...): a program as a host starts it, offscreen and without the help of
# LD_LIBRARY_PATH: the installed run paths must suffice.
function(run_bare what)
  run("${what}" ${CMAKE_COMMAND} -E env --unset=LD_LIBRARY_PATH QT_QPA_PLATFORM=offscreen ${ARGN})
endfunction()
