# What `cmake --install` lays out: the libraries, their headers, and what finds them
# (CMake packages and pkg-config files, one of each a library).

include(CMakePackageConfigHelpers)

function(install_library library headers description)
  cmake_parse_arguments(I "" "" "REQUIRES" ${ARGN})
  set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/${library})
  install(TARGETS ${library} EXPORT ${library}Targets
          LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
  install(DIRECTORY ${headers} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
  install(EXPORT ${library}Targets NAMESPACE ${library}:: DESTINATION ${package_dir})

  set(required_packages)
  foreach(package IN LISTS I_REQUIRES)
    string(APPEND required_packages "find_dependency(${package})\n")
  endforeach()
  set(package_name ${library})
  configure_package_config_file(
    ${PROJECT_SOURCE_DIR}/packaging/package-config.cmake.in
    ${CMAKE_BINARY_DIR}/packaging/${library}-config.cmake INSTALL_DESTINATION ${package_dir})
  write_basic_package_version_file(
    ${CMAKE_BINARY_DIR}/packaging/${library}-config-version.cmake COMPATIBILITY SameMinorVersion)
  install(FILES ${CMAKE_BINARY_DIR}/packaging/${library}-config.cmake
                ${CMAKE_BINARY_DIR}/packaging/${library}-config-version.cmake
          DESTINATION ${package_dir})

  string(JOIN " " requires ${I_REQUIRES})
  configure_file(${PROJECT_SOURCE_DIR}/packaging/library.pc.in
                 ${CMAKE_BINARY_DIR}/packaging/${library}.pc @ONLY)
  install(FILES ${CMAKE_BINARY_DIR}/packaging/${library}.pc
          DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endfunction()

if(FRAMEUTIL_PLATFORM STREQUAL "bundled")
  install_library(kelp ${PROJECT_SOURCE_DIR}/kelp/include/kelp
                  "Platform SDK of the network-management platform")
endif()
install_library(frameutil ${PROJECT_SOURCE_DIR}/include/frameutil "${PROJECT_DESCRIPTION}"
                REQUIRES kelp)
