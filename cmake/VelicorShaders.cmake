# How shaders become part of a module.
#
# velicor_shaders(TARGET  SOURCES a.comp b_c.vert …  [INCLUDES folder …])
#   Compiles each GLSL source to SPIR-V and gives the target a header <TARGET>_shaders.h, private to it, with
#   one array a shader in the namespace velicor::shaders, named after its file without the extension:
#     inline constexpr std::uint32_t bC[] = …;
#   The stage is the extension (.comp, .vert, .frag). Sources may #include files from INCLUDES and from src/.

find_program(VELICOR_GLSLC glslc REQUIRED)

function(velicor_camel_case result snake)
  string(REPLACE "_" ";" words ${snake})
  list(POP_FRONT words camel)
  foreach(word IN LISTS words)
    string(SUBSTRING ${word} 0 1 initial)
    string(SUBSTRING ${word} 1 -1 rest)
    string(TOUPPER ${initial} initial)
    string(APPEND camel ${initial}${rest})
  endforeach()
  set(${result} ${camel} PARENT_SCOPE)
endfunction()

function(velicor_shaders target)
  cmake_parse_arguments(arg "" "" "SOURCES;INCLUDES" ${ARGN})
  set(folder ${CMAKE_CURRENT_BINARY_DIR}/${target}_shaders)
  set(header "#pragma once\n\n#include <cstdint>\n\nnamespace velicor::shaders {\n\n")
  set(include_flags -I${CMAKE_SOURCE_DIR}/src)
  set(warnings $<$<BOOL:${CMAKE_COMPILE_WARNING_AS_ERROR}>:-Werror>)
  foreach(include IN LISTS arg_INCLUDES)
    cmake_path(ABSOLUTE_PATH include NORMALIZE)
    list(APPEND include_flags -I${include})
  endforeach()
  foreach(source IN LISTS arg_SOURCES)
    cmake_path(ABSOLUTE_PATH source NORMALIZE)
    cmake_path(GET source FILENAME file)
    cmake_path(GET source STEM stem)
    velicor_camel_case(name ${stem})
    set(words ${folder}/${file}.inc)
    add_custom_command(OUTPUT ${words}
      COMMAND ${VELICOR_GLSLC} --target-env=vulkan1.2 -O ${warnings} ${include_flags} -MD -MF ${words}.d -mfmt=c
              -o ${words} ${source}
      DEPENDS ${source} DEPFILE ${words}.d
      COMMENT "Compiling shader ${file}" COMMAND_EXPAND_LISTS VERBATIM)
    target_sources(${target} PRIVATE ${words})
    string(APPEND header "inline constexpr std::uint32_t ${name}[] =\n#include \"${file}.inc\"\n    ;\n")
  endforeach()
  string(APPEND header "\n}  // namespace velicor::shaders\n")
  file(CONFIGURE OUTPUT ${folder}/${target}_shaders.h CONTENT "${header}" @ONLY)
  target_include_directories(${target} PRIVATE ${folder})
endfunction()
