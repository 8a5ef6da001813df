# What `cmake --install` lays down: the library, its headers, the CMake package and the pkg-config file. None of it
# holds an absolute path, so that the whole may be moved afterwards.
include(CMakePackageConfigHelpers)

set(nuPackageDir ${CMAKE_INSTALL_LIBDIR}/cmake/Nu)
set(nuPkgConfigDir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

install(TARGETS nu EXPORT NuTargets
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT Nu_Runtime
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT Nu_Runtime NAMELINK_COMPONENT Nu_Development
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT Nu_Development
  FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT Nu_Development)
install(EXPORT NuTargets NAMESPACE Nu:: DESTINATION ${nuPackageDir} COMPONENT Nu_Development)

configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/NuConfig.cmake.in ${PROJECT_BINARY_DIR}/NuConfig.cmake
  INSTALL_DESTINATION ${nuPackageDir} NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/NuConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/NuConfig.cmake ${PROJECT_BINARY_DIR}/NuConfigVersion.cmake
  DESTINATION ${nuPackageDir} COMPONENT Nu_Development)

# pkg-config expands pcfiledir to the place where it found the file; absolute directories, asked for by the user, stay.
function(nu_pkg_config_dir result dir)
  if(IS_ABSOLUTE ${dir})
    set(${result} ${dir} PARENT_SCOPE)
  else()
    set(${result} "\${prefix}/${dir}" PARENT_SCOPE)
  endif()
endfunction()
if(IS_ABSOLUTE ${CMAKE_INSTALL_LIBDIR})
  set(nuPkgConfigPrefix ${CMAKE_INSTALL_PREFIX})
else()
  file(RELATIVE_PATH nuUp /${nuPkgConfigDir} /)
  string(REGEX REPLACE "/$" "" nuUp ${nuUp})
  set(nuPkgConfigPrefix "\${pcfiledir}/${nuUp}")
endif()
nu_pkg_config_dir(nuPkgConfigLibDir ${CMAKE_INSTALL_LIBDIR})
nu_pkg_config_dir(nuPkgConfigIncludeDir ${CMAKE_INSTALL_INCLUDEDIR})

# A static library brings what a linker run by another language's compiler would not add by itself.
set(nuPkgConfigLibsPrivate ${CMAKE_CXX_IMPLICIT_LINK_LIBRARIES})
list(FILTER nuPkgConfigLibsPrivate INCLUDE REGEX "^(stdc\\+\\+|c\\+\\+|m)$")
list(REMOVE_DUPLICATES nuPkgConfigLibsPrivate)
list(TRANSFORM nuPkgConfigLibsPrivate PREPEND -l)
list(JOIN nuPkgConfigLibsPrivate " " nuPkgConfigLibsPrivate)
set(nuPkgConfigDefinitions "")
if(NOT BUILD_SHARED_LIBS)
  set(nuPkgConfigDefinitions " -DNU_STATIC")
endif()
configure_file(${CMAKE_CURRENT_LIST_DIR}/nu.pc.in ${PROJECT_BINARY_DIR}/nu.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/nu.pc DESTINATION ${nuPkgConfigDir} COMPONENT Nu_Development)
