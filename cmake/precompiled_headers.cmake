# The headers of others that most files here include are parsed once for all of them. A header of ours
# that forgets one would go unnoticed that way, and where several sources are compiled at once; so
# clang-tidy and the debug preset read each source alone.
option(GLAZEL_PRECOMPILE "Parse headers of others once for many files" ON)

set(precompiled_standard
  <algorithm> <array> <atomic> <bit> <charconv> <cmath> <cstddef> <cstdint> <cstdio> <cstdlib>
  <cstring> <functional> <iterator> <limits> <map> <memory> <mutex> <new> <numeric> <optional> <set>
  <span> <stdexcept> <string> <string_view> <tuple> <type_traits> <utility> <variant> <vector>)
set(precompiled_test <gtest/gtest.h> <random> ${precompiled_standard})
if(WIN32)
  list(PREPEND precompiled_test ${PROJECT_SOURCE_DIR}/cmake/gtest_notification.h)
endif()

# Headers for targets with the options of one that only links glazel_options and LIBS.
function(add_precompiled name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "LIBS;HEADERS")
  set(source ${CMAKE_BINARY_DIR}/precompiled/${name}.cpp)
  file(CONFIGURE OUTPUT ${source} CONTENT "")
  add_library(precompiled_${name} OBJECT EXCLUDE_FROM_ALL ${source})
  target_link_libraries(precompiled_${name} PRIVATE glazel_options ${arg_LIBS})
  target_precompile_headers(precompiled_${name} PRIVATE ${arg_HEADERS})
endfunction()

# Optimised code is compiled without the precompiled standard library: in it, GCC 12 forgets which of
# its warnings are false alarms. Tests are compiled without the headers of COM, which give meanings to
# words like byte and small: many are of pure logic.
if(GLAZEL_PRECOMPILE)
  if(NOT CMAKE_BUILD_TYPE STREQUAL Release)
    add_precompiled(pure HEADERS ${precompiled_standard})
  endif()
  if(WIN32)
    add_precompiled(shell HEADERS <windows.h> <objbase.h> <ocidl.h> <olectl.h> <oleauto.h>)
  endif()
  if(TARGET gtest)
    add_precompiled(test LIBS GTest::gtest HEADERS ${precompiled_test})
    set_target_properties(precompiled_test PROPERTIES GLAZEL_TEST ON)
  endif()
endif()

# glazel_precompiled(target kind): pure for what includes no headers of the system, shell for what
# does, test for what uses GoogleTest. Not for targets with options of their own.
function(glazel_precompiled target kind)
  if(TARGET precompiled_${kind})
    target_precompile_headers(${target} REUSE_FROM precompiled_${kind})
  endif()
endfunction()
