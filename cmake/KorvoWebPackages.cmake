# Debian packages, one for each part of the installation: cpack -G DEB
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME nqkorvoweb)
set(CPACK_PACKAGE_CONTACT "The NQKorvoWeb developers <nqkorvoweb@korvo.example>")
set(CPACK_PACKAGE_VENDOR "The NQKorvoWeb developers")
set(CPACK_PACKAGE_DIRECTORY "${PROJECT_BINARY_DIR}/packages")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL Library Development Tools Documentation)
if(NOT KORVOWEB_BUILD_TOOLS)
  list(REMOVE_ITEM CPACK_COMPONENTS_ALL Tools)
endif()
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(same_version "(= ${PROJECT_VERSION})")
set(library_package libnqkorvoweb${PROJECT_VERSION_MAJOR})

set(CPACK_COMPONENT_LIBRARY_DESCRIPTION "What a host application needs to run.")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME ${library_package})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SHLIBDEPS ON)

# Without it the libraries are found only after the next run of ldconfig.
set(triggers "${PROJECT_BINARY_DIR}/triggers")
file(WRITE "${triggers}" "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA "${triggers}")

set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "Headers, the CMake package and the pkg-config file.")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libnqkorvoweb-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${library_package} ${same_version}, qtbase5-dev (>= 5.15)")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS nqkorvoweb-doc)

set(CPACK_COMPONENT_TOOLS_DESCRIPTION
  "The local platform to develop against, the command-line client, the sample project.")
set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME nqkorvoweb-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION devel)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "${library_package} ${same_version}")
set(CPACK_DEBIAN_TOOLS_PACKAGE_SHLIBDEPS ON)

set(CPACK_COMPONENT_DOCUMENTATION_DESCRIPTION "The documents and the example programs.")
set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_NAME nqkorvoweb-doc)
set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_SECTION doc)
set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_ARCHITECTURE all)

# The libraries tell what they are called and in which package they are; the tools' own dependency on them is the
# one above, since nothing is installed yet that could be asked.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${CMAKE_LIBRARY_OUTPUT_DIRECTORY}")

include(CPack)
