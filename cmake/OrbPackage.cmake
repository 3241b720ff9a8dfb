# A Debian package of everything that is installed: `make deb`.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME orbimg)
set(CPACK_PACKAGE_CONTACT "The orbimg developers <orbimg@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "image operators for astronomical photographs")
set(CPACK_PACKAGE_DESCRIPTION "A command and a C++ library to calibrate, align, stack, colour, filter and measure
astronomical photographs.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION science)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS
  ${PROJECT_BINARY_DIR}/platform ${PROJECT_BINARY_DIR}/orbcim ${PROJECT_BINARY_DIR}/orbimg)
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "fonts-dejavu-core")
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
include(CPack)
