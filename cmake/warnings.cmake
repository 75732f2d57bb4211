# What everything written here is compiled with: link glazel_options, privately.
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # GCC 12 sees overlapping copies in plain std::string concatenation (its bug 105329). Not an
  # option of the target: clang reads the sources with those, and does not know this one.
  string(APPEND CMAKE_CXX_FLAGS " -Wno-restrict")
endif()
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
  # It collects its garbage from 128 MB on, a tenth of the time of most files here, none of which needs
  # much more without.
  string(APPEND CMAKE_CXX_FLAGS " --param ggc-min-heapsize=500000")
endif()
if(WIN32)
  # Of an inline function's copies in several objects the linker keeps one. GCC for Windows holds
  # the copy beside a caller for that one and leaves in registers what only its own copy spares;
  # compiled with other options, the one kept destroys it. Clang does not know this option either.
  string(APPEND CMAKE_CXX_FLAGS " -fno-ipa-ra")
endif()

# ON for test code, which is not optimised and has no symbols: it only costs time to compile.
define_property(TARGET PROPERTY GLAZEL_TEST INITIALIZE_FROM_VARIABLE GLAZEL_TEST)
set(is_test $<BOOL:$<TARGET_PROPERTY:GLAZEL_TEST>>)

add_library(glazel_options INTERFACE)
target_compile_features(glazel_options INTERFACE cxx_std_20)
target_include_directories(glazel_options INTERFACE ${PROJECT_SOURCE_DIR})
target_compile_options(glazel_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast
  -Woverloaded-virtual -Wformat=2 -Werror
  -fno-strict-aliasing # records and pixels are read through the types that binary interfaces fix
  $<${is_test}:-O0>
)
if(WIN32)
  target_compile_definitions(glazel_options INTERFACE
    UNICODE _UNICODE WIN32_LEAN_AND_MEAN NOMINMAX _WIN32_WINNT=0x0A00 STRICT)
  target_compile_options(glazel_options INTERFACE
    -fstack-protector-strong
    # Functions and lines, for traces; they end up in files of their own, see shipped_image.cmake.
    # Variables, most of which are optimised away, would take a third of the time to compile.
    $<$<AND:$<CONFIG:Release>,$<NOT:${is_test}>>:-g1>
    # The same sources give the same bytes wherever they stand. The last rule that fits is taken.
    -ffile-prefix-map=${PROJECT_SOURCE_DIR}=.
    -ffile-prefix-map=${PROJECT_BINARY_DIR}=build)
  # In place of the compiler's libssp, and what guards calls into other modules.
  target_link_libraries(glazel_options INTERFACE foreign_call stack_guard)
  # The run time is linked in: nothing but the system's own DLLs is needed to run.
  target_link_options(glazel_options INTERFACE
    -static -Wl,--dynamicbase,--nxcompat,--high-entropy-va -Wl,--no-insert-timestamp)
else()
  set(GLAZEL_SANITIZERS address,undefined CACHE STRING "What native programs look for while they run")
  if(GLAZEL_SANITIZERS)
    target_compile_options(glazel_options INTERFACE
      -fsanitize=${GLAZEL_SANITIZERS} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(glazel_options INTERFACE -fsanitize=${GLAZEL_SANITIZERS})
  endif()
  if(GLAZEL_FUZZ)
    target_compile_options(glazel_options INTERFACE
      -fsanitize=float-cast-overflow $<$<NOT:${is_test}>:-fsanitize=fuzzer-no-link>)
  endif()
endif()
