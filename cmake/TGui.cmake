# Build helpers shared by the library, the programs, the tests and the benchmarks.

add_library(tgui_warnings INTERFACE)
target_compile_options(tgui_warnings INTERFACE -Wall -Wextra)
if(TGUI_WERROR)
  target_compile_options(tgui_warnings INTERFACE -Werror)
endif()

# Kept in variables as well: a program built elsewhere against this tree's
# library (the install test) needs the same instrumentation.
set(TGUI_SANITIZE_COMPILE_FLAGS)
set(TGUI_SANITIZE_LINK_FLAGS)
if(TGUI_SANITIZE)
  set(TGUI_SANITIZE_COMPILE_FLAGS -fsanitize=address,undefined -fno-sanitize-recover=undefined
                                  -fno-omit-frame-pointer)
  set(TGUI_SANITIZE_LINK_FLAGS -fsanitize=address,undefined)
  add_compile_options(${TGUI_SANITIZE_COMPILE_FLAGS})
  add_link_options(${TGUI_SANITIZE_LINK_FLAGS})
endif()

if(TGUI_TSAN)
  if(TGUI_SANITIZE)
    message(FATAL_ERROR "TGUI_TSAN and TGUI_SANITIZE exclude each other")
  endif()
  set(TGUI_SANITIZE_COMPILE_FLAGS -fsanitize=thread -fno-omit-frame-pointer)
  set(TGUI_SANITIZE_LINK_FLAGS -fsanitize=thread)
  add_compile_options(${TGUI_SANITIZE_COMPILE_FLAGS})
  add_link_options(${TGUI_SANITIZE_LINK_FLAGS})
endif()

if(TGUI_FUZZ)
  if(NOT CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    message(FATAL_ERROR "TGUI_FUZZ needs clang")
  endif()
  # Coverage for everything the fuzzers reach; only fuzz targets get the driver.
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()

# One of our builds of the phone's closed libraries under platform/NAME:
#   tgui_platform_library(NAME HEADERS h...)
# hidden symbols but for NAME_EXPORT (generated NAME_export.h), the alias TGUI::NAME,
# and its headers installed under include/TGUILib/NAME/.
function(tgui_platform_library name)
  cmake_parse_arguments(P "" "" "HEADERS" ${ARGN})
  string(TOUPPER ${name} upper)
  add_library(TGUI::${name} ALIAS ${name})
  set_target_properties(${name} PROPERTIES
    AUTOMOC OFF VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}
    CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
  include(GenerateExportHeader)
  set(gen ${PROJECT_BINARY_DIR}/include/${name})
  generate_export_header(${name} BASE_NAME ${upper} EXPORT_FILE_NAME ${gen}/${name}_export.h)
  target_include_directories(${name} PUBLIC
    $<BUILD_INTERFACE:${CMAKE_CURRENT_SOURCE_DIR}>
    $<BUILD_INTERFACE:${gen}>
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/TGUILib/${name}>)
  target_link_libraries(${name} PRIVATE tgui_warnings)
  list(TRANSFORM P_HEADERS PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/)
  set_property(GLOBAL APPEND PROPERTY TGUI_PLATFORM_LIBRARIES ${name})
  set_target_properties(${name} PROPERTIES TGUI_PUBLIC_HEADERS "${P_HEADERS};${gen}/${name}_export.h")
endfunction()

# Adds every sub-folder of DIR that has its own CMakeLists.txt, but for the
# folders named after EXCLUDE.
function(tgui_add_subdirs dir)
  cmake_parse_arguments(S "" "" "EXCLUDE" ${ARGN})
  file(GLOB children LIST_DIRECTORIES true "${CMAKE_CURRENT_SOURCE_DIR}/${dir}/*")
  list(SORT children)
  foreach(child IN LISTS children)
    get_filename_component(child_name "${child}" NAME)
    if(child_name IN_LIST S_EXCLUDE)
      continue()
    endif()
    if(IS_DIRECTORY "${child}" AND EXISTS "${child}/CMakeLists.txt")
      add_subdirectory("${child}")
    endif()
  endforeach()
endfunction()

# Where tests find the programs they start. Under emulation (a cross build with
# CMAKE_CROSSCOMPILING_EMULATOR) the kernel cannot run them directly: the folder then
# holds one wrapper per program that starts it through the emulator.
set(TGUI_TEST_BIN_DIR ${PROJECT_BINARY_DIR}/bin)
if(CMAKE_CROSSCOMPILING_EMULATOR)
  set(TGUI_TEST_BIN_DIR ${PROJECT_BINARY_DIR}/emulated-bin)
endif()

set(TGUI_TEST_ENV
    "QT_QPA_PLATFORM=offscreen"
    "TGUI_SOURCE_DIR=${PROJECT_SOURCE_DIR}"
    "TGUI_RUN_DIR=${PROJECT_SOURCE_DIR}/run"
    "TGUI_BIN_DIR=${TGUI_TEST_BIN_DIR}"
    "ASAN_OPTIONS=detect_leaks=1:abort_on_error=1:strict_string_checks=1:detect_stack_use_after_return=0"
    "UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1"
    "LSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/tests/lsan.supp:print_suppressions=0"
    "TSAN_OPTIONS=halt_on_error=1:second_deadlock_stack=1:suppressions=${PROJECT_SOURCE_DIR}/tests/tsan.supp")

# One QtTest executable per source file: tgui_add_qtest(NAME src... [LIBS lib...] [TIMEOUT s])
function(tgui_add_qtest name)
  cmake_parse_arguments(T "" "TIMEOUT" "LIBS" ${ARGN})
  add_executable(${name} ${T_UNPARSED_ARGUMENTS})
  target_link_libraries(${name} PRIVATE TGUILib tgui_testsupport Qt5::Test tgui_warnings ${T_LIBS})
  target_compile_definitions(${name} PRIVATE
      TGUI_SOURCE_DIR="${PROJECT_SOURCE_DIR}" TGUI_BIN_DIR="${TGUI_TEST_BIN_DIR}")
  add_test(NAME ${name} COMMAND ${name})
  if(NOT T_TIMEOUT)
    set(T_TIMEOUT 300)
  endif()
  set_tests_properties(${name} PROPERTIES ENVIRONMENT "${TGUI_TEST_ENV}" TIMEOUT ${T_TIMEOUT})
endfunction()

# A libFuzzer target, run by CTest for SECONDS (default 60) when fuzzing is on.
function(tgui_add_fuzzer name)
  cmake_parse_arguments(F "" "SECONDS" "LIBS" ${ARGN})
  if(NOT TGUI_FUZZ)
    return()
  endif()
  if(NOT F_SECONDS)
    set(F_SECONDS 60)
  endif()
  add_executable(${name} ${F_UNPARSED_ARGUMENTS})
  target_link_libraries(${name} PRIVATE ${F_LIBS} tgui_warnings)
  target_compile_options(${name} PRIVATE -fsanitize=fuzzer)
  target_link_options(${name} PRIVATE -fsanitize=fuzzer)
  set(corpus "${CMAKE_CURRENT_BINARY_DIR}/${name}-corpus")
  file(MAKE_DIRECTORY "${corpus}")
  set(seeds "${CMAKE_CURRENT_SOURCE_DIR}/corpus/${name}")
  add_test(NAME ${name}
           COMMAND ${name} -max_total_time=${F_SECONDS} -rss_limit_mb=2048 -timeout=10
                   -print_final_stats=1 "${corpus}" "${seeds}")
  set_tests_properties(${name} PROPERTIES ENVIRONMENT "${TGUI_TEST_ENV}"
                       TIMEOUT 600 LABELS fuzz)
endfunction()

# Every tst_*.cpp in the calling folder becomes tst_<folder>_<name>, linked with
# the library, the test-support library (tests/support) and LIBS; helper
# sources of this folder's tests alone go in HELPERS.
function(tgui_add_tests_in_dir)
  cmake_parse_arguments(D "" "" "LIBS;HELPERS" ${ARGN})
  get_filename_component(module "${CMAKE_CURRENT_SOURCE_DIR}" NAME)
  file(GLOB tests CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/tst_*.cpp")
  list(SORT tests)
  foreach(src IN LISTS tests)
    get_filename_component(base "${src}" NAME_WE)
    string(REGEX REPLACE "^tst_" "" base "${base}")
    tgui_add_qtest(tst_${module}_${base} ${src} ${D_HELPERS} LIBS ${D_LIBS})
  endforeach()
endfunction()

# A benchmark program under bench/: prints its figures, never run by CTest.
function(tgui_add_bench name)
  cmake_parse_arguments(B "" "" "LIBS" ${ARGN})
  add_executable(${name} ${B_UNPARSED_ARGUMENTS})
  target_link_libraries(${name} PRIVATE TGUILib tgui_warnings ${B_LIBS})
endfunction()

# Under emulation: a wrapper in TGUI_TEST_BIN_DIR for every program of the tree, so that
# a test starting TGUI_BIN_DIR/NAME runs NAME through the emulator. Called once, last.
function(tgui_emulator_wrappers)
  if(NOT CMAKE_CROSSCOMPILING_EMULATOR)
    return()
  endif()
  set(emulator)
  foreach(word IN LISTS CMAKE_CROSSCOMPILING_EMULATOR)
    string(APPEND emulator "'${word}' ")
  endforeach()
  # qemu: the program sees the name it was started by (a link's name) as argv[0].
  if(CMAKE_CROSSCOMPILING_EMULATOR MATCHES "qemu")
    string(APPEND emulator "-0 \"$0\" ")
  endif()
  set(dirs ${PROJECT_SOURCE_DIR})
  while(dirs)
    list(POP_FRONT dirs dir)
    get_property(subdirs DIRECTORY ${dir} PROPERTY SUBDIRECTORIES)
    list(APPEND dirs ${subdirs})
    get_property(targets DIRECTORY ${dir} PROPERTY BUILDSYSTEM_TARGETS)
    foreach(target IN LISTS targets)
      get_target_property(type ${target} TYPE)
      if(type STREQUAL "EXECUTABLE")
        file(GENERATE OUTPUT ${TGUI_TEST_BIN_DIR}/${target}
             CONTENT "#!/bin/sh\nexec ${emulator}'$<TARGET_FILE:${target}>' \"$@\"\n"
             FILE_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE
                              WORLD_READ WORLD_EXECUTE)
      endif()
    endforeach()
  endwhile()
endfunction()
