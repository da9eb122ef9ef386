# cmake --install: libraries, public headers, a CMake package, a pkg-config file and the desk. A host that wants no desk
# builds the target StratacutUI alone and installs with "--component libraries".
include(CMakePackageConfigHelpers)
set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME libraries)

set(stratacut_libraries StratacutUI ViewDeckQt NvCoreM2W10)
set(stratacut_package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/StratacutUI")

# Before 1.0 a minor version may change interfaces, and the loader has to know it as the CMake package does.
set(stratacut_abi ${PROJECT_VERSION_MAJOR})
if(stratacut_abi EQUAL 0)
  set(stratacut_abi ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
endif()
foreach(library IN LISTS stratacut_libraries)
  set_target_properties(${library} PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${stratacut_abi})
  # Qt keeps pointers into them (meta types, resources, styles) for as long as the process lives.
  target_link_options(${library} PRIVATE -Wl,-z,nodelete)
endforeach()
install(TARGETS ${stratacut_libraries} EXPORT StratacutUITargets
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" INCLUDES DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")
install(TARGETS stratacut-desk RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT desk)

foreach(folder IN ITEMS include/StratacutUI host/NvCore/include/NvCore host/ViewDeckQt/include/ViewDeckQt)
  install(DIRECTORY "${folder}" DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}" FILES_MATCHING PATTERN "*.h")
endforeach()

install(EXPORT StratacutUITargets NAMESPACE StratacutUI:: DESTINATION "${stratacut_package_dir}")
configure_package_config_file(cmake/StratacutUIConfig.cmake.in "${CMAKE_BINARY_DIR}/package/StratacutUIConfig.cmake"
  INSTALL_DESTINATION "${stratacut_package_dir}")
write_basic_package_version_file("${CMAKE_BINARY_DIR}/package/StratacutUIConfigVersion.cmake"
  COMPATIBILITY SameMinorVersion)
# The way up is as long as the library folder is deep: "lib", or "lib/x86_64-linux-gnu" in a package.
file(RELATIVE_PATH stratacut_prefix_from_pc "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
string(REGEX REPLACE "/$" "" stratacut_prefix_from_pc "${stratacut_prefix_from_pc}")
configure_file(cmake/StratacutUI.pc.in "${CMAKE_BINARY_DIR}/package/StratacutUI.pc" @ONLY)
install(FILES "${CMAKE_BINARY_DIR}/package/StratacutUIConfig.cmake"
              "${CMAKE_BINARY_DIR}/package/StratacutUIConfigVersion.cmake"
  DESTINATION "${stratacut_package_dir}")
install(FILES "${CMAKE_BINARY_DIR}/package/StratacutUI.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
install(FILES LICENSE README.md CHANGELOG.md DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/StratacutUI")
# What a host is written from, at the places that the texts name.
install(FILES docs/integrator-guide.md DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/StratacutUI/docs")
install(DIRECTORY tests/build/consumer DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/StratacutUI/tests/build")
