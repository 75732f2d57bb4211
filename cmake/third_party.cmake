# Header-only libraries and GoogleTest from the system's packages. /usr/include itself must never
# be on the cross compiler's path, so each library's own folder is linked into the build tree.
set(third_party_headers ${CMAKE_BINARY_DIR}/third_party)
file(MAKE_DIRECTORY ${third_party_headers})
foreach(folder IN ITEMS CLI nlohmann stb rapidxml)
  if(NOT EXISTS /usr/include/${folder})
    message(FATAL_ERROR "/usr/include/${folder} is missing: run ./setup.sh")
  endif()
  file(CREATE_LINK /usr/include/${folder} ${third_party_headers}/${folder} SYMBOLIC)
endforeach()
add_library(third_party_headers INTERFACE)
target_include_directories(third_party_headers SYSTEM INTERFACE ${third_party_headers})

if(NOT GLAZEL_TESTS)
  return()
endif()
set(INSTALL_GTEST OFF CACHE INTERNAL "")
set(BUILD_GMOCK OFF CACHE INTERNAL "")
if(WIN32)
  set(gtest_disable_pthreads ON CACHE INTERNAL "") # the win32 thread model has none
endif()
add_subdirectory(/usr/src/googletest ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)
if(WIN32)
  target_compile_definitions(gtest PUBLIC GTEST_HAS_NOTIFICATION_=1
    UNICODE _UNICODE WIN32_LEAN_AND_MEAN NOMINMAX _WIN32_WINNT=0x0A00 STRICT)
  # Precompiled headers must come first of all, and hold it (precompiled_headers.cmake).
  set(precompiles
    $<BOOL:$<TARGET_PROPERTY:PRECOMPILE_HEADERS>$<TARGET_PROPERTY:PRECOMPILE_HEADERS_REUSE_FROM>>)
  target_compile_options(gtest PUBLIC
    "$<$<AND:$<COMPILE_LANGUAGE:CXX>,$<NOT:${precompiles}>>:SHELL:-include \"${PROJECT_SOURCE_DIR}/cmake/gtest_notification.h\">")
endif()
target_compile_options(gtest PRIVATE $<$<CONFIG:Release>:-O0>)
include(GoogleTest)

# A test program: glazel_add_test(NAME label SOURCES ... LIBS ...). `label` is one of
# unit component ui registration install fuzz bench; those of ui share the display, one at a time. A
# program is one CTest test, or SHARDS of them, for long ones, which run at the same time. ALONE names
# tests, as --gtest_filter does, that run in a process of their own each: those that need one in which
# a state of the process is as it starts. FOLDER names a folder below bin/ for programs that must not
# find the other programs' DLLs around them. OPTIMISED compiles it like the product. GUARDED programs,
# which use tests/doubles/guard_pages.h, run twice more, with every block of memory against a page that
# nobody can touch.
function(glazel_add_test name label)
  cmake_parse_arguments(PARSE_ARGV 2 arg "OPTIMISED;GUARDED" "FOLDER;SHARDS" "ALONE;SOURCES;LIBS;PROPERTIES")
  set(folder ${CMAKE_BINARY_DIR}/bin)
  if(arg_FOLDER)
    string(APPEND folder /${arg_FOLDER})
  endif()
  add_executable(${name} ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE ${arg_LIBS} glazel_options GTest::gtest_main)
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${folder})
  if(arg_OPTIMISED)
    set_target_properties(${name} PROPERTIES GLAZEL_TEST OFF)
  else()
    glazel_precompiled(${name} test)
  endif()
  if(WIN32)
    set_target_properties(${name} PROPERTIES
      CROSSCOMPILING_EMULATOR ${PROJECT_SOURCE_DIR}/cmake/wine-test.sh)
  endif()
  if(NOT arg_SHARDS)
    set(arg_SHARDS 1)
  endif()
  if(label STREQUAL ui)
    # One of them after the other, so they begin before all others.
    list(APPEND arg_PROPERTIES RESOURCE_LOCK display COST 200)
  endif()
  set(guards none)
  if(arg_GUARDED)
    list(APPEND guards after before)
  endif()
  foreach(guard IN LISTS guards)
    set(suffix)
    if(NOT guard STREQUAL none)
      set(suffix .guarded_${guard})
    endif()
    set(environment GLAZEL_GUARD=${guard})
    set(command ${name} --gtest_brief=1)
    if(arg_ALONE)
      list(JOIN arg_ALONE ":" alone)
      gtest_discover_tests(${name}
        TEST_FILTER ${alone}
        TEST_SUFFIX "${suffix}"
        TEST_LIST ${name}${suffix}
        DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 200
        WORKING_DIRECTORY ${folder}
        PROPERTIES LABELS ${label} TIMEOUT 300 ENVIRONMENT ${environment} ${arg_PROPERTIES})
      if(alone STREQUAL "*")
        continue()
      endif()
      list(APPEND command --gtest_filter=-${alone})
    endif()
    foreach(shard RANGE 1 ${arg_SHARDS})
      set(test ${name})
      if(arg_SHARDS GREATER 1)
        string(APPEND test .${shard})
      endif()
      math(EXPR index "${shard} - 1")
      add_test(NAME ${test}${suffix} COMMAND ${command} WORKING_DIRECTORY ${folder})
      set_tests_properties(${test}${suffix} PROPERTIES
        LABELS ${label} TIMEOUT 300
        ENVIRONMENT "${environment};GTEST_TOTAL_SHARDS=${arg_SHARDS};GTEST_SHARD_INDEX=${index}"
        ${arg_PROPERTIES})
    endforeach()
  endforeach()
endfunction()
