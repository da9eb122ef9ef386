# Every header compiles alone: one source file a header, which includes nothing else, compiled with the include roots and
# links of the layer that owns the header and without a precompiled header. Every build does so with the public headers;
# the others are a quarter of its time and wait for the target lone_headers, which the lint step builds.

add_custom_target(lone_headers)

# stratacut_check_headers(LAYER ROOT dir HEADERS file...)
function(stratacut_check_headers layer)
  cmake_parse_arguments(H "" "ROOT" "HEADERS" ${ARGN})
  set(sources "")
  foreach(header IN LISTS H_HEADERS)
    file(RELATIVE_PATH name "${H_ROOT}" "${header}")
    set(source "${CMAKE_BINARY_DIR}/headers/${layer}/${name}.cpp")
    file(CONFIGURE OUTPUT "${source}" CONTENT "#include \"@name@\" // IWYU pragma: keep\n" @ONLY)
    list(APPEND sources "${source}")
  endforeach()
  if(NOT sources)
    return()
  endif()
  add_library(headers_${layer} OBJECT ${sources})
  if(H_ROOT MATCHES "/include$")
    # What is installed must also serve a program for which "signals" and "slots" are words of its own.
    target_compile_definitions(headers_${layer} PRIVATE QT_NO_KEYWORDS)
  else()
    set_target_properties(headers_${layer} PROPERTIES EXCLUDE_FROM_ALL ON)
    add_dependencies(lone_headers headers_${layer})
  endif()
  target_include_directories(headers_${layer} PRIVATE "${H_ROOT}")
  # Its private links too: a header that stays inside a layer may use what the layer uses.
  get_target_property(type ${layer} TYPE)
  set(property LINK_LIBRARIES)
  if(type STREQUAL "INTERFACE_LIBRARY")
    set(property INTERFACE_LINK_LIBRARIES)
  endif()
  get_target_property(links ${layer} ${property})
  get_target_property(roots ${layer} INTERFACE_INCLUDE_DIRECTORIES)
  if(links)
    target_link_libraries(headers_${layer} PRIVATE ${links})
  endif()
  if(roots)
    target_include_directories(headers_${layer} PRIVATE ${roots})
  endif()
endfunction()

# The layer of the module that owns a public header: the folder of its implementation. A header without one declares
# an interface that the host implements.
function(stratacut_owner_of_header header result)
  get_filename_component(name "${header}" NAME_WE)
  # One implementation is fixed to a name without the underscore.
  string(REPLACE "_" "" plain "${name}")
  set(owner StratacutUI_bridges)
  foreach(layer IN ITEMS bridges images package model controller audio manager transcript)
    if(EXISTS "${CMAKE_SOURCE_DIR}/src/${layer}/${name}.cpp" OR EXISTS "${CMAKE_SOURCE_DIR}/src/${layer}/${plain}.cpp")
      string(REPLACE "controller" "model" owner "StratacutUI_${layer}")
    endif()
  endforeach()
  set(${result} ${owner} PARENT_SCOPE)
endfunction()

function(stratacut_check_module_headers)
  file(GLOB headers CONFIGURE_DEPENDS "${CMAKE_SOURCE_DIR}/include/StratacutUI/*.h")
  foreach(header IN LISTS headers)
    stratacut_owner_of_header("${header}" owner)
    list(APPEND headers_of_${owner} "${header}")
  endforeach()
  foreach(owner IN ITEMS StratacutUI_bridges StratacutUI_images StratacutUI_package StratacutUI_model
                         StratacutUI_audio StratacutUI_manager StratacutUI_transcript)
    stratacut_check_headers(${owner} ROOT "${CMAKE_SOURCE_DIR}/include" HEADERS ${headers_of_${owner}})
  endforeach()
endfunction()

function(stratacut_check_all_headers)
  stratacut_check_module_headers()
  foreach(pair IN ITEMS "NvCoreM2W10|host/NvCore/include|host/NvCore/include"
                        "ViewDeckQt|host/ViewDeckQt/include|host/ViewDeckQt/include"
                        "deskbase|.|desk/base" "deskimf|.|desk/imf" "deskmedia|.|desk/media"
                        "deskspeech|.|desk/speech" "deskservices|.|desk/services" "deskapp|.|desk/app")
    string(REPLACE "|" ";" pair "${pair}")
    list(GET pair 0 layer)
    list(GET pair 1 root)
    list(GET pair 2 folder)
    file(GLOB_RECURSE headers CONFIGURE_DEPENDS "${CMAKE_SOURCE_DIR}/${folder}/*.h")
    get_filename_component(root "${CMAKE_SOURCE_DIR}/${root}" ABSOLUTE)
    stratacut_check_headers(${layer} ROOT "${root}" HEADERS ${headers})
  endforeach()
endfunction()
