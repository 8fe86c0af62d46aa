# The libraries are made of modules: one object target an idea, named
# <layer>_<idea>, whose DEPENDS are the modules it may include. The two libraries
# are the sums of their modules, each once as a shared library (what is installed,
# and what programs link) and once as an archive (what unit tests, fuzzers and
# benchmarks link, so that they reach what is hidden).

function(_module layer name)
  cmake_parse_arguments(M "" "" "SOURCES;DEPENDS;LIBRARIES" ${ARGN})
  set(target ${layer}_${name})
  add_library(${target} OBJECT ${M_SOURCES})
  target_include_directories(${target} PUBLIC
    ${${layer}_PUBLIC_INCLUDE} ${${layer}_PRIVATE_INCLUDE})
  target_link_libraries(${target}
    PUBLIC project_flags ${${layer}_BENEATH} ${M_DEPENDS} PRIVATE ${M_LIBRARIES})
  target_compile_definitions(${target} PRIVATE ${layer}_BUILDING)
  set_property(GLOBAL APPEND PROPERTY ${layer}_MODULES ${target})
  set_property(GLOBAL APPEND PROPERTY ${layer}_LIBRARIES ${M_LIBRARIES})
  string(JOIN " " edges ${${layer}_BENEATH} ${M_DEPENDS})
  string(JOIN " " files ${M_SOURCES})
  file(RELATIVE_PATH folder ${PROJECT_SOURCE_DIR} ${CMAKE_CURRENT_SOURCE_DIR})
  set_property(GLOBAL APPEND PROPERTY TARGET_GRAPH
    "${target} | ${folder} | ${files} | ${edges}")
endfunction()

# kelp_module(log SOURCES a.cpp DEPENDS kelp_secure LIBRARIES spdlog::spdlog)
function(kelp_module)
  _module(kelp ${ARGN})
endfunction()

# frameutil_module(paraset_tree SOURCES a.cpp DEPENDS frameutil_log_trace)
function(frameutil_module)
  _module(frameutil ${ARGN})
endfunction()

# Sums a layer's modules up as ${library} (shared) and ${library}_static.
function(link_layer layer library)
  cmake_parse_arguments(L "" "SOVERSION" "PUBLIC_LINKS" ${ARGN})
  get_property(modules GLOBAL PROPERTY ${layer}_MODULES)
  get_property(libraries GLOBAL PROPERTY ${layer}_LIBRARIES)
  list(REMOVE_DUPLICATES libraries)
  set(objects)
  foreach(module IN LISTS modules)
    list(APPEND objects $<TARGET_OBJECTS:${module}>)
  endforeach()

  add_library(${library} SHARED ${objects})
  add_library(${library}::${library} ALIAS ${library})
  add_library(${library}_static STATIC ${objects})
  set_target_properties(${library} PROPERTIES
    VERSION ${PROJECT_VERSION} SOVERSION ${L_SOVERSION})
  foreach(target ${library} ${library}_static)
    target_include_directories(${target} PUBLIC
      $<BUILD_INTERFACE:${${layer}_PUBLIC_INCLUDE}>
      $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
    target_link_libraries(${target} PRIVATE ${libraries} $<BUILD_INTERFACE:project_flags>)
  endforeach()
  target_include_directories(${library}_static PUBLIC ${${layer}_PRIVATE_INCLUDE})
  target_link_libraries(${library} PUBLIC ${L_PUBLIC_LINKS})
  foreach(link IN LISTS L_PUBLIC_LINKS)
    string(REGEX REPLACE "^.*::" "" plain ${link})
    if(TARGET ${plain}_static)
      target_link_libraries(${library}_static PUBLIC ${plain}_static)
    else()
      target_link_libraries(${library}_static PUBLIC ${link})
    endif()
  endforeach()
endfunction()

# Writes a line a module, "target | folder | sources | dependencies", for the test that
# guards the layering.
function(write_target_graph file)
  get_property(lines GLOBAL PROPERTY TARGET_GRAPH)
  list(JOIN lines "\n" text)
  file(WRITE ${file} "${text}\n")
endfunction()
