# What every target of this project is compiled with. It hangs on one interface
# target, so a folder's list never names a flag.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(THREADS_PREFER_PTHREAD_FLAG ON)
if(NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE RelWithDebInfo)
endif()

find_program(CCACHE ccache)
if(CCACHE)
  # Paths below this folder count as relative: another checkout finds what this one compiled.
  set(cached env CCACHE_BASEDIR=${PROJECT_SOURCE_DIR} CCACHE_NOHASHDIR=1 ${CCACHE})
  set(CMAKE_CXX_COMPILER_LAUNCHER ${cached})
  set(CMAKE_C_COMPILER_LAUNCHER ${cached})
endif()

find_package(Threads REQUIRED)

add_library(project_flags INTERFACE)
target_compile_options(project_flags INTERFACE
  $<$<COMPILE_LANGUAGE:CXX>:-Wall -Wextra -Wpedantic -Werror -Wshadow -Wnon-virtual-dtor
    -Woverloaded-virtual -Wformat=2 -Wcast-qual -Wimplicit-fallthrough -Wunused>
  $<$<AND:$<COMPILE_LANGUAGE:CXX>,$<CXX_COMPILER_ID:Clang>>:-Wthread-safety>)
target_link_libraries(project_flags INTERFACE Threads::Threads)

if(FRAMEUTIL_SANITIZE)
  target_compile_options(project_flags INTERFACE
    -fsanitize=${FRAMEUTIL_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  target_link_options(project_flags INTERFACE -fsanitize=${FRAMEUTIL_SANITIZE})
endif()
if(FRAMEUTIL_COVERAGE)
  target_compile_options(project_flags INTERFACE --coverage)
  target_link_options(project_flags INTERFACE --coverage)
endif()
