# The vocabulary of the build: a layer is a folder with one target, a test a folder with one executable.

set(STRATACUT_PCH <QByteArray> <QHash> <QJsonArray> <QJsonDocument> <QJsonObject> <QObject> <QString> <QVariant>
                  <QVector> <algorithm> <functional> <memory> <string> <vector>)

# One precompiled header for all layers: what nearly every source file needs, compiled with no more definitions than
# each of them has.
file(CONFIGURE OUTPUT "${CMAKE_BINARY_DIR}/common_headers.cpp" CONTENT "// Nothing: the headers are what counts.\n")
add_library(stratacut_common_headers OBJECT "${CMAKE_BINARY_DIR}/common_headers.cpp")
target_link_libraries(stratacut_common_headers PRIVATE Qt5::Core)
target_precompile_headers(stratacut_common_headers PRIVATE ${STRATACUT_PCH})

# stratacut_layer(NAME SHARED|STATIC|OBJECT|INTERFACE FOLDERS dir... [PUBLIC links...] [PRIVATE links...]
#                 [INCLUDES dir...] [DEFINES def...])
# Takes every .cpp, .h and .qrc below the folders.
function(stratacut_layer name kind)
  cmake_parse_arguments(L "" "" "FOLDERS;PUBLIC;PRIVATE;INCLUDES;DEFINES" ${ARGN})
  set(patterns "")
  foreach(folder IN LISTS L_FOLDERS)
    list(APPEND patterns "${folder}/*.cpp" "${folder}/*.h" "${folder}/*.qrc")
  endforeach()
  set(sources "")
  if(patterns)
    file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${patterns})
  endif()
  if(kind STREQUAL "INTERFACE")
    add_library(${name} INTERFACE)
    target_include_directories(${name} INTERFACE ${L_INCLUDES})
    target_link_libraries(${name} INTERFACE ${L_PUBLIC})
    return()
  endif()
  add_library(${name} ${kind} ${sources})
  target_include_directories(${name} PUBLIC ${L_INCLUDES})
  target_link_libraries(${name} PUBLIC ${L_PUBLIC} PRIVATE ${L_PRIVATE})
  target_compile_definitions(${name} PRIVATE ${L_DEFINES})
  set_target_properties(${name} PROPERTIES AUTOMOC ON AUTORCC ON)
  target_precompile_headers(${name} REUSE_FROM stratacut_common_headers)
endfunction()

# stratacut_test(NAME SOURCES file... LINKS target... [TIMEOUT seconds] [LABELS label...] [X_SERVER])
# One Qt Test executable and one CTest entry of the same name, run offscreen in a fixed environment. The label "soak"
# adds a second entry, NAME_soak, which "ctest -C Soak" runs with STRATACUT_SOAK=1: the test then repeats itself more.
# X_SERVER: an X server of its own in place of the offscreen platform, which passes no drag on.
function(stratacut_test name)
  cmake_parse_arguments(T "X_SERVER" "TIMEOUT" "SOURCES;LINKS;LABELS" ${ARGN})
  add_executable(${name} ${T_SOURCES})
  target_link_libraries(${name} PRIVATE stratacut_testsupport ${T_LINKS})
  set_target_properties(${name} PROPERTIES AUTOMOC ON AUTORCC ON)
  target_precompile_headers(${name} REUSE_FROM stratacut_testsupport)
  # Mostly empty: to load the precompiled header would take longer than to compile it.
  set_source_files_properties("${CMAKE_CURRENT_BINARY_DIR}/${name}_autogen/mocs_compilation.cpp"
                              PROPERTIES SKIP_PRECOMPILE_HEADERS ON)
  target_include_directories(${name} PRIVATE "${CMAKE_SOURCE_DIR}/tests")
  set(environment ${STRATACUT_TEST_ENV})
  if(NOT T_X_SERVER)
    add_test(NAME ${name} COMMAND ${name})
  elseif(STRATACUT_XVFB_RUN)
    add_test(NAME ${name} COMMAND ${STRATACUT_XVFB_RUN} -a -s "-screen 0 1920x1200x24" $<TARGET_FILE:${name}>)
    list(TRANSFORM environment REPLACE "^QT_QPA_PLATFORM=.*" "QT_QPA_PLATFORM=xcb")
  else()
    add_test(NAME ${name} COMMAND ${CMAKE_COMMAND} -E echo "Skipped: xvfb-run was not found; install xvfb and xauth")
    set_tests_properties(${name} PROPERTIES SKIP_REGULAR_EXPRESSION "^Skipped")
  endif()
  if(NOT T_TIMEOUT)
    set(T_TIMEOUT 120)
  endif()
  if(STRATACUT_SANITIZE)
    # The many short processes of the crash tests start five times as slowly.
    math(EXPR T_TIMEOUT "${T_TIMEOUT} * 6")
  endif()
  if("soak" IN_LIST T_LABELS)
    list(REMOVE_ITEM T_LABELS soak)
    add_test(NAME ${name}_soak COMMAND ${name} CONFIGURATIONS Soak)
    set_tests_properties(
      ${name}_soak PROPERTIES TIMEOUT 14400 LABELS soak
                              ENVIRONMENT "${STRATACUT_TEST_ENV};QTEST_FUNCTION_TIMEOUT=14400000;STRATACUT_SOAK=1")
  endif()
  # Qt Test ends a function after five minutes of its own accord; the time limit here is the only one.
  set_tests_properties(
    ${name} PROPERTIES TIMEOUT ${T_TIMEOUT} LABELS "${T_LABELS}"
                       ENVIRONMENT "${environment};QTEST_FUNCTION_TIMEOUT=${T_TIMEOUT}000")
endfunction()

find_program(STRATACUT_XVFB_RUN xvfb-run DOC "Runs a program on an X server of its own")

# A home of the tests' own: they neither read nor write what the developer's programs keep in theirs.
set(STRATACUT_TEST_HOME "${CMAKE_BINARY_DIR}/home")
set(STRATACUT_TEST_ENV
    "QT_QPA_PLATFORM=offscreen;SDL_AUDIODRIVER=dummy;TZ=UTC;LC_ALL=C.UTF-8;QT_LOGGING_RULES=;XDG_RUNTIME_DIR=${CMAKE_BINARY_DIR}/runtime"
    "HOME=${STRATACUT_TEST_HOME}" "XDG_CONFIG_HOME=${STRATACUT_TEST_HOME}/.config"
    "XDG_DATA_HOME=${STRATACUT_TEST_HOME}/.local/share" "XDG_CACHE_HOME=${STRATACUT_TEST_HOME}/.cache"
    "XDG_STATE_HOME=${STRATACUT_TEST_HOME}/.local/state")
if(STRATACUT_SANITIZE)
  list(APPEND STRATACUT_TEST_ENV
       "LSAN_OPTIONS=suppressions=${CMAKE_SOURCE_DIR}/cmake/leaks.supp:print_suppressions=0"
       "UBSAN_OPTIONS=print_stacktrace=1")
endif()
file(MAKE_DIRECTORY "${CMAKE_BINARY_DIR}/runtime" "${STRATACUT_TEST_HOME}")
file(CHMOD "${CMAKE_BINARY_DIR}/runtime" DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE)
