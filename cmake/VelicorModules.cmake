# How modules and their tests are declared.
#
# velicor_module(NAME floor  SOURCES …  [PUBLIC …] [PRIVATE …])
#   One static library. `floor` is the module's storey: a module may only link modules of a lower storey,
#   so an arrow that points up (or sideways) ends the configuration. PUBLIC and PRIVATE take modules and
#   outside libraries alike.
#
# velicor_test(NAME  SOURCES …  LINK …  [DISPLAY] [TIMEOUT seconds])
#   One GoogleTest program, each case a CTest test. DISPLAY: it starts private X servers. TIMEOUT: for a case that takes
#   more than ten minutes in its long form, on a machine that does much else.

add_library(velicor_flags INTERFACE)
target_compile_options(velicor_flags INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion
  -Wnon-virtual-dtor -Woverloaded-virtual -Wold-style-cast -Wcast-align -Wnull-dereference
  -fno-omit-frame-pointer)
# The same arithmetic on every device and build: no fused multiply-add behind the source's back.
target_compile_options(velicor_flags INTERFACE -ffp-contract=off)
# The toolkit's keywords are names of ours too.
target_compile_definitions(velicor_flags INTERFACE QT_NO_KEYWORDS)
# g++ 12 reports null dereferences and uninitialised members inside inlined library code, most of all with
# sanitizers on.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  target_compile_options(velicor_flags INTERFACE -Wno-null-dereference -Wno-maybe-uninitialized)
endif()
# Renames a field that C's headers call by one of C++'s keywords; see platform/hotkeys/xkb_protocol.h.
# What is deprecated g++ reports: clang 19 does so inside libstdc++ 12 too.
if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
  target_compile_options(velicor_flags INTERFACE -Wno-keyword-macro -Wno-deprecated-declarations)
endif()
# What another source of the same unit declares is not in the way of this one. g++ takes all sources of a unit for
# headers, where types without linkage would be a fault.
if(CMAKE_UNITY_BUILD)
  target_compile_options(velicor_flags INTERFACE -Wno-shadow $<$<CXX_COMPILER_ID:GNU>:-Wno-subobject-linkage>)
endif()
if(VELICOR_SANITIZE)
  target_compile_options(velicor_flags INTERFACE -fsanitize=${VELICOR_SANITIZE} -fno-sanitize-recover=all)
  target_link_options(velicor_flags INTERFACE -fsanitize=${VELICOR_SANITIZE})
else()
  include(VelicorHardening)
endif()

# Most of a compilation is reading the toolkit's and the standard library's headers. With this option they are read
# once for the modules and once for the tests. That hides a header which a source forgets, as units do.
option(VELICOR_PRECOMPILED_HEADERS "Read the commonest headers once: faster builds" OFF)
if(VELICOR_PRECOMPILED_HEADERS)
  # What is read once holds where these are the same.
  target_compile_options(velicor_flags INTERFACE -pthread)
  target_compile_definitions(velicor_flags INTERFACE QT_CORE_LIB QT_GUI_LIB QT_WIDGETS_LIB)
  # Else each source would ask for the toolkit's version, those too that are linked without the toolkit.
  target_compile_definitions(velicor_flags INTERFACE QT_NO_VERSION_TAGGING)
  set(CMAKE_POSITION_INDEPENDENT_CODE ON)
endif()

function(velicor_common_headers name)
  file(CONFIGURE OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/${name}.cpp CONTENT "")
  add_library(${name} STATIC EXCLUDE_FROM_ALL ${CMAKE_CURRENT_BINARY_DIR}/${name}.cpp)
  target_link_libraries(${name} PRIVATE velicor_flags Qt6::Widgets QCoro6::Core)
  target_precompile_headers(${name} PRIVATE <algorithm> <array> <chrono> <cmath> <cstdint> <functional> <map>
    <memory> <mutex> <optional> <string> <string_view> <thread> <utility> <vector> <QCoroTask> <QApplication>
    <QBoxLayout> <QImage> <QPainter> <QString> <QWidget> ${ARGN})
endfunction()

function(velicor_use_headers target name)
  if(VELICOR_PRECOMPILED_HEADERS)
    target_precompile_headers(${target} REUSE_FROM ${name})
    # Programs otherwise get -fPIE, with which g++ 14 refuses what was read with -fPIC.
    get_target_property(type ${target} TYPE)
    if(type STREQUAL EXECUTABLE)
      target_compile_options(${target} PRIVATE -fPIC)
    endif()
  endif()
endfunction()

# Only the modules are optimised under sanitizers: doing so with the tests themselves would double their time in the
# compiler.
function(velicor_optimise_module name)
  if(VELICOR_SANITIZE)
    target_compile_options(${name} PRIVATE -O1)
  endif()
endfunction()

function(velicor_check_floors name floor)
  foreach(dependency IN LISTS ARGN)
    if(TARGET ${dependency})
      get_target_property(below ${dependency} VELICOR_FLOOR)
      if(NOT below STREQUAL "below-NOTFOUND" AND NOT below LESS floor)
        message(FATAL_ERROR "${name} (floor ${floor}) may not use ${dependency} (floor ${below})")
      endif()
    endif()
  endforeach()
endfunction()

function(velicor_module name floor)
  cmake_parse_arguments(arg "" "" "SOURCES;PUBLIC;PRIVATE" ${ARGN})
  velicor_check_floors(${name} ${floor} ${arg_PUBLIC} ${arg_PRIVATE})
  add_library(${name} STATIC ${arg_SOURCES})
  set_target_properties(${name} PROPERTIES VELICOR_FLOOR ${floor})
  target_include_directories(${name} PUBLIC ${CMAKE_SOURCE_DIR}/src)
  target_link_libraries(${name} PUBLIC ${arg_PUBLIC} PRIVATE velicor_flags ${arg_PRIVATE})
  velicor_optimise_module(${name})
  velicor_use_headers(${name} velicor_module_headers)
endfunction()

function(velicor_test name)
  cmake_parse_arguments(arg "DISPLAY" "TIMEOUT" "SOURCES;LINK" ${ARGN})
  add_executable(${name} ${arg_SOURCES})
  target_include_directories(${name} PRIVATE ${CMAKE_SOURCE_DIR}/tests)
  target_link_libraries(${name} PRIVATE velicor_flags velicor_test_main ${arg_LINK})
  velicor_use_headers(${name} velicor_test_headers)
  set(labels floor)
  if(arg_DISPLAY)
    set(labels display)
  endif()
  if(NOT arg_TIMEOUT)
    set(arg_TIMEOUT 600)
  endif()
  # What compares large pictures takes most of its time in the sanitizer.
  if(VELICOR_SANITIZE STREQUAL "thread")
    math(EXPR arg_TIMEOUT "${arg_TIMEOUT} * 5")
  endif()
  # A busy machine takes long to start a program that only lists its tests, and such a one is no failure.
  gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60
    PROPERTIES LABELS ${labels} TIMEOUT ${arg_TIMEOUT})
endfunction()
