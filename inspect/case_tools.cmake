# What the scripts of cases share: they run PROGRAM, by EMULATOR if there is one, in the directories SCRATCH, for cases
# that every platform sees alike, and `own`, for the rest.
cmake_minimum_required(VERSION 3.25)
set(own ${SCRATCH}-native)
file(REMOVE_RECURSE ${SCRATCH} ${own})
file(MAKE_DIRECTORY ${SCRATCH} ${own})
set(failures 0)

# run(DIRECTORY CODE PATTERN ARGUMENTS...): the exit code, and what the output must match; `input`, if set, is a file for
# standard input.
function(run directory code pattern)
  if(input)
    set(redirection INPUT_FILE ${directory}/${input})
  endif()
  execute_process(COMMAND ${EMULATOR} ${PROGRAM} ${ARGN} WORKING_DIRECTORY ${directory} ${redirection}
    RESULT_VARIABLE actual OUTPUT_VARIABLE output ERROR_VARIABLE output TIMEOUT 60)
  if(NOT actual STREQUAL code OR NOT output MATCHES "${pattern}")
    message("inspect ${ARGN}\n  exit code ${actual}, expected ${code}; expected to match: ${pattern}\n${output}")
    math(EXPR failures "${failures} + 1")
    set(failures ${failures} PARENT_SCOPE)
  endif()
endfunction()

# On every platform, with files that are the same on each.
macro(expect_everywhere)
  run(${SCRATCH} ${ARGN})
endmacro()

macro(expect)
  if(NOT EMULATOR)
    run(${own} ${ARGN})
  endif()
endmacro()

# finish(): fails if a case did, or if a file was left half-written.
macro(finish)
  file(GLOB left ${SCRATCH}/*.part ${own}/*.part ${own}/a)
  if(failures OR left)
    message(FATAL_ERROR "${failures} cases failed; left behind: '${left}'")
  endif()
endmacro()
