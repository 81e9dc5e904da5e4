# What an installed package consists of: library, header, tool, configuration, and the two ways to
# find them (a CMake package and a pkg-config file).
if(NOT TARGET VexaSqliteSDK)
  return()
endif()
include(CMakePackageConfigHelpers)

set(VEXASQLITE_DATA_DIR ${CMAKE_INSTALL_DATADIR}/vexasqlitesdk)
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/VexaSqliteSDK)

install(TARGETS VexaSqliteSDK EXPORT VexaSqliteSDKTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(FILES ${PROJECT_SOURCE_DIR}/include/vexasqlitesdk.h
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
if(TARGET vexascan)
  install(TARGETS vexascan RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()
if(TARGET vexaconfig)
  install(FILES ${CMAKE_BINARY_DIR}/VexaConfiger.db DESTINATION ${VEXASQLITE_DATA_DIR})
endif()

install(EXPORT VexaSqliteSDKTargets
  NAMESPACE VexaSqliteSDK::
  DESTINATION ${package_dir})
configure_package_config_file(
  ${PROJECT_SOURCE_DIR}/cmake/VexaSqliteSDKConfig.cmake.in
  ${CMAKE_BINARY_DIR}/package/VexaSqliteSDKConfig.cmake
  INSTALL_DESTINATION ${package_dir}
  PATH_VARS VEXASQLITE_DATA_DIR)
write_basic_package_version_file(
  ${CMAKE_BINARY_DIR}/package/VexaSqliteSDKConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES
  ${CMAKE_BINARY_DIR}/package/VexaSqliteSDKConfig.cmake
  ${CMAKE_BINARY_DIR}/package/VexaSqliteSDKConfigVersion.cmake
  DESTINATION ${package_dir})

# Paths in the pkg-config file are written against its own folder, so that a package moved or
# installed with --prefix at install time still answers rightly.
file(RELATIVE_PATH prefix_from_pc
  /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
configure_file(${PROJECT_SOURCE_DIR}/cmake/vexasqlitesdk.pc.in
  ${CMAKE_BINARY_DIR}/package/vexasqlitesdk.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/package/vexasqlitesdk.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
