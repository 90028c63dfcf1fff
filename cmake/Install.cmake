# What a firmware engineer takes: the library, the headers of its callers, the declarations of its platform, and the
# files by which CMake and pkg-config find them. The PC's platform, the simulator and the programs stay here.
include(CMakePackageConfigHelpers)

set(ORVANE_INCLUDEDIR ${CMAKE_INSTALL_INCLUDEDIR}/orvane)
set(ORVANE_PACKAGEDIR ${CMAKE_INSTALL_LIBDIR}/cmake/OrvaneService)

install(DIRECTORY include/ DESTINATION ${ORVANE_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")
install(DIRECTORY platform/ DESTINATION ${ORVANE_INCLUDEDIR}/platform FILES_MATCHING PATTERN "*.h")
install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR})

# Callers need the interfaces alone; the platform and whoever loads the library need the platform's declarations.
add_library(orvane-interfaces INTERFACE)
target_include_directories(orvane-interfaces INTERFACE
  $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include> $<INSTALL_INTERFACE:${ORVANE_INCLUDEDIR}>)
set_target_properties(orvane-interfaces PROPERTIES EXPORT_NAME Interfaces)
set_target_properties(orvane-platform PROPERTIES EXPORT_NAME Platform)

install(TARGETS OrvaneService orvane-interfaces orvane-platform EXPORT OrvaneServiceTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(EXPORT OrvaneServiceTargets NAMESPACE Orvane:: DESTINATION ${ORVANE_PACKAGEDIR})

configure_package_config_file(cmake/OrvaneServiceConfig.cmake.in
  ${PROJECT_BINARY_DIR}/OrvaneServiceConfig.cmake INSTALL_DESTINATION ${ORVANE_PACKAGEDIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/OrvaneServiceConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/OrvaneServiceConfig.cmake ${PROJECT_BINARY_DIR}/OrvaneServiceConfigVersion.cmake
  DESTINATION ${ORVANE_PACKAGEDIR})

# Relative to the file itself, so that the tree may be moved.
file(RELATIVE_PATH ORVANE_PREFIX_FROM_PKGCONFIG
  ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
get_target_property(definitions orvane-platform INTERFACE_COMPILE_DEFINITIONS)
set(ORVANE_PKGCONFIG_DEFINITIONS)
if(definitions)
  list(TRANSFORM definitions PREPEND " -D")
  list(JOIN definitions "" ORVANE_PKGCONFIG_DEFINITIONS)
endif()
configure_file(cmake/orvane-service.pc.in ${PROJECT_BINARY_DIR}/orvane-service.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/orvane-service.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# The same tree as one archive, named after the processor it is for.
set(CPACK_GENERATOR TGZ)
set(CPACK_PACKAGE_NAME orvane-service)
set(CPACK_PACKAGE_VENDOR "Orvane")
set(CPACK_PACKAGE_FILE_NAME orvane-service-${PROJECT_VERSION}-${CMAKE_SYSTEM_PROCESSOR})
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
include(CPack)
