cmake_minimum_required(VERSION 3.25)

# Run as a script with -DTOP=<source tree>. The desk's folders share one include root and the module's folders share
# the public one, so a link alone cannot keep their headers apart: this table says which prefixes a folder may include.
# Prefixes that stand in no row are free.

set(watched "StratacutUI/" "ViewDeckQt/" "NvCore/" "desk/base/" "desk/imf/" "desk/media/" "desk/services/" "desk/app/"
            "package/" "model/" "controller/" "bridges/" "images/" "manager/" "audio/" "transcript/")

set(may_host/NvCore "NvCore/")
set(may_host/ViewDeckQt "NvCore/" "ViewDeckQt/")
set(may_src/bridges "NvCore/" "StratacutUI/" "bridges/")
set(may_src/images "NvCore/" "ViewDeckQt/" "StratacutUI/" "images/")
set(may_src/package "NvCore/" "StratacutUI/" "bridges/" "package/")
set(may_src/model "NvCore/" "ViewDeckQt/" "StratacutUI/" "bridges/" "images/" "package/" "model/" "controller/")
set(may_src/controller ${may_src/model})
set(may_desk/base "desk/base/")
set(may_desk/imf "desk/base/" "desk/imf/")
set(may_desk/media "desk/base/" "desk/media/")
set(may_desk/services "desk/base/" "desk/imf/" "desk/media/" "desk/services/" "StratacutUI/")
set(folders host/NvCore host/ViewDeckQt src/bridges src/images src/package src/model src/controller
            desk/base desk/imf desk/media desk/services)

# check_include(FILE FOLDER INCLUDED): appends a finding unless the folder may include that header.
function(check_include file folder included)
  foreach(prefix IN LISTS watched)
    if(included MATCHES "^${prefix}" AND NOT prefix IN_LIST may_${folder})
      file(RELATIVE_PATH name "${TOP}" "${file}")
      set_property(GLOBAL APPEND PROPERTY findings "${name} includes ${included}")
    endif()
  endforeach()
endfunction()

set(seen 0)
foreach(folder IN LISTS folders)
  file(GLOB_RECURSE files "${TOP}/${folder}/*.h" "${TOP}/${folder}/*.cpp")
  foreach(file IN LISTS files)
    math(EXPR seen "${seen} + 1")
    file(STRINGS "${file}" lines REGEX "^#include \"")
    foreach(line IN LISTS lines)
      string(REGEX REPLACE "^#include \"([^\"]*)\".*" "\\1" included "${line}")
      check_include("${file}" "${folder}" "${included}")
    endforeach()
  endforeach()
endforeach()

get_property(findings GLOBAL PROPERTY findings)
if(seen EQUAL 0)
  message(FATAL_ERROR "no source file found in ${TOP}")
elseif(findings)
  list(JOIN findings "\n  " findings)
  message(FATAL_ERROR "forbidden includes:\n  ${findings}")
endif()
message(STATUS "${seen} files include only what they may")
