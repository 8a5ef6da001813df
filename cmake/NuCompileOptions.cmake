# What every source of this repository is compiled with. Nothing here reaches a consumer.

# Rounding is pinned: the same input gives the same bits with every compiler and at every level.
add_library(nu_rounding INTERFACE)
if(CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang")
  # SHELL keeps the order: -fno-fast-math turns errno back on, and with it square roots would stay scalar.
  target_compile_options(nu_rounding INTERFACE -ffp-contract=off "SHELL:-fno-fast-math -fno-math-errno")
  if(CMAKE_SIZEOF_VOID_P EQUAL 4 AND CMAKE_SYSTEM_PROCESSOR MATCHES "86" AND NOT EMSCRIPTEN)
    target_compile_options(nu_rounding INTERFACE -msse2 -mfpmath=sse)
  endif()
elseif(MSVC)
  target_compile_options(nu_rounding INTERFACE /fp:precise)
endif()

add_library(nu_warnings INTERFACE)
if(CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang")
  target_compile_options(nu_warnings INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wcast-align
    -Wold-style-cast -Woverloaded-virtual -Wconversion -Wno-sign-conversion -Wimplicit-fallthrough)
  if(NU_WARNINGS_AS_ERRORS)
    target_compile_options(nu_warnings INTERFACE -Werror)
  endif()
elseif(MSVC)
  target_compile_options(nu_warnings INTERFACE /W4 $<$<BOOL:${NU_WARNINGS_AS_ERRORS}>:/WX>)
endif()

add_library(nu_sanitize INTERFACE)
if(NU_SANITIZE)
  target_compile_options(nu_sanitize INTERFACE -fsanitize=${NU_SANITIZE} -fno-sanitize-recover=all
    -fno-omit-frame-pointer)
  target_link_options(nu_sanitize INTERFACE -fsanitize=${NU_SANITIZE})
  # Load-time selection of kernels runs before a sanitizer is ready.
  target_compile_definitions(nu_sanitize INTERFACE NU_NO_KERNEL_CLONES)
endif()

function(nu_own_target target)
  target_compile_features(${target} PRIVATE cxx_std_20)
  set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF)
  target_link_libraries(${target} PRIVATE $<BUILD_INTERFACE:nu_rounding> $<BUILD_INTERFACE:nu_warnings>
    $<BUILD_INTERFACE:nu_sanitize>)
endfunction()
