# Compiler, linker and cache settings shared by every target.

find_program(STRATACUT_CCACHE ccache)
if(STRATACUT_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  # Relative paths and the relaxed rules for precompiled headers let checkouts in different folders share one cache.
  set(CMAKE_CXX_COMPILER_LAUNCHER
      ${CMAKE_COMMAND} -E env "CCACHE_BASEDIR=${CMAKE_SOURCE_DIR}" CCACHE_NOHASHDIR=1
      "CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime" ${STRATACUT_CCACHE})
  add_compile_options($<$<CXX_COMPILER_ID:GNU>:-fpch-preprocess>)
endif()

find_program(STRATACUT_MOLD mold)
if(STRATACUT_MOLD AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_GREATER_EQUAL 12.1)
  add_link_options(-fuse-ld=mold)
endif()

add_compile_options(-Wall -Wextra -Wpedantic -Wnon-virtual-dtor -Woverloaded-virtual)
if(STRATACUT_WARNINGS_AS_ERRORS)
  add_compile_options(-Werror)
endif()
if(STRATACUT_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-omit-frame-pointer -fno-sanitize-recover=undefined)
  add_link_options(-fsanitize=address,undefined)
elseif(UNIX AND NOT APPLE)
  # A shared library names every library that it needs. A sanitizer's runtime is found in the program only.
  string(APPEND CMAKE_SHARED_LINKER_FLAGS " -Wl,-z,defs")
endif()
add_compile_definitions(QT_NO_FOREACH QT_DEPRECATED_WARNINGS $<$<CONFIG:Debug>:STRATACUT_DEBUG>)
