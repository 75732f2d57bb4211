# The names of the renderer's entry points, from the rows in contract/entry_points.h and in their
# order: all of them, those that must be there, those that may be missing.
set(header ${PROJECT_SOURCE_DIR}/contract/entry_points.h)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${header})
set(row "^ *ROW\\([A-Za-z0-9]+, *([A-Za-z0-9]+), *")
function(glazel_read_names variable required)
  file(STRINGS ${header} rows REGEX "${row}${required}")
  string(REPLACE "\\;" ";" rows "${rows}") # a row's own backslash hides the end of the item
  list(TRANSFORM rows REPLACE "${row}.*" "\\1")
  set(${variable} ${rows} PARENT_SCOPE)
endfunction()
glazel_read_names(renderer_names "")
glazel_read_names(renderer_required_names true)
glazel_read_names(renderer_optional_names false)

# glazel_renderer_def(file name...): a module definition that exports these names.
function(glazel_renderer_def file)
  list(JOIN ARGN "\n    " exports)
  file(CONFIGURE OUTPUT ${file} CONTENT "LIBRARY GZ3Renderer_x64.dll\nEXPORTS\n    @exports@\n" @ONLY)
endfunction()
