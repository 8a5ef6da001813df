# `cmake --build <dir> --target tidy`: clang-tidy over the library's sources, for a tree configured with clang (g++'s
# warning options mean nothing to clang-tidy). NU_TIDY_FILES narrows it to the files whose path matches.
find_program(NU_RUN_CLANG_TIDY NAMES run-clang-tidy run-clang-tidy-14)
mark_as_advanced(NU_RUN_CLANG_TIDY)
set(NU_TIDY_FILES "/src/nu/.*[.]cpp$" CACHE STRING "Regular expression: the sources that the target tidy checks")
if(NU_RUN_CLANG_TIDY AND CMAKE_CXX_COMPILER_ID MATCHES "Clang")
  add_custom_target(tidy
    COMMAND ${NU_RUN_CLANG_TIDY} -quiet -p ${PROJECT_BINARY_DIR} ${NU_TIDY_FILES}
    WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
    USES_TERMINAL VERBATIM)
endif()
