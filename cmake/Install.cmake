include(CMakePackageConfigHelpers)

install(TARGETS tavplatform tavobjectmodel EXPORT TavObjectModelTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT Runtime NAMELINK_COMPONENT Development
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT Development
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT Runtime
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

# The public headers only: what sits under a detail/ folder is internal and is not installed.
install(DIRECTORY ${PROJECT_SOURCE_DIR}/src/platform ${PROJECT_SOURCE_DIR}/src/TavObjectModel
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT Development FILES_MATCHING PATTERN "*.h"
  PATTERN "detail" EXCLUDE)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/src/Include/Tav
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT Development FILES_MATCHING PATTERN "*.h")

install(EXPORT TavObjectModelTargets NAMESPACE TavObjectModel::
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/TavObjectModel COMPONENT Development)

configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/TavObjectModelConfig.cmake.in
  ${PROJECT_BINARY_DIR}/TavObjectModelConfig.cmake
  INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/TavObjectModel)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/TavObjectModelConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/TavObjectModelConfig.cmake
  ${PROJECT_BINARY_DIR}/TavObjectModelConfigVersion.cmake
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/TavObjectModel COMPONENT Development)

configure_file(${PROJECT_SOURCE_DIR}/cmake/tavobjectmodel.pc.in
  ${PROJECT_BINARY_DIR}/tavobjectmodel.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/tavobjectmodel.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT Development)
