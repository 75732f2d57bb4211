# A second compiler's opinion: glazel_clang_check(target) has clang read the C++ sources of `target`
# for the same Windows target, with its definitions and our warnings as errors, whenever they change.
# It makes no code. It uses no precompiled headers, and reads as many files at once as the compiler
# does. Does nothing in native builds and where there is no clang.
find_program(GLAZEL_CLANGXX NAMES clang++)

# clang is to read the cross compiler's headers and nothing of this machine's. The compiler's own
# folders stay out: they hold intrinsics that only it understands, and clang brings its own.
if(WIN32 AND GLAZEL_CLANGXX AND NOT DEFINED glazel_clang_includes)
  execute_process(
    COMMAND ${CMAKE_CXX_COMPILER} -E -v -x c++ -
    INPUT_FILE /dev/null OUTPUT_QUIET ERROR_VARIABLE verbose)
  string(REGEX REPLACE "^.*#include <[^\n]*\n(.*)End of search list.*$" "\\1" folders "${verbose}")
  string(REGEX REPLACE "[ \n]+" ";" folders "${folders}")
  set(glazel_clang_includes)
  foreach(folder IN LISTS folders)
    if(folder MATCHES "/c\\+\\+" OR folder MATCHES "/x86_64-w64-mingw32/include$")
      list(APPEND glazel_clang_includes -isystem ${folder})
    endif()
  endforeach()
endif()

function(glazel_clang_check target)
  if(NOT WIN32 OR NOT GLAZEL_CLANGXX)
    return()
  endif()
  get_target_property(sources ${target} SOURCES)
  get_target_property(folder ${target} SOURCE_DIR)
  # Only our own headers are held to our warnings.
  set(others "$<FILTER:$<TARGET_PROPERTY:${target},INCLUDE_DIRECTORIES>,EXCLUDE,^${PROJECT_SOURCE_DIR}$>")
  set(definitions "$<TARGET_PROPERTY:${target},COMPILE_DEFINITIONS>")
  set(units)
  set(read 0)
  foreach(source IN LISTS sources)
    if(NOT source MATCHES "\\.cpp$")
      continue()
    endif()
    get_filename_component(path ${source} ABSOLUTE BASE_DIR ${folder})
    get_filename_component(name ${source} NAME_WE)
    get_source_file_property(unit ${path} TARGET_DIRECTORY ${target} UNITY_GROUP)
    get_source_file_property(own_options ${path} TARGET_DIRECTORY ${target} COMPILE_OPTIONS)
    if(own_options OR NOT GLAZEL_UNITY)
      set(unit ${name})
    elseif(NOT unit)
      math(EXPR unit "${read} / 8")
      math(EXPR read "${read} + 1")
    endif()
    list(APPEND units ${unit})
    string(APPEND unit_${unit} "#include \"${path}\"\n")
  endforeach()
  list(REMOVE_DUPLICATES units)
  set(stamps)
  foreach(unit IN LISTS units)
    set(path ${CMAKE_BINARY_DIR}/clang/${target}/${unit}.cpp)
    file(CONFIGURE OUTPUT ${path} CONTENT "${unit_${unit}}" @ONLY)
    set(stamp ${path}.ok)
    add_custom_command(OUTPUT ${stamp}
      COMMAND ${GLAZEL_CLANGXX} --target=x86_64-w64-windows-gnu -std=c++20 -fsyntax-only
        -nostdlibinc -I${PROJECT_SOURCE_DIR}
        "$<$<BOOL:${others}>:-isystem$<JOIN:${others},;-isystem>>" ${glazel_clang_includes}
        "$<$<BOOL:${definitions}>:-D$<JOIN:${definitions},;-D>>"
        "$<TARGET_PROPERTY:glazel_options,INTERFACE_COMPILE_OPTIONS>"
        -MD -MF ${stamp}.d -MT ${stamp} ${path}
      COMMAND ${CMAKE_COMMAND} -E touch ${stamp}
      DEPENDS ${path}
      DEPFILE ${stamp}.d
      COMMENT "clang reads ${target}"
      COMMAND_EXPAND_LISTS VERBATIM)
    list(APPEND stamps ${stamp})
  endforeach()
  add_custom_target(clang_check_${target} ALL DEPENDS ${stamps})
endfunction()
