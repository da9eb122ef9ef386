cmake_minimum_required(VERSION 3.25)

# Run as a script with -DTOP=<source tree>. The desk's folders share one include root and the module's folders share
# the public one, so a link alone cannot keep their headers apart: this table says which prefixes a folder may include.
# A public header of the module counts as part of the folder that implements it. Prefixes that stand in no row are free.

set(watched "StratacutUI/" "ViewDeckQt/" "NvCore/" "desk/base/" "desk/imf/" "desk/media/" "desk/speech/" "desk/services/" "desk/app/"
            "package/" "model/" "controller/" "bridges/" "images/" "manager/" "audio/" "transcript/")

set(may_host/NvCore "NvCore/")
set(may_host/ViewDeckQt "NvCore/" "ViewDeckQt/")
set(may_src/bridges "NvCore/" "StratacutUI/" "bridges/")
set(may_src/images "NvCore/" "ViewDeckQt/" "StratacutUI/" "images/")
set(may_src/package "NvCore/" "StratacutUI/" "bridges/" "package/")
set(may_src/model "NvCore/" "ViewDeckQt/" "StratacutUI/" "bridges/" "images/" "package/" "model/" "controller/")
set(may_src/controller ${may_src/model})
set(may_src/audio "NvCore/" "ViewDeckQt/" "StratacutUI/" "bridges/" "images/" "package/" "audio/")
set(may_src/manager "NvCore/" "ViewDeckQt/" "StratacutUI/" "package/" "model/" "controller/" "audio/" "manager/")
set(may_src/transcript "NvCore/" "ViewDeckQt/" "StratacutUI/" "images/" "transcript/")
set(may_desk/base "desk/base/")
set(may_desk/imf "desk/base/" "desk/imf/")
set(may_desk/media "desk/base/" "desk/media/")
set(may_desk/speech "desk/base/" "desk/speech/")
set(may_desk/services "desk/base/" "desk/imf/" "desk/media/" "desk/speech/" "desk/services/" "StratacutUI/")
set(folders host/NvCore host/ViewDeckQt src/bridges src/images src/package src/model src/controller src/audio src/manager
            src/transcript desk/base desk/imf desk/media desk/speech desk/services)

# owner_of(NAME VARIABLE): the folder of src/ that implements the public header of that name; empty for an interface
# that the host implements.
function(owner_of name result)
  # One implementation is fixed to a name without the underscore.
  string(REPLACE "_" "" plain "${name}")
  file(GLOB sources RELATIVE "${TOP}/src" "${TOP}/src/*/${name}.cpp" "${TOP}/src/*/${plain}.cpp")
  list(REMOVE_DUPLICATES sources)
  get_filename_component(owner "${sources}" DIRECTORY)
  set(${result} "${owner}" PARENT_SCOPE)
endfunction()

# check_include(FILE FOLDER INCLUDED): notes a finding unless the folder may include that header.
function(check_include file folder included)
  set(meant "${included}")
  if(folder MATCHES "^src/" AND included MATCHES "^StratacutUI/(.*)\\.h$")
    owner_of("${CMAKE_MATCH_1}" owner)
    list(APPEND meant "${owner}/")
  endif()
  foreach(prefix IN LISTS watched)
    if(meant MATCHES "(^|;)${prefix}" AND NOT prefix IN_LIST may_${folder})
      file(RELATIVE_PATH name "${TOP}" "${file}")
      set_property(GLOBAL APPEND PROPERTY findings "${name} includes ${included}")
    endif()
  endforeach()
endfunction()

function(check_files folder)
  foreach(file IN LISTS ARGN)
    set_property(GLOBAL APPEND PROPERTY seen "${file}")
    file(STRINGS "${file}" lines REGEX "^#include \"")
    foreach(line IN LISTS lines)
      string(REGEX REPLACE "^#include \"([^\"]*)\".*" "\\1" included "${line}")
      check_include("${file}" "${folder}" "${included}")
    endforeach()
  endforeach()
endfunction()

foreach(folder IN LISTS folders)
  file(GLOB_RECURSE files "${TOP}/${folder}/*.h" "${TOP}/${folder}/*.cpp")
  check_files("${folder}" ${files})
endforeach()
file(GLOB headers "${TOP}/include/StratacutUI/*.h")
foreach(header IN LISTS headers)
  get_filename_component(name "${header}" NAME_WE)
  owner_of("${name}" owner)
  if(owner)
    check_files("src/${owner}" "${header}")
  endif()
endforeach()

get_property(seen GLOBAL PROPERTY seen)
list(LENGTH seen seen)
get_property(findings GLOBAL PROPERTY findings)
if(seen EQUAL 0)
  message(FATAL_ERROR "no source file found in ${TOP}")
elseif(findings)
  list(JOIN findings "\n  " findings)
  message(FATAL_ERROR "forbidden includes:\n  ${findings}")
endif()
message(STATUS "${seen} files include only what they may")
