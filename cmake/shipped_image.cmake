# glazel_ship(target): makes a release build of a program or DLL fit to be handed out. Its symbols go
# to symbols/<file>.debug, which a debugger finds through the link left in the stripped file.
function(glazel_ship target)
  if(NOT WIN32 OR NOT CMAKE_BUILD_TYPE STREQUAL Release)
    return()
  endif()
  set(folder ${CMAKE_BINARY_DIR}/symbols)
  set(symbols ${folder}/$<TARGET_FILE_NAME:${target}>.debug)
  # -p keeps the time in the header, which the linker leaves 0; without it the copy gets today's.
  add_custom_command(TARGET ${target} POST_BUILD
    COMMAND ${CMAKE_COMMAND} -E make_directory ${folder}
    COMMAND ${CMAKE_OBJCOPY} -p --only-keep-debug $<TARGET_FILE:${target}> ${symbols}
    COMMAND ${CMAKE_OBJCOPY} -p --strip-all --add-gnu-debuglink=${symbols} $<TARGET_FILE:${target}>
    VERBATIM)
endfunction()

# glazel_optimise(target level): for code of the plug-in that a frame does not wait for. What copies
# pixels stays at the preset's own level.
function(glazel_optimise target level)
  target_compile_options(${target} PRIVATE $<$<CONFIG:Release>:${level}>)
endfunction()

# glazel_version_info(target file description): what the system shows of a file's origin, for images
# that have no resources of their own.
function(glazel_version_info target file description)
  set(version_info_target ${target})
  set(version_info_file ${file})
  set(version_info_description ${description})
  set(version_info_type VFT_DLL)
  if(file MATCHES "\\.exe$")
    set(version_info_type VFT_APP)
  endif()
  set(script ${CMAKE_CURRENT_BINARY_DIR}/${target}_version.rc)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/version_info.rc.in ${script} @ONLY)
  target_sources(${target} PRIVATE ${script})
endfunction()
