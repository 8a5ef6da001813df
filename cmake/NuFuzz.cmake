# Each fuzz target is a libFuzzer entry point. Built with NU_FUZZ_WITH_CLANG it searches by coverage; else a driver feeds
# it the files of its corpus and a fixed number of inputs made from a seed, as a test.
option(NU_FUZZ_WITH_CLANG "Build the fuzz targets for libFuzzer (clang)" OFF)
set(NU_FUZZ_EFFORT 1 CACHE STRING "Factor on the number of inputs that the tests feed each fuzz target")
set(nuFuzzFolder ${CMAKE_CURRENT_LIST_DIR}/../fuzz)
add_custom_target(fuzz)

# nu_fuzz_code(LIBRARY): the search sees which parts of its code an input reaches.
function(nu_fuzz_code library)
  if(NU_FUZZ_WITH_CLANG)
    target_compile_options(${library} PRIVATE -fsanitize=fuzzer-no-link)
  endif()
endfunction()

# nu_fuzz(name COUNT N LIBRARY library [SOURCES ...] [CORPUS ...] [NATIVE]): N inputs take a second or two. The corpus
# is the folder of fuzz/corpus with this name and the files given here. NATIVE: not as a test under an emulator.
function(nu_fuzz name)
  cmake_parse_arguments(arg NATIVE "COUNT;LIBRARY" "SOURCES;CORPUS" ${ARGN})
  add_executable(${name} ${name}.cpp ${arg_SOURCES})
  nu_own_target(${name})
  target_link_libraries(${name} PRIVATE ${arg_LIBRARY})
  target_include_directories(${name} PRIVATE ${nuFuzzFolder} ${Nu_SOURCE_DIR}/tests)
  add_dependencies(fuzz ${name})
  if(NU_FUZZ_WITH_CLANG)
    target_compile_options(${name} PRIVATE -fsanitize=fuzzer)
    target_link_options(${name} PRIVATE -fsanitize=fuzzer)
    return()
  endif()
  target_sources(${name} PRIVATE ${nuFuzzFolder}/driver.cpp)
  if(EXISTS ${nuFuzzFolder}/corpus/${name})
    list(APPEND arg_CORPUS ${nuFuzzFolder}/corpus/${name})
  endif()
  math(EXPR count "${arg_COUNT} * ${NU_FUZZ_EFFORT}")
  if(NOT (arg_NATIVE AND CMAKE_CROSSCOMPILING))
    add_test(NAME fuzz.${name} COMMAND ${name} --count ${count} ${arg_CORPUS})
  endif()
endfunction()
