# What an installed orbimg consists of: libraries, public headers, a CMake package, a pkg-config file, the command.
include(CMakePackageConfigHelpers)

set(orb_include ${CMAKE_INSTALL_INCLUDEDIR}/orbimg-${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
install(TARGETS orbplatform orbcim orbimg EXPORT orbimgTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY platform orbimg DESTINATION ${orb_include} FILES_MATCHING PATTERN "*.h"
  PATTERN "*_internal.h" EXCLUDE PATTERN "*_kernels.h" EXCLUDE)
install(EXPORT orbimgTargets NAMESPACE orbimg:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/orbimg)

configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/orbimgConfig.cmake.in ${PROJECT_BINARY_DIR}/orbimgConfig.cmake
  INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/orbimg)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/orbimgConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/orbimgConfig.cmake ${PROJECT_BINARY_DIR}/orbimgConfigVersion.cmake
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/orbimg)

# Names the prefix by its own place, so that the installed tree may stand anywhere.
file(RELATIVE_PATH orb_prefix_of_pc /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
string(REGEX REPLACE "/$" "" orb_prefix_of_pc "${orb_prefix_of_pc}")
configure_file(${CMAKE_CURRENT_LIST_DIR}/orbimg.pc.in ${PROJECT_BINARY_DIR}/orbimg.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/orbimg.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

install(DIRECTORY share/recipes DESTINATION ${CMAKE_INSTALL_DATADIR}/orbimg)
