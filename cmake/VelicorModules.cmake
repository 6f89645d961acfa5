# How modules and their tests are declared.
#
# velicor_module(NAME floor  SOURCES …  [PUBLIC …] [PRIVATE …])
#   One static library. `floor` is the module's storey: a module may only link modules of a lower storey,
#   so an arrow that points up (or sideways) ends the configuration. PUBLIC and PRIVATE take modules and
#   outside libraries alike.
#
# velicor_test(NAME  SOURCES …  LINK …  [DISPLAY] [TIMEOUT seconds])
#   One GoogleTest program, each case a CTest test. DISPLAY: it starts private X servers. TIMEOUT: for a case that takes
#   more than two minutes in its long form.

add_library(velicor_flags INTERFACE)
target_compile_options(velicor_flags INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion
  -Wnon-virtual-dtor -Woverloaded-virtual -Wold-style-cast -Wcast-align -Wnull-dereference -Werror
  -fno-omit-frame-pointer)
# The same arithmetic on every device and build: no fused multiply-add behind the source's back.
target_compile_options(velicor_flags INTERFACE -ffp-contract=off)
# g++ 12 reports null dereferences and uninitialised members inside inlined library code, most of all with
# sanitizers on.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  target_compile_options(velicor_flags INTERFACE -Wno-null-dereference -Wno-maybe-uninitialized)
endif()
if(VELICOR_SANITIZE)
  target_compile_options(velicor_flags INTERFACE -fsanitize=${VELICOR_SANITIZE} -fno-sanitize-recover=all)
  target_link_options(velicor_flags INTERFACE -fsanitize=${VELICOR_SANITIZE})
endif()

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
  # Only the modules: optimising the tests themselves would double their time in the compiler.
  if(VELICOR_SANITIZE)
    target_compile_options(${name} PRIVATE -O1)
  endif()
endfunction()

function(velicor_test name)
  cmake_parse_arguments(arg "DISPLAY" "TIMEOUT" "SOURCES;LINK" ${ARGN})
  add_executable(${name} ${arg_SOURCES})
  target_include_directories(${name} PRIVATE ${CMAKE_SOURCE_DIR}/tests)
  target_link_libraries(${name} PRIVATE velicor_flags velicor_test_main ${arg_LINK})
  set(labels floor)
  if(arg_DISPLAY)
    set(labels display)
  endif()
  if(NOT arg_TIMEOUT)
    set(arg_TIMEOUT 120)
  endif()
  # What compares large pictures takes most of its time in the sanitizer.
  if(VELICOR_SANITIZE STREQUAL "thread")
    math(EXPR arg_TIMEOUT "${arg_TIMEOUT} * 5")
  endif()
  gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST PROPERTIES LABELS ${labels} TIMEOUT ${arg_TIMEOUT})
endfunction()
