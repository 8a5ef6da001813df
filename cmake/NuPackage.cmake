# Packages by CPack: Debian packages of the library, of what developers need and of the programs, and one archive of all
# of it for others. packaging/build calls it with the directories and flags of a distribution.
set(CPACK_GENERATOR TXZ)
set(CPACK_PACKAGE_NAME nu)
set(CPACK_PACKAGE_VENDOR "The Nu authors")
set(CPACK_PACKAGE_CONTACT "The Nu authors <nu@localhost.localdomain>" CACHE STRING "Maintainer of the packages")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_PACKAGE_CHECKSUM SHA256)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL Nu_Runtime Nu_Development)
if(TARGET nu-selftest)
  list(APPEND CPACK_COMPONENTS_ALL Nu_Tools)
endif()

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_CURRENT_BINARY_DIR}/src/nu)
set(debianVersion ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})

set(what "Nu fits lines, planes, circles, conics, spheres, cylinders, cones and tori to
measured points, by least squares, as minimum zones, and as circumscribed and
inscribed features, and relates and intersects them. ")
set(library libnu${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_NU_RUNTIME_PACKAGE_NAME ${library})
set(CPACK_DEBIAN_NU_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_COMPONENT_NU_RUNTIME_DESCRIPTION "dimensional metrology - shared library
${what}This package holds the
shared library.")

set(CPACK_DEBIAN_NU_DEVELOPMENT_PACKAGE_NAME libnu-dev)
set(CPACK_DEBIAN_NU_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_NU_DEVELOPMENT_PACKAGE_DEPENDS "${library} (= ${debianVersion})")
set(CPACK_COMPONENT_NU_DEVELOPMENT_DESCRIPTION "dimensional metrology - development files
${what}This package holds the
headers for C++ and C, and the files for CMake and pkg-config.")

set(CPACK_DEBIAN_NU_TOOLS_PACKAGE_NAME nu-tools)
set(CPACK_DEBIAN_NU_TOOLS_PACKAGE_SECTION science)
set(CPACK_DEBIAN_NU_TOOLS_PACKAGE_DEPENDS "${library} (= ${debianVersion})")
set(CPACK_COMPONENT_NU_TOOLS_DESCRIPTION "dimensional metrology - self-test
${what}This package holds
nu-selftest, which judges the library where it is installed.")

# What Debian's policy wants of each package, made by packaging/build.
if(NU_DEBIAN_FILES)
  foreach(component Nu_Runtime Nu_Development Nu_Tools)
    string(TOUPPER ${component} upper)
    install(FILES ${NU_DEBIAN_FILES}/changelog.Debian.gz ${NU_DEBIAN_FILES}/copyright
      DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${CPACK_DEBIAN_${upper}_PACKAGE_NAME} COMPONENT ${component})
  endforeach()
  # As policy wants it: a trigger instead of scripts that call ldconfig, which CPack adds and packaging/build removes.
  set(CPACK_DEBIAN_NU_RUNTIME_PACKAGE_CONTROL_EXTRA ${NU_DEBIAN_FILES}/shlibs ${NU_DEBIAN_FILES}/triggers)
  file(WRITE ${NU_DEBIAN_FILES}/shlibs
    "libnu ${PROJECT_VERSION_MAJOR} ${library} (>= ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})\n")
  file(WRITE ${NU_DEBIAN_FILES}/triggers "activate-noawait ldconfig\n")
  install(FILES ${NU_DEBIAN_FILES}/nu-selftest.1.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT Nu_Tools)
endif()

include(CPack)
